// Films one behind the other as one film.

#include "container/codec/CompressionTypes.h"
#include "media/AudioHeader.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/commands/SpliceResult.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/film/ConversionRules.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

namespace {

/// One of the films that are joined.
struct Part {
    explicit Part(const std::string& name) : reporter(name) {}
    Reporter reporter;
    std::optional<FilmDescription> film = {};
    const TrackDescription* video = nullptr;
    const TrackDescription* audio = nullptr;
    std::unique_ptr<PieceSource> picture = {};
    std::unique_ptr<PieceSource> sound = {};
    std::optional<std::uint32_t> last_sync = {}; ///< of its last image
};

class Joining {
public:
    Joining(const std::vector<std::string>& names, const CommonOptions& common)
        : names_(names), common_(common), output_reporter_(common.output) {}

    int Run() {
        if (!Describe() || !Check()) return Code();
        PlanPicture();
        if (!PlanSound()) return Code();
        const int code = WriteSpliced(splice_, names_.front(), common_.output, *output_, common_,
                                      parts_.front()->reporter, output_reporter_);
        return std::max(code, Code());
    }

private:
    int Code() const {
        int code = output_reporter_.Code();
        for (const auto& part : parts_)
            code = std::max(code, part->reporter.Code());
        return code;
    }

    static bool Refuse(Part& part, std::string what) {
        part.reporter.NotDone(std::move(what), ProblemCode::NotPossible);
        return false;
    }

    bool Describe() {
        for (const std::string& name : names_) {
            Part& part = *parts_.emplace_back(std::make_unique<Part>(name));
            const auto input = InputName(name, part.reporter);
            if (!input) return false;
            output_ = OutputName(common_.output, *input, common_.force, output_reporter_);
            if (!output_) return false;
            part.film = DescribeFilm(*input, part.reporter);
            if (!part.film || !OpenPart(part)) return false;
        }
        splice_.is_film = parts_.front()->film->is_film;
        if (splice_.is_film == HasFilmName(*output_)) return true;
        output_reporter_.NotDone(splice_.is_film ? "a film's name must end in .kva"
                                                 : "only a film's name may end in .kva");
        return false;
    }

    static bool OpenPart(Part& part) {
        part.video = part.film->Find(TrackKind::Video);
        part.audio = part.film->Find(TrackKind::Audio);
        if (part.video != nullptr) {
            part.picture = OpenPieces(*part.film, *part.video, part.reporter);
            if (!part.picture || !part.video->video) return false;
            const std::uint32_t count = part.video->RecordCount();
            if (count > 0) part.last_sync = part.picture->SyncNumberOf(count - 1);
        }
        if (part.audio != nullptr) {
            part.sound = OpenPieces(*part.film, *part.audio, part.reporter);
            if (!part.sound || !part.audio->audio) return false;
        }
        return true;
    }

    /// Whether they can be one film.
    bool Check() {
        Part& first = *parts_.front();
        for (const auto& part : parts_) {
            if (part->film->is_film != first.film->is_film) {
                return Refuse(*part, "films and tracks alone cannot be joined");
            }
            if ((part->video == nullptr) != (first.video == nullptr)) {
                return Refuse(*part, first.video != nullptr ? "it has no picture"
                                                            : "the first one has no picture");
            }
            if (part->video != nullptr && !CheckPicture(*part, first)) return false;
            if (first_sound_ == nullptr) first_sound_ = part->audio;
            if (part->audio != nullptr && !CheckSound(*part)) return false;
        }
        return true;
    }

    static bool CheckPicture(Part& part, const Part& first) {
        const VideoHeader& header = *part.video->video;
        const VideoHeader& other = *first.video->video;
        const auto size = [](const VideoHeader& video) {
            return fmt::format("{} x {} in {} bits", LONG{video.bitmap.biWidth},
                               LONG{video.bitmap.biHeight}, WORD{video.bitmap.biBitCount});
        };
        if (size(header) != size(other)) {
            return Refuse(part, fmt::format("its images are {}, those of the first one {}",
                                            size(header), size(other)));
        }
        if (header.nImgAlSec != other.nImgAlSec) {
            return Refuse(part, fmt::format("it has {} images a second, the first one {}",
                                            header.nImgAlSec, other.nImgAlSec));
        }
        const bool both_have = part.video->RecordCount() > 0 && first.video->RecordCount() > 0;
        if (both_have && part.last_sync.has_value() != first.last_sync.has_value()) {
            return Refuse(part, "of it and the first one only one is tied to its sound: kelvotool "
                                "link ties the other");
        }
        return CheckCoding(part, *part.video, SpliceHeader(*first.video));
    }

    bool CheckSound(Part& part) const {
        const AudioHeader& header = *part.audio->audio;
        const AudioHeader& other = *first_sound_->audio;
        if (!SameForm(header, other)) {
            const auto form = [](const AudioHeader& audio) {
                return fmt::format("{} samples of {} bits and {} frames a second", audio.SampleRate,
                                   8 * audio.BytesPerSample, audio.nFramesAlSec);
            };
            return Refuse(part, fmt::format("its sound has {}, that of the first one {}",
                                            form(header), form(other)));
        }
        return CheckCoding(part, *part.audio, SpliceHeader(*first_sound_));
    }

