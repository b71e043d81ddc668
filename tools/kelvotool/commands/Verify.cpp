#include "framework/base/ProgressDisplay.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileList.h"
#include "tools/kelvotool/files/FileNames.h"
#include "tools/kelvotool/files/RawOutput.h"
#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/film/HashList.h"
#include "tools/kelvotool/film/IndexCheck.h"
#include "tools/kelvotool/film/NumberedReading.h"
#include "tools/kelvotool/film/RecordCoding.h"
#include "tools/kelvotool/film/RecordPipeline.h"
#include "tools/kelvotool/film/SideBlockCheck.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/Results.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <climits>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

namespace {

struct VerifyOptions {
    bool quick = false;
    std::string write_hashes;
    std::string hashes;
};

/// Reads one track in order and by number.
class TrackVerification {
public:
    TrackVerification(TrackReader& reader, unsigned jobs, bool hashes, Reporter& reporter)
        : reader_(reader), jobs_(jobs), hashes_(hashes), reporter_(reporter) {
        sha256_.Start();
    }

    void Run(bool index_agrees) {
        if (!ReadInOrder()) return;
        if (reader_.IsVorbis() && reader_.Vorbis().StreamDamaged()) {
            Report(reader_.Make(ProblemCode::StreamDamaged,
                                "parts of its Ogg stream are lost or broken"));
        }
        // What disagrees was reported, and decoding it twice tells nothing new.
        if (index_agrees) CompareByNumber(reader_, fingerprints_, jobs_, reporter_);
        if (hashes_ && is_sound_ && !StopRequested()) {
            hash_.emplace();
            AppendHex(*hash_, sha256_.End());
        }
    }

    /// Of all decoded records, one after the other; none of a track that is damaged.
    const std::optional<std::string>& Hash() const { return hash_; }

private:
    void Report(const Problem& problem) {
        is_sound_ = false;
        reporter_.Report(problem);
    }

    bool IsKey(std::uint32_t n) const {
        return !reader_.IsDifferential() || reader_.Container().Header().KeyRecordOf(n) == n;
    }

    bool ReadInOrder() {
        const auto progress = ShowProgress({});
        const auto total =
            static_cast<std::int32_t>(std::min<std::uint32_t>(reader_.Count(), INT_MAX));
        RecordPipeline pipeline(reader_, {.jobs = jobs_, .make_stage = MakeFingerprints()});
        bool group_is_sound = true;
        while (const PipelineRecord* record = pipeline.Next()) {
            if (record->problem) Report(*record->problem);
            if (record->problem && reader_.IsVorbis()) return true; // and so on to the last frame
            // Whatever is decoded over a damaged record depends on what was there before.
            group_is_sound = !record->problem && (IsKey(record->number) || group_is_sound);
            fingerprints_.push_back(group_is_sound ? record->fingerprint : kNotComparable);
            if (hashes_) sha256_.Add(record->record);
            if (!progress->Update(static_cast<std::int32_t>(record->number / 2), total)) {
                return false;
            }
        }
        const Error& why = pipeline.Why();
        if (why.fault == Fault::None) return true;
        if (why.fault == Fault::Stopped) return false;
        const PipelineRecord& failed = pipeline.Failed();
        Report(failed.problem.value_or(reader_.Make(ProblemCode::RecordDamaged,
                                                    why.fault == Fault::TooLarge
                                                        ? std::string(FileFaultText(why.fault))
                                                        : "the record cannot be read",
                                                    failed.number, {}, kNotDone)));
        return false;
    }

    TrackReader& reader_;
    unsigned jobs_;
    bool hashes_;
    Reporter& reporter_;
    bool is_sound_ = true;
    Sha256 sha256_;
    std::optional<std::string> hash_;
    std::vector<Fingerprint> fingerprints_; ///< of the records read in order
};

/// One film after another, and what is known of their hashes.
class Verification {
public:
    Verification(const VerifyOptions& options, const CommonOptions& common)
        : options_(options), common_(common) {}

