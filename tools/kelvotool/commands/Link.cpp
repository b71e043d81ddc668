// Ties a picture to a sound, or tells how well it is tied.

#include "framework/base/ChFile.h"
#include "media/VideoHeader.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/files/NewTracks.h"
#include "tools/kelvotool/film/Linking.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace kelvo::tool {

namespace {

struct LinkOptions {
    std::string video;
    std::string audio; ///< empty: the film's own
    bool check = false;
    int offset = 0;
};

/// How the numbers that are there differ from the rule.
struct Drift {
    std::uint32_t images = 0;
    std::uint32_t differing = 0;
    std::uint32_t never_linked = 0;
    std::optional<std::uint32_t> first = {};
    std::int64_t largest = 0; ///< in audio frames, with its sign
};

Drift Measure(TrackReader& reader, const SyncLink& link, Reporter& reporter) {
    Drift drift;
    for (std::uint32_t n = 0; n < reader.Count() && !StopRequested(); ++n) {
        std::uint32_t length = 0;
        if (reader.Container().ReadRawRecord(static_cast<int>(n), length) == nullptr) {
            reporter.Report(
                reader.Make(ProblemCode::RecordDamaged, "the record cannot be read", n));
            break;
        }
        ++drift.images;
        const std::uint32_t number = SyncNumberOf(reader);
        if (number == link.NumberOf(static_cast<int>(n))) continue;
        if (!drift.first) drift.first = n;
        ++drift.differing;
        if (number == kNeverLinked) {
            ++drift.never_linked;
            continue;
        }
        const std::int64_t by = std::int64_t{number} - link.NumberOf(static_cast<int>(n));
        if (std::abs(by) > std::abs(drift.largest)) drift.largest = by;
    }
    return drift;
}

/// The two tracks, wherever they lie.
class Linking {
public:
    Linking(const LinkOptions& options, const CommonOptions& common)
        : options_(options), common_(common), reporter_(options.video),
          audio_reporter_(options.audio),
          output_reporter_(common.output.empty() ? options.video : common.output) {}

    int Run() {
        if (!FindTracks()) return Code();
        const auto link = LinkFor(*video_, *audio_, options_.offset, reporter_);
        if (!link) return Code();
        TrackReader reader(*film_, *video_);
        if (auto problem = reader.Open()) {
            problem->severity = kNotDone;
            reporter_.Report(*problem);
            return Code();
        }
        if (options_.check) return Check(reader, *link);
        Write(reader, *link);
        return Code();
    }

private:
    int Code() const {
        return std::max({reporter_.Code(), audio_reporter_.Code(), output_reporter_.Code()});
    }

    bool FindTracks() {
        const auto name = InputName(options_.video, reporter_);
        if (!name) return false;
        film_ = DescribeFilm(*name, reporter_);
        if (!film_) return false;
        video_ = film_->Find(TrackKind::Video);
        audio_ = film_->Find(TrackKind::Audio);
        if (video_ == nullptr || video_->form != TrackForm::Container) {
            reporter_.NotDone("it has no picture", ProblemCode::NotPossible);
            return false;
        }
        if (!options_.audio.empty()) {
            const auto audio_name = InputName(options_.audio, audio_reporter_);
            if (!audio_name) return false;
            sound_ = DescribeFilm(*audio_name, audio_reporter_);
            if (!sound_) return false;
            audio_ = sound_->Find(TrackKind::Audio);
        }
        if (audio_ == nullptr) {
            (options_.audio.empty() ? reporter_ : audio_reporter_)
                .NotDone(options_.audio.empty() ? "which sound it goes with must be said"
                                                : "it has no sound",
                         ProblemCode::NotPossible);
        }
        return audio_ != nullptr;
    }

