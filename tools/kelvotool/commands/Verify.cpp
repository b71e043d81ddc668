#include "framework/base/ProgressDisplay.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileList.h"
#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/film/IndexCheck.h"
#include "tools/kelvotool/film/Sha256.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/Results.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <memory>
#include <vector>

namespace kelvo::tool {

namespace {

/// What is kept of a record until it is read again.
using Fingerprint = std::uint64_t;
constexpr Fingerprint kNotComparable = 0;

// Reading every record of a long group by its number would decode each of them once for each one
// behind it.
constexpr std::uint32_t kShortGroup = 32;
// Going back in a Vorbis stream decodes it from its start.
constexpr std::uint32_t kVorbisPlaces = 4;

/// Reads one track in order and by number.
class TrackVerification {
public:
    TrackVerification(TrackReader& reader, Reporter& reporter)
        : reader_(reader), reporter_(reporter), progress_(ShowProgress({})),
          total_(static_cast<std::int32_t>(std::min<std::uint32_t>(reader.Count(), INT_MAX))) {}

    void Run() {
        const bool index_agrees = reader_.IsVorbis() || CheckIndex(reader_, reporter_);
        if (!ReadInOrder()) return;
        if (reader_.IsVorbis() && reader_.Vorbis().StreamDamaged()) {
            reporter_.Report(reader_.Make(ProblemCode::StreamDamaged,
                                          "parts of its Ogg stream are lost or broken"));
        }
        // What disagrees was reported, and decoding it twice tells nothing new.
        if (index_agrees) ReadByNumber();
    }

private:
    Fingerprint FingerprintOfRecord() {
        const Sha256::Digest record = sha256_.Of(reader_.Record());
        const Sha256::Digest side = sha256_.Of(reader_.Side());
        Fingerprint first = 0;
        Fingerprint second = 0;
        std::memcpy(&first, record.data(), sizeof(first));
        std::memcpy(&second, side.data(), sizeof(second));
        // Rotated, so that equal halves do not cancel each other.
        const Fingerprint both = first ^ (second << 1U | second >> 63U);
        return both == kNotComparable ? 1 : both;
    }

    bool IsKey(std::uint32_t n) const {
        return !reader_.IsDifferential() || reader_.Container().Header().KeyRecordOf(n) == n;
    }

    bool ReadInOrder() {
        bool group_is_sound = true;
        for (std::uint32_t n = 0; n < reader_.Count(); ++n) {
            if (!progress_->Update(static_cast<std::int32_t>(n) / 2, total_)) return false;
            if (!reader_.ReadNext()) {
                if (StopRequested()) return false;
                reporter_.Report(reader_.RecordProblem(n).value_or(reader_.Make(
                    ProblemCode::RecordDamaged, "the record cannot be read", n, {}, kNotDone)));
                return false;
            }
            const auto problem = reader_.RecordProblem(n);
            if (problem) reporter_.Report(*problem);
            if (problem && reader_.IsVorbis()) return true; // and so on to the last frame
            // Whatever is decoded over a damaged record depends on what was there before.
            group_is_sound = !problem && (IsKey(n) || group_is_sound);
            fingerprints_.push_back(group_is_sound ? FingerprintOfRecord() : kNotComparable);
        }
        return true;
    }

    void Compare(std::uint32_t n) {
        // From the last record to the first.
        if (!progress_->Update(total_ - static_cast<std::int32_t>(n) / 2, total_)) return;
        if (fingerprints_[n] == kNotComparable) return;
        if (!reader_.ReadByNumber(n)) {
            if (StopRequested()) return;
            reporter_.Report(reader_.Make(ProblemCode::RecordDiffers,
                                          "the record cannot be read by its number", n));
        } else if (FingerprintOfRecord() != fingerprints_[n]) {
            reporter_.Report(reader_.Make(
                ProblemCode::RecordDiffers,
                "the record is another one when it is read by its number", n,
                reader_.IsVorbis() ? std::nullopt
                                   : std::optional(reader_.Container().RecordFileOffset(n))));
        }
    }