    int Run(const std::vector<std::string>& names) {
        std::optional<std::string> list_name;
        Reporter list_reporter(options_.hashes.empty() ? options_.write_hashes : options_.hashes);
        if (!options_.hashes.empty() && !known_.Read(options_.hashes, list_reporter)) {
            return list_reporter.Code();
        }
        if (!options_.write_hashes.empty()) {
            list_name = OutputName(options_.write_hashes, {}, common_.force, list_reporter);
            if (!list_name) return list_reporter.Code();
        }
        const FilmList list = ListFilms(names, common_);
        Results results(common_, list.is_several ? ResultCount::Several : ResultCount::One);
        int code = list.code;
        for (const FilmName& film : list.films) {
            if (StopRequested() || results.Failed()) break;
            code = std::max(code, VerifyFilm(film, results));
        }
        if (list_name && !StopRequested()) {
            WriteList(*list_name, list_reporter);
            code = std::max(code, list_reporter.Code());
        }
        return results.Finish(code);
    }

private:
    struct Hash {
        std::string what;
        std::string name;
        std::string hex;
    };

    bool WantsHashes() const { return !options_.hashes.empty() || !options_.write_hashes.empty(); }

    void WriteList(const std::string& name, Reporter& reporter) const {
        HashList list;
        for (const Hash& hash : written_)
            list.Put(hash.what, hash.name, hash.hex);
        const std::string text = list.Text();
        RawOutput output;
        if (!output.Begin(name, common_.force, reporter)) return;
        output.Append({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
        output.Finish(reporter);
    }

    int VerifyFilm(const FilmName& named, Results& results) {
        SetTask("verify " + named.name);
        Reporter reporter(named.name);
        std::vector<Hash> hashes;
        const auto film = DescribeNamedFilm(named, reporter);
        if (!film) {
            if (!results.IsText()) results.Add(ResultOf(named, reporter, hashes), "");
            return reporter.Code();
        }
        for (const Problem& problem : film->problems)
            reporter.Report(problem);
        for (const TrackDescription& track : film->tracks) {
            if (StopRequested()) break;
            if (const auto hash = VerifyTrack(*film, track, reporter)) {
                hashes.push_back({std::string(NameOf(track.kind)), NameFor(named, track), *hash});
            }
        }
        if (WantsHashes() && !StopRequested()) AddFileHashes(named, *film, hashes, reporter);
        if (StopRequested()) return reporter.Code();
        if (!options_.hashes.empty()) CompareHashes(named, *film, hashes, reporter);
        const bool only_warned = reporter.Code() == kAllWell;
        const auto problems = [&](const char* verdict) {
            return fmt::format("{}, {} {}{}", verdict, reporter.Count(),
                               only_warned ? "warning" : "problem",
                               reporter.Count() == 1 ? "" : "s");
        };
        const std::string verdict =
            reporter.Count() == 0 ? "sound" : problems(only_warned ? "sound" : "damaged");
        results.Add(ResultOf(named, reporter, hashes),
                    fmt::format("{}: {}\n", Printable(named.name), verdict));
        written_.insert(written_.end(), hashes.begin(), hashes.end());
        return reporter.Code();
    }

    /// @return the track's hash, where one is wanted and the track is sound
    std::optional<std::string> VerifyTrack(const FilmDescription& film,
                                           const TrackDescription& track,
                                           Reporter& reporter) const {
        for (const Problem& problem : track.problems)
            reporter.Report(problem);
        if (track.form == TrackForm::Unknown) return std::nullopt;
        TrackReader reader(film, track);
        if (const auto problem = reader.Open()) {
            reporter.Report(*problem);
            return std::nullopt;
        }
        if (reader.IsVorbis() && !reader.Vorbis().HasStream() && reader.Count() > 0) {
            reporter.Report(
                reader.Make(ProblemCode::StreamDamaged, "its Ogg stream cannot be set up"));
            return std::nullopt;
        }
        const bool index_agrees = reader.IsVorbis() || CheckIndex(reader, reporter);
        const TrackDescription* const sound = film.Find(TrackKind::Audio);
        CheckSideBlocks(reader,
                        sound == nullptr ? std::nullopt : std::optional(sound->RecordCount()),
                        reporter);
        if (options_.quick) return std::nullopt;
        TrackVerification verification(reader, common_.Jobs(), WantsHashes(), reporter);
        verification.Run(index_agrees);
        return verification.Hash();
    }

    static std::string NameFor(const FilmName& named, const TrackDescription& track) {
        return !named.sound.empty() && track.kind == TrackKind::Audio ? named.sound : named.name;
    }

    static void AddFileHashes(const FilmName& named, const FilmDescription& film,
                              std::vector<Hash>& hashes, Reporter& reporter) {
        const TrackDescription* last = nullptr;
        for (const TrackDescription& track : film.tracks) {
            if (last != nullptr && last->file == track.file) continue;
            last = &track;
            if (const auto hex = HashOfFile(track.file)) {
                hashes.push_back({std::string(kHashOfFile), NameFor(named, track), *hex});
            } else if (!StopRequested()) {
                reporter.NotDone("it cannot be read", ProblemCode::InputUnreadable);
            }
        }
    }

    void CompareHashes(const FilmName& named, const FilmDescription& film,
                       const std::vector<Hash>& hashes, Reporter& reporter) const {
        const auto differs = [&](std::string_view what, std::string text) {
            Problem problem{.code = ProblemCode::RecordDiffers, .what = std::move(text)};
            if (what != kHashOfFile && film.HasNamedTracks()) {
                problem.track =
                    what == NameOf(TrackKind::Audio) ? TrackKind::Audio : TrackKind::Video;
            }
            reporter.Report(problem);
        };
        for (const Hash& hash : hashes) {
            const std::string* const known = known_.Find(hash.what, hash.name);
            const char* const whole = hash.what == kHashOfFile ? "the file" : "what it decodes to";
            if (known == nullptr) {
                differs(hash.what, fmt::format("the list has no hash of {}", whole));
            } else if (*known != hash.hex) {
                differs(hash.what, fmt::format("{} has another hash than in the list", whole));
            }
        }
        if (options_.quick) return;
        for (const TrackKind kind : {TrackKind::Audio, TrackKind::Video}) {
            const TrackDescription* const track = film.Find(kind);
            const std::string name =
                track != nullptr ? NameFor(named, *track) : std::string(named.name);
            const bool is_there = std::ranges::any_of(
                hashes, [&](const Hash& hash) { return hash.what == NameOf(kind); });
            if (!is_there && known_.Find(NameOf(kind), name) != nullptr) {
                differs(NameOf(kind), "the list has its hash, and it cannot be had any more");
            }
        }
    }

    static Json ResultOf(const FilmName& named, const Reporter& reporter,
                         const std::vector<Hash>& hashes) {
        Json json = ResultFor(named.name);
        if (!named.sound.empty()) PutName(json, "sound_file", named.sound);
        json["intact"] = reporter.Code() == kAllWell;
        if (!hashes.empty()) {
            json["hashes"] = Json::array();
            for (const Hash& hash : hashes) {
                Json entry;
                entry["of"] = hash.what;
                PutName(entry, "name", hash.name);
                entry["sha256"] = hash.hex;
                json["hashes"].push_back(std::move(entry));
            }
        }
        json["problem_count"] = reporter.Count();
        json["problems"] = JsonOf(reporter.Problems());
        return json;
    }

    const VerifyOptions& options_;
    const CommonOptions& common_;
    HashList known_;
    std::vector<Hash> written_;
};

} // namespace

void AddVerify(CommandLine& line) {
    CLI::App& command = line.AddCommand(
        "verify", "Read everything, in order and by number; 0 sound, 1 damaged, 2 unreadable",
        kUsesJson | kUsesJobs | kUsesForce);
    const auto options = std::make_shared<VerifyOptions>();
    const auto files = line.AddFiles(command);
    command.add_flag("--quick", options->quick,
                     "only headers, index and side blocks; nothing is decoded");
    command
        .add_option("--write-hashes", options->write_hashes,
                    "write a list of the sha256 of each file, and of each sound track once it is "
                    "decoded")
        ->type_name("F");
    command
        .add_option("--hashes", options->hashes,
                    "compare with such a list; what differs or is missing is damage")
        ->type_name("F");
    line.WhenChosen(command, [options, files](const CommonOptions& common) {
        return Verification(*options, common).Run(*files);
    });
}

} // namespace kelvo::tool
