#pragma once
// The images of a picture track that an export shows, one after the other, the right way up and in
// 8-bit channels.

#include "tools/kelvotool/film/ImageTiming.h"
#include "tools/kelvotool/film/Ranges.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/picture/RgbImage.h"

#include <cstdint>
#include <vector>

namespace kelvo::tool {

class PictureWalk {
public:
    /// @param reader  open; nobody else reads it meanwhile
    /// @param spans   of images
    /// @param timing  of the images of the spans
    /// @param scale   every pixel so many times wide and high
    PictureWalk(TrackReader& reader, std::vector<Span> spans, const ImageTiming& timing,
                std::uint32_t scale, Reporter& reporter)
        : reader_(reader), spans_(std::move(spans)), timing_(timing), scale_(scale),
          reporter_(reporter) {}

    /// Decodes up to the next image that is shown. Damage is reported.
    /// @param repeats  out: for how many periods it is shown
    /// @return false at the end, where the rest cannot be read, and when a person stopped it
    bool Next(RgbImage& image, std::uint32_t& repeats);

private:
    bool ReadImage();

    TrackReader& reader_;
    std::vector<Span> spans_;
    const ImageTiming& timing_;
    std::uint32_t scale_;
    Reporter& reporter_;
    std::size_t span_ = 0;
    std::uint64_t in_span_ = 0;
    std::size_t image_ = 0; ///< of all spans
    RgbImage small_;        ///< serves every image that is enlarged
};

} // namespace kelvo::tool
