#pragma once
// Images that are to become a picture track, one after the other: a series of files, a .y4m file,
// or what kelvotool-media decodes.

#include "tools/kelvotool/files/MediaProgram.h"
#include "tools/kelvotool/picture/RgbImage.h"
#include "tools/kelvotool/picture/Y4m.h"
#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kelvo::tool {

/// No picture of a film is wider or higher.
inline constexpr std::uint32_t kLargestImageSide = 32767;

struct ImageFacts {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t rate_numerator = 0; ///< images a second; 0: the source does not say
    std::uint32_t rate_denominator = 1;
    std::uint64_t count = 0;    ///< 0: nobody knows
    bool has_five_bits = false; ///< nothing is lost in 5-5-5 pixels
    std::string loss = {};      ///< what reading it costs already; may be empty
};

class ImageSource {
public:
    virtual ~ImageSource() = default;
    const ImageFacts& Facts() const { return facts_; }
    /// @param lasts  out: periods of the source's rate that the image is shown
    /// @return false at the end, or after it was reported what is damaged
    virtual bool Next(RgbImage& image, std::uint32_t& lasts) = 0;

protected:
    ImageFacts facts_;
};

/// @param given  a pattern, a folder, or a .y4m file
/// @return null after it was reported that it cannot be read
std::unique_ptr<ImageSource> OpenImages(const std::string& given, Reporter& reporter);
/// A file that kelvotool-media knows; null after it was reported that it does not, and without a
/// report when there are no images in it.
std::unique_ptr<ImageSource> OpenForeignImages(const std::string& name, Reporter& reporter);

} // namespace kelvo::tool
