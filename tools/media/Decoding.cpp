#include "tools/media/Decoding.h"

#include "tools/media/DamageLog.h"
#include "tools/media/StreamWriter.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>

namespace kelvo::media_tool {

namespace {

/// A file that claims to last longer than this much more than what came out is cut off.
constexpr double kMissingSeconds = 1;

/// One run of decode. The file is open twice, once for the picture and once for the sound: so each
/// is read when the stream wants it, and nothing is kept in memory however the file mixes them.
class Decoding {
public:
    Decoding(const DecodeOptions& options, Report& report)
        : options_(options), report_(report), picture_(report), sound_(report) {}

    void Run() {
        has_picture_ = options_.wants_picture && picture_.Open(options_.input, options_.picture);
        if (report_.Code() >= kNotDone) return;
        has_sound_ = options_.wants_sound && sound_.Open(options_.input, options_.sound);
        if (report_.Code() >= kNotDone) return;
        if (!has_picture_ && !has_sound_) {
            report_.NotDone(options_.wants_picture && options_.wants_sound
                                ? "there is neither picture nor sound in it"
                            : options_.wants_picture ? "there is no picture in it"
                                                     : "there is no sound in it");
            return;
        }
        Describe();
        WriteAll();
        if (report_.Code() >= kNotDone) return;
        LookForMissingEnd();
        if (!output_.End()) report_.NotDone("standard output: cannot be written");
    }

private:
    void Describe() {
        output_.Begin();
        if (has_picture_) output_.Picture(picture_.Format());
        if (has_sound_) output_.Sound(sound_.Format());
        const AVDictionary* const texts =
            has_picture_ ? picture_.File().Texts() : sound_.File().Texts();
        constexpr int kMostTexts = 64;
        const AVDictionaryEntry* entry = nullptr;
        for (int i = 0; i < kMostTexts; ++i) {
            entry = av_dict_get(texts, "", entry, AV_DICT_IGNORE_SUFFIX);
            if (entry == nullptr) break;
            output_.Text(entry->key, entry->value);
        }
        output_.EndDescription();
    }

    /// Whatever is due first; at the same time the sound.
    void WriteAll() {
        bool has_image = has_picture_ && picture_.Advance();
        bool has_samples = has_sound_ && sound_.Advance();
        while ((has_image || has_samples) && StopSignal() == 0) {
            if (output_.Failed()) {
                report_.NotDone("standard output: cannot be written");
                return;
            }
            if (has_samples && (!has_image || sound_.Time() <= picture_.Time())) {
                output_.Samples(sound_.Samples());
                has_samples = sound_.Advance();
                sound_end_ = sound_.Time();
            } else {
                output_.Image(picture_.Head(), picture_.Pixels());
                picture_end_ = picture_.EndTime();
                has_image = picture_.Advance();
            }
        }
    }

    void LookForMissingEnd() {
        if (StopSignal() != 0) return;
        if (has_picture_ && IsCutOff(picture_end_, picture_.File().OwnDuration())) return;
        if (has_sound_ && IsCutOff(sound_end_, sound_.File().OwnDuration())) return;
        // The file's duration is that of its longest track.
        if (!options_.wants_picture || !options_.wants_sound) return;
        const ForeignFile& file = has_picture_ ? picture_.File() : sound_.File();
        std::ignore = IsCutOff(std::max(picture_end_, sound_end_), file.Duration()); // said already
    }

    bool IsCutOff(double end, double claimed) {
        if (claimed - end <= std::max(kMissingSeconds, claimed / 20)) return false;
        report_.Damaged(fmt::format("it ends after {:.1f} of {:.1f} seconds", end, claimed));
        return true;
    }

    const DecodeOptions& options_;
    Report& report_;
    PictureSource picture_;
    SoundSource sound_;
    StreamWriter output_;
    bool has_picture_ = false;
    bool has_sound_ = false;
    double picture_end_ = 0; ///< seconds from the file's start
    double sound_end_ = 0;
};

} // namespace

int Decode(const DecodeOptions& options) {
    Report report(options.input);
    KeepLog();
    Decoding(options, report).Run();
    return report.Code();
}

} // namespace kelvo::media_tool