    static bool CheckCoding(Part& part, const TrackDescription& track,
                            const ContainerHeader& header) {
        if (HaveSameCoding(header, track)) return true;
        const int id = static_cast<int>(header.CompressionType);
        if (const auto reason = WhyNotConvertible(track, id)) return Refuse(part, *reason);
        if (SpliceHeader(track).RecordLength != header.RecordLength) {
            return Refuse(part, "its records have another length");
        }
        if (codec::CodingType(id).lossless) return true;
        return Refuse(part, fmt::format("its sound would lose something in type {}, which the "
                                        "first one has: convert one of them first",
                                        id));
    }

    /// Audio frames that a part lasts, so that the next one begins in step.
    std::int64_t LengthOf(const Part& part) const {
        if (part.video == nullptr) return part.audio != nullptr ? part.audio->RecordCount() : 0;
        if (part.last_sync) return std::int64_t{*part.last_sync} + 1;
        if (first_sound_ == nullptr) return 0;
        const auto rate =
            static_cast<std::uint64_t>(std::max<int>(part.video->video->nImgAlSec, 1));
        const std::uint64_t frames =
            std::uint64_t{part.video->RecordCount()} * first_sound_->audio->nFramesAlSec;
        return static_cast<std::int64_t>((frames + rate - 1) / rate);
    }

    void PlanPicture() {
        const Part& first = *parts_.front();
        if (first.video == nullptr) return;
        FilmSplice::Picture picture{.header = SpliceHeader(*first.video),
                                    .user_header = first.video->user_header};
        std::int64_t frames_before = 0;
        std::uint32_t count = 0;
        for (const auto& part : parts_) {
            picture.pieces.push_back({.source = part->picture.get(),
                                      .first = 0,
                                      .end = part->video->RecordCount(),
                                      .sync_shift = frames_before});
            frames_before += LengthOf(*part);
            count += part->video->RecordCount();
        }
        picture.header.RecordCount = count;
        SettleKeyInterval(picture.header, std::nullopt);
        splice_.picture = std::move(picture);
    }

    bool PlanSound() {
        if (first_sound_ == nullptr) return true;
        FilmSplice::Sound sound{.header = SpliceHeader(*first_sound_),
                                .user_header = first_sound_->user_header,
                                .silence_byte = SilenceByte(*first_sound_->audio)};
        for (const auto& part : parts_)
            sound.pieces.push_back(SoundOf(*part, part == parts_.back()));
        splice_.sound = std::move(sound);
        return true;
    }

    SoundPiece SoundOf(Part& part, bool is_last) const {
        const std::int64_t length = LengthOf(part);
        const std::int64_t count = part.audio != nullptr ? part.audio->RecordCount() : 0;
        SoundPiece piece{.source = part.sound.get(), .end = static_cast<std::uint32_t>(count)};
        if (part.audio != nullptr && part.audio->vorbis) {
            part.reporter.Warn("its Vorbis sound cannot be joined as it is: it is decoded, and "
                               "coded without losing more",
                               ProblemCode::NotPossible);
        }
        // Behind the last film nothing has to be in step.
        if (part.video == nullptr || (is_last && part.audio != nullptr)) return piece;
        if (count > length) {
            piece.end = static_cast<std::uint32_t>(length);
            part.reporter.Report({.severity = kDamaged,
                                  .code = ProblemCode::LeftOut,
                                  .what = fmt::format("its last {} audio frames are left out: its "
                                                      "sound is longer than its picture",
                                                      count - length)});
        } else if (count < length) {
            piece.silence = static_cast<std::uint32_t>(length - count);
            part.reporter.Warn(fmt::format("{} frames of silence follow its sound, which is "
                                           "shorter than its picture",
                                           length - count),
                               ProblemCode::LeftOut);
        }
        return piece;
    }

    const std::vector<std::string>& names_;
    const CommonOptions& common_;
    Reporter output_reporter_;
    std::optional<std::string> output_;
    std::vector<std::unique_ptr<Part>> parts_;
    const TrackDescription* first_sound_ = nullptr;
    FilmSplice splice_;
};

} // namespace

void AddJoin(CommandLine& line) {
    CLI::App& command = line.AddCommand(
        "join", "Put films behind each other, without coding again what need not be",
        kUsesForce | kUsesOutput | kUsesJson);
    const auto names = std::make_shared<std::vector<std::string>>();
    command.add_option("FILM", *names, "two or more films, or tracks of one kind")
        ->required()
        ->expected(2, -1);
    line.WhenChosen(command, [names](const CommonOptions& common) {
        if (common.output.empty()) {
            SayError("-o is required; see kelvotool --help");
            return int{kNotDone};
        }
        SetTask("join " + common.output);
        return Joining(*names, common).Run();
    });
}

} // namespace kelvo::tool
