#include "tools/kelvotool/report/Problem.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace kelvo::tool {

namespace {

struct CodeEntry {
    ProblemCode code;
    std::string_view name;
    std::string_view remedy;
};

constexpr std::string_view kRebuild = "kelvotool rebuild makes the index anew";
constexpr std::string_view kSalvage = "kelvotool rebuild --salvage keeps what can be read";

constexpr std::array kCodes = {
    CodeEntry{ProblemCode::NotDone, "not-done", ""},
    CodeEntry{ProblemCode::InputMissing, "input-missing", "look at the name"},
    CodeEntry{ProblemCode::InputUnreadable, "input-unreadable", "copy it to another disk first"},
    CodeEntry{ProblemCode::NotAFilm, "not-a-film", ""},
    CodeEntry{ProblemCode::OutputExists, "output-exists", "-f replaces it"},
    CodeEntry{ProblemCode::OutputUnwritable, "output-unwritable",
              "make room, or choose another folder"},
    CodeEntry{ProblemCode::NotPossible, "not-possible", ""},
    CodeEntry{ProblemCode::HeaderDamaged, "header-damaged", kSalvage},
    CodeEntry{ProblemCode::DirectoryDamaged, "directory-damaged", kSalvage},
    CodeEntry{ProblemCode::IndexMissing, "index-missing", kRebuild},
    CodeEntry{ProblemCode::IndexDamaged, "index-damaged", kRebuild},
    CodeEntry{ProblemCode::RecordDamaged, "record-damaged", kSalvage},
    CodeEntry{ProblemCode::RecordMissing, "record-missing", kSalvage},
    CodeEntry{ProblemCode::RecordDiffers, "record-differs", kSalvage},
    CodeEntry{ProblemCode::StreamDamaged, "stream-damaged", kSalvage},
    CodeEntry{ProblemCode::SyncDamaged, "sync-damaged", "kelvotool link writes the numbers anew"},
    CodeEntry{ProblemCode::LeftOut, "left-out", ""},
};

const CodeEntry& EntryOf(ProblemCode code) {
    return *std::ranges::find(kCodes, code, &CodeEntry::code);
}

std::string_view SeverityName(ExitCode severity) {
    switch (severity) {
    case kAllWell:
        return "warning";
    case kDamaged:
        return "damaged";
    default:
        return "unreadable";
    }
}

} // namespace

std::string_view NameOf(TrackKind kind) {
    return kind == TrackKind::Audio ? "audio" : "video";
}

std::string_view CodeName(ProblemCode code) {
    return EntryOf(code).name;
}

std::string_view RemedyFor(ProblemCode code) {
    return EntryOf(code).remedy;
}

std::string TextOf(const Problem& problem) {
    std::string text;
    if (problem.track) text = fmt::format("{}: ", NameOf(*problem.track));
    text += problem.what;
    if (problem.record && problem.offset) {
        text += fmt::format(" (record {}, offset {})", *problem.record, *problem.offset);
    } else if (problem.record) {
        text += fmt::format(" (record {})", *problem.record);
    } else if (problem.offset) {
        text += fmt::format(" (offset {})", *problem.offset);
    }
    return text;
}

nlohmann::ordered_json JsonOf(const Problem& problem) {
    nlohmann::ordered_json json{{"code", CodeName(problem.code)},
                                {"severity", SeverityName(problem.severity)}};
    if (problem.track) json["track"] = NameOf(*problem.track);
    if (problem.record) json["record"] = *problem.record;
    if (problem.offset) json["offset"] = *problem.offset;
    json["message"] = problem.what;
    const std::string_view remedy =
        problem.remedy.empty() ? RemedyFor(problem.code) : std::string_view{problem.remedy};
    if (!remedy.empty()) json["remedy"] = remedy;
    return json;
}

} // namespace kelvo::tool