    int Check(TrackReader& reader, const SyncLink& link) {
        const Drift drift = Measure(reader, link, reporter_);
        if (StopRequested()) return Code();
        const double frames_a_second = audio_->audio->nFramesAlSec;
        const double seconds = static_cast<double>(drift.largest) / frames_a_second;
        const double lengths =
            video_->DurationSeconds().value_or(0) - audio_->DurationSeconds().value_or(0);
        std::string text = fmt::format("{}: {} images, ", Printable(options_.video), drift.images);
        if (drift.differing == 0) {
            text += "all tied by the rule";
        } else {
            text += fmt::format("{} not tied by the rule, the first is {}, by up to {:+.2f} s",
                                drift.differing, *drift.first, seconds);
        }
        text += fmt::format("; the picture is {:+.2f} s longer than the sound\n", lengths);
        Json json = ResultFor(options_.video);
        json["images"] = drift.images;
        json["differing"] = drift.differing;
        json["never_linked"] = drift.never_linked;
        if (drift.first) json["first"] = *drift.first;
        json["largest_drift_s"] = seconds;
        json["picture_minus_sound_s"] = lengths;
        Results results(common_, ResultCount::One);
        results.Add(json, text);
        if (drift.differing > 0) {
            Problem problem = reader.Make(
                ProblemCode::SyncDamaged,
                drift.never_linked == drift.images
                    ? "it was never tied to a sound"
                    : fmt::format("{} images are tied to another audio frame", drift.differing),
                drift.first);
            reporter_.Report(problem);
        }
        return results.Finish(Code());
    }

    void Write(TrackReader& reader, const SyncLink& link) {
        // Without -o the file itself gets the numbers, by a new one in its place.
        std::optional<std::string> output = film_->name;
        if (!common_.output.empty()) {
            output = OutputName(common_.output, film_->name, common_.force, output_reporter_);
        }
        if (!output) return;
        if (film_->is_film != HasFilmName(*output)) {
            output_reporter_.NotDone(film_->is_film ? "a film's name must end in .kva"
                                                    : "only a film's name may end in .kva",
                                     ProblemCode::NotPossible);
            return;
        }
        const auto write = [&](RewriteTarget& target) { return WriteTracks(target, reader, link); };
        NewTrackFile file(output_reporter_, reporter_);
        const auto kind = film_->is_film ? RewriteTarget::Kind::Film : RewriteTarget::Kind::Track;
        if (file.Write(*output, kind, write)) file.Place(common_.force || common_.output.empty());
    }

    Error WriteTracks(RewriteTarget& target, TrackReader& reader, const SyncLink& link) {
        AVDirectory directory;
        for (const TrackDescription& track : film_->tracks) {
            TrackWindow& window =
                track.kind == TrackKind::Audio ? directory.audio : directory.video;
            window.start = static_cast<std::uint32_t>(target.Size());
            Error error;
            if (&track == video_) {
                error = WriteLinked(target, reader, link, reporter_);
            } else {
                ChFile file;
                if (!file.OpenReadOnly(CString(std::string_view{track.file}))) {
                    return {Fault::Unreadable, 0};
                }
                error = target.CopyWindow(file.Handle(), track.window);
            }
            if (error.fault != Fault::None) return error;
            window.end = static_cast<std::uint32_t>(target.Size());
        }
        return film_->is_film ? target.PutDirectory(directory) : Error{};
    }

    const LinkOptions& options_;
    const CommonOptions& common_;
    Reporter reporter_;
    Reporter audio_reporter_;
    Reporter output_reporter_;
    std::optional<FilmDescription> film_;
    std::optional<FilmDescription> sound_;
    const TrackDescription* video_ = nullptr;
    const TrackDescription* audio_ = nullptr;
};

} // namespace

void AddLink(CommandLine& line) {
    CLI::App& command = line.AddCommand(
        "link", "Tie each image to the audio frame that it is shown with, or tell the drift",
        kUsesJson | kUsesForce | kUsesOutput);
    const auto options = std::make_shared<LinkOptions>();
    command.add_option("VIDEO", options->video, "a picture track (.kvf) or a film (.kva)")
        ->required();
    command.add_option("AUDIO", options->audio,
                       "the sound that it goes with; a film's own if not given");
    command.add_flag("--check", options->check, "write nothing, tell how the numbers differ");
    command.add_option("--offset", options->offset, "whole images between picture and sound")
        ->type_name("IMAGES");
    line.WhenChosen(command, [options](const CommonOptions& common) {
        SetTask("link " + options->video);
        return Linking(*options, common).Run();
    });
}

} // namespace kelvo::tool
