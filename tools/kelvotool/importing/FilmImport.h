#pragma once
// Makes a film or track of pictures and sound that other programs wrote.

#include "container/RewriteTarget.h"
#include "framework/base/Result.h"
#include "media/AudioHeader.h"
#include "tools/kelvotool/importing/ImageSource.h"
#include "tools/kelvotool/importing/SoundSource.h"
#include "tools/kelvotool/options/CommonOptions.h"
#include "tools/kelvotool/picture/RgbImage.h"
#include "tools/kelvotool/report/Reporter.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace kelvo::tool {

struct ImageSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

struct ImportOptions {
    std::string input = {};
    std::string output = {};
    std::string sound = {}; ///< a file of its own; empty: what IN has
    std::optional<std::uint32_t> fps = {};
    std::optional<ImageSize> size = {};
    unsigned bits = 16; ///< a pixel
    std::optional<int> type = {};
    std::optional<std::uint32_t> key_interval = {};
    std::optional<int> audio_type = {};
    std::optional<std::uint32_t> audio_frames = {};
    std::optional<unsigned> audio_bits = {};
    Dither dither = Dither::No;
    bool link = false; ///< to have no link is an error
};

class FilmImport {
public:
    FilmImport(const ImportOptions& options, const CommonOptions& common);
    /// Does it all. @return the exit code
    int Run();

private:
    bool OpenSources();
    bool OpenSoundSource();
    bool PlanPicture();
    bool PlanSound();
    bool PlanLink();
    bool AcceptsType(const struct TrackDescription& track, int type);
    void SayWhatIsLost();
    void SaySizeLimit();

    bool WritesVorbis() const;
    Error WriteFile(RewriteTarget& target);
    Error WritePicture(RewriteTarget& target);
    Error AppendImage(RewriteTarget& target, std::uint32_t times);
    Error WriteSound(RewriteTarget& target);
    Error WriteVorbis(RewriteTarget& target);
    Error WriteVorbisFile(const std::string& name, bool replace);
    /// Hands on every byte of the sound track. @param sink  takes them, and may fail
    template <class Sink>
    Error PourSound(Sink&& sink);
    int Code() const;
    int Tell() const;

    const ImportOptions& options_;
    const CommonOptions& common_;
    Reporter reporter_;        ///< of what is read
    Reporter sound_reporter_;  ///< of a sound of its own
    Reporter output_reporter_; ///< of what is written
    std::string output_name_;  ///< full
    bool wants_images_ = false;
    bool wants_sound_ = false;
    bool is_film_ = false;
    std::unique_ptr<ImageSource> images_; ///< null: there are none
    std::unique_ptr<SoundSource> sound_;

    std::uint32_t fps_ = 0;
    ImageSize size_;
    int type_ = 0;
    std::uint32_t key_interval_ = 0;
    AudioHeader audio_;
    int audio_type_ = 0;
    std::optional<std::int32_t> images_per_audio_frame_; ///< none: not linked

    RgbImage image_; // these three serve every image
    RgbImage resized_;
    std::vector<std::uint8_t> record_;
    std::uint64_t images_read_ = 0;
    std::uint64_t images_written_ = 0;
    std::uint64_t audio_frames_written_ = 0;
};

} // namespace kelvo::tool
