#pragma once
// Pictures that tell what a film or a sound is: single images of it, and its waveform.

#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/film/Ranges.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/picture/RgbImage.h"
#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kelvo::tool {

class FilmPictures {
public:
    explicit FilmPictures(Reporter& reporter) : reporter_(reporter) {}

    /// @return false after it was reported why nothing can be shown of the film
    [[nodiscard]] bool Open(const std::string& given);
    const std::string& Name() const { return name_; } ///< full
    bool HasImages() const { return picture_ != nullptr; }
    std::uint32_t ImageCount() const { return reader_->Count(); }
    std::uint32_t ImagesPerSecond() const;
    /// Of the film's images: how they are counted.
    Counting Images() const;
    std::uint32_t Width() const;
    std::uint32_t Height() const;
    unsigned SignificantBits() const;

    /// One image. @return false after it was reported that it cannot be read
    bool Take(std::uint32_t number, RgbImage& image);
    /// The image that tells most of several tried ones: neither black nor flat.
    bool TakeTelling(RgbImage& image, std::uint32_t& number);
    /// The sound's waveform. @return false after it was reported that it cannot be read
    bool DrawSound(std::uint32_t width, std::uint32_t height, RgbImage& image);
    /// How long the film lasts, as its header says.
    double Seconds() const;

private:
    Reporter& reporter_;
    std::string name_;
    std::optional<FilmDescription> film_;
    const TrackDescription* picture_ = nullptr;
    const TrackDescription* sound_ = nullptr; ///< used only where there is no picture
    std::unique_ptr<TrackReader> reader_;
};

} // namespace kelvo::tool
