#pragma once
// Samples that are to become a sound track: a WAV file, or what kelvotool-media decodes.

#include "tools/kelvotool/importing/ForeignStream.h"
#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace kelvo::tool {

struct SoundSourceFacts {
    std::uint32_t sample_rate = 0;
    std::uint32_t channels = 1;
    std::uint32_t bits = 16; ///< that a sample had
    std::uint64_t count = 0; ///< samples of one channel; 0: nobody knows
};

class SoundSource {
public:
    virtual ~SoundSource() = default;
    const SoundSourceFacts& Facts() const { return facts_; }
    /// The next samples, the channels mixed into one.
    /// @return false at the end, or after it was reported what is damaged
    virtual bool Next(std::vector<std::int16_t>& samples) = 0;

protected:
    SoundSourceFacts facts_;
};

/// @param given  a WAV file. @return null after it was reported that it cannot be read
std::unique_ptr<SoundSource> OpenWav(const std::string& given, Reporter& reporter);
/// As OpenForeignImages.
std::unique_ptr<SoundSource> OpenForeignSound(const std::string& name, Reporter& reporter);

} // namespace kelvo::tool