    /// From the last to the first, so that nothing is where a sequence would have left it.
    void ReadByNumber() {
        const auto count = static_cast<std::uint32_t>(fingerprints_.size());
        if (reader_.IsVorbis()) {
            for (std::uint32_t i = kVorbisPlaces; i-- > 0 && count > 0 && !StopRequested();)
                Compare(static_cast<std::uint32_t>(std::uint64_t{count - 1} * i / kVorbisPlaces));
            return;
        }
        for (std::uint32_t end = count; end > 0 && !StopRequested();) {
            const std::uint32_t last = end - 1;
            const std::uint32_t key =
                reader_.IsDifferential() ? reader_.Container().Header().KeyRecordOf(last) : last;
            if (end - key <= kShortGroup) {
                for (std::uint32_t n = end; n-- > key;)
                    Compare(n);
            } else {
                for (const std::uint32_t n : {last, key + (last - key) / 2, key})
                    Compare(n);
            }
            end = key;
        }
    }

    TrackReader& reader_;
    Reporter& reporter_;
    std::unique_ptr<ProgressDisplay> progress_;
    std::int32_t total_;
    Sha256 sha256_;
    std::vector<Fingerprint> fingerprints_; ///< of the records read in order
};

void VerifyTrack(const FilmDescription& film, const TrackDescription& track, Reporter& reporter) {
    for (const Problem& problem : track.problems)
        reporter.Report(problem);
    if (track.form == TrackForm::Unknown) return;
    TrackReader reader(film, track);
    if (const auto problem = reader.Open()) {
        reporter.Report(*problem);
        return;
    }
    if (reader.IsVorbis() && !reader.Vorbis().HasStream() && reader.Count() > 0) {
        reporter.Report(reader.Make(ProblemCode::StreamDamaged, "its Ogg stream cannot be set up"));
        return;
    }
    TrackVerification(reader, reporter).Run();
}

Json ResultOf(const FilmName& named, const Reporter& reporter) {
    Json json = ResultFor(named.name);
    if (!named.sound.empty()) PutName(json, "sound_file", named.sound);
    json["intact"] = reporter.Count() == 0;
    json["problem_count"] = reporter.Count();
    json["problems"] = JsonOf(reporter.Problems());
    return json;
}

int VerifyFilm(const FilmName& named, Results& results) {
    SetTask("verify " + named.name);
    Reporter reporter(named.name);
    const auto film = DescribeNamedFilm(named, reporter);
    if (!film) {
        if (!results.IsText()) results.Add(ResultOf(named, reporter), "");
        return reporter.Code();
    }
    for (const Problem& problem : film->problems)
        reporter.Report(problem);
    for (const TrackDescription& track : film->tracks) {
        if (!StopRequested()) VerifyTrack(*film, track, reporter);
    }
    if (StopRequested()) return reporter.Code();
    const std::string verdict = reporter.Count() == 0
                                    ? "sound"
                                    : fmt::format("damaged, {} problem{}", reporter.Count(),
                                                  reporter.Count() == 1 ? "" : "s");
    results.Add(ResultOf(named, reporter), fmt::format("{}: {}\n", Printable(named.name), verdict));
    return reporter.Code();
}

int RunVerify(const std::vector<std::string>& names, const CommonOptions& common) {
    const FilmList list = ListFilms(names, common);
    Results results(common, list.is_several ? ResultCount::Several : ResultCount::One);
    int code = list.code;
    for (const FilmName& film : list.films) {
        if (!StopRequested() && !results.Failed()) code = std::max(code, VerifyFilm(film, results));
    }
    return results.Finish(code);
}

} // namespace

void AddVerify(CommandLine& line) {
    CLI::App& command = line.AddCommand(
        "verify", "Read everything, in order and by number; 0 sound, 1 damaged, 2 unreadable",
        kUsesJson);
    const auto files = line.AddFiles(command);
    line.WhenChosen(command,
                    [files](const CommonOptions& common) { return RunVerify(*files, common); });
}

} // namespace kelvo::tool
