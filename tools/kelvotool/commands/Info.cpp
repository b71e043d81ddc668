#include "container/Compressionekel.h"
#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/files/FileList.h"
#include "tools/kelvotool/film/FilmDescription.h"
#include "tools/kelvotool/film/TrackReader.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"
#include "tools/kelvotool/report/Results.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::tool {

namespace {

/// What only opening the track tells.
struct TrackState {
    const TrackDescription* track = nullptr;
    std::vector<Problem> problems = {}; ///< of the headers and of the opening
    bool opens = false;
};

TrackState StateOf(const FilmDescription& film, const TrackDescription& track) {
    TrackState state{.track = &track, .problems = track.problems};
    if (track.form == TrackForm::Unknown) return state;
    TrackReader reader(film, track);
    if (auto problem = reader.Open()) {
        state.problems.push_back(std::move(*problem));
        return state;
    }
    state.opens = true;
    if (reader.IsVorbis() && !reader.Vorbis().HasStream()) {
        state.problems.push_back(
            reader.Make(ProblemCode::StreamDamaged, "its Ogg stream cannot be set up"));
    }
    return state;
}

std::string_view FormName(TrackForm form) {
    switch (form) {
    case TrackForm::Container:
        return "container";
    case TrackForm::Vorbis:
        return "vorbis";
    case TrackForm::Unknown:
        break;
    }
    return "unknown";
}

Json JsonOf(const ContainerHeader& header) {
    return {{"UserHeaderSize", header.UserHeaderSize}, {"RecordLength", header.RecordLength},
            {"SideLength", header.SideLength},         {"CreatorValue", header.CreatorValue},
            {"RecordCount", header.RecordCount},       {"CompressionType", header.CompressionType},
            {"KeyInterval", header.KeyInterval},       {"IndexOffset", header.IndexOffset},
            {"HeaderMark", header.HeaderMark}};
}

Json JsonOf(const VorbisDescription& description) {
    return {
        {"FrameCount", description.frame_count},    {"SampleRate", description.SampleRate},
        {"channels", description.channels},         {"BytesPerSample", description.BytesPerSample},
        {"nFramesAlSec", description.nFramesAlSec}, {"FrameBytes", description.FrameBytes}};
}

Json JsonOf(const AudioHeader& header) {
    const WAVEFORMATEX& format = header.Format;
    return {{"SampleRate", header.SampleRate},
            {"BytesPerSample", header.BytesPerSample},
            {"nFramesAlSec", header.nFramesAlSec},
            {"FrameBytes", header.FrameBytes},
            {"wFormatTag", WORD{format.wFormatTag}},
            {"nChannels", WORD{format.nChannels}},
            {"nSamplesPerSec", DWORD{format.nSamplesPerSec}},
            {"nAvgBytesPerSec", DWORD{format.nAvgBytesPerSec}},
            {"nBlockAlign", WORD{format.nBlockAlign}},
            {"wBitsPerSample", WORD{format.wBitsPerSample}},
            {"cbSize", WORD{format.cbSize}}};
}

Json JsonOf(const VideoHeader& header) {
    return {{"biWidth", LONG{header.bitmap.biWidth}},
            {"biHeight", LONG{header.bitmap.biHeight}},
            {"biBitCount", WORD{header.bitmap.biBitCount}},
            {"BitmapHeaderLength", header.BitmapHeaderLength},
            {"VideoHeaderLength", header.VideoHeaderLength},
            {"nImgAlSec", header.nImgAlSec},
            {"VideoFlags", header.VideoFlags}};
}

int TypeOf(const TrackDescription& track) {
    constexpr int kVorbisType = 69;
    return track.vorbis ? kVorbisType : static_cast<int>(track.container->CompressionType);
}

std::uint64_t DecodedBytes(const TrackDescription& track) {
    const std::uint64_t record = track.vorbis      ? track.vorbis->FrameBytes
                                 : track.container ? track.container->RecordLength
                                                   : 0;
    return record * track.RecordCount();
}

Json JsonOf(const TrackState& state) {
    const TrackDescription& track = *state.track;
    Json json{{"form", FormName(track.form)}};
    if (track.container) json["container"] = JsonOf(*track.container);
    if (track.vorbis) json["vorbis"] = JsonOf(*track.vorbis);
    if (track.container || track.vorbis) {
        json["type"] = TypeOf(track);
        json["description"] = Compressionekel::TypeDescription(TypeOf(track));
    }
    if (track.audio) json["track"] = JsonOf(*track.audio);
    if (track.video) json["track"] = JsonOf(*track.video);
    if (track.container || track.vorbis) {
        json["records"] = track.RecordCount();
        if (const auto seconds = track.DurationSeconds()) json["duration_s"] = *seconds;
        json["bytes"] = track.window.Size();
        json["decoded_bytes"] = DecodedBytes(track);
        json["opens"] = state.opens;
    }
    if (!state.problems.empty()) json["error"] = state.problems.front().what;
    return json;
}

Json JsonOf(const FilmName& named, const FilmDescription& film,
            const std::vector<TrackState>& states, const std::vector<Problem>& problems) {
    Json json = ResultFor(named.name);
    if (film.is_pair) PutName(json, "sound_file", named.sound);
    json["size"] = film.size;
    if (film.is_film) {
        const auto& [audio, video] = film.directory;
        json["AVDirectory"] = {audio.start, audio.end, video.start, video.end};
    }
    for (const TrackState& state : states) {
        json[state.track->kind == TrackKind::Audio ? "a" : "v"] = JsonOf(state);
    }
    json["problems"] = tool::JsonOf(problems);
    return json;
}

std::string Clock(double seconds) {
    const auto tenths = static_cast<std::uint64_t>(seconds * 10);
    return fmt::format("{}:{:02}.{}", tenths / 600, tenths / 10 % 60, tenths % 10);
}

void AppendLine(std::string& text, std::string_view label, const std::string& value) {
    text += fmt::format("  {:<12} {}\n", label, value);
}

std::string TextOf(const AudioHeader& header) {
    return fmt::format("{} samples a second of {} bits, {} frames a second of {} bytes",
                       header.SampleRate, std::uint64_t{header.BytesPerSample} * 8,
                       header.nFramesAlSec, header.FrameBytes);
}

std::string TextOf(const VideoHeader& header) {
    return fmt::format("{} x {} pixels of {} bits, {} images a second{}",
                       LONG{header.bitmap.biWidth}, LONG{header.bitmap.biHeight},
                       WORD{header.bitmap.biBitCount}, header.nImgAlSec,
                       (header.VideoFlags & kScannedFlag) != 0 ? ", scanned" : "");
}

std::string TextOf(const TrackState& state) {
    const TrackDescription& track = *state.track;
    std::string text = fmt::format("{}\n", NameOf(track.kind));
    AppendLine(text, "place",
               fmt::format("{} to {}, {} bytes", track.window.start, track.window.end,
                           track.window.Size()));
    if (!track.container && !track.vorbis) return text;
    const char* const description = Compressionekel::TypeDescription(TypeOf(track));
    AppendLine(text, "type",
               fmt::format("{} ({})", TypeOf(track), *description == 0 ? "unknown" : description));
    if (track.audio) AppendLine(text, "sound", TextOf(*track.audio));
    if (track.video) AppendLine(text, "picture", TextOf(*track.video));
    const auto seconds = track.DurationSeconds();
    AppendLine(text, "records",
               fmt::format("{}{}, {} bytes decoded", track.RecordCount(),
                           seconds ? ", " + Clock(*seconds) : "", DecodedBytes(track)));
    if (track.container) {
        const ContainerHeader& header = *track.container;
        AppendLine(text, "header",
                   fmt::format("user header {}, record {}, side block {}, creator {}, "
                               "key interval {}, mark {}",
                               header.UserHeaderSize, header.RecordLength, header.SideLength,
                               header.CreatorValue, header.KeyInterval, header.HeaderMark));
        AppendLine(
            text, "index",
            fmt::format("at {}{}", header.IndexOffset, state.opens ? "" : ", cannot be used"));
        for (const Problem& problem : state.problems) {
            if (!problem.remedy.empty()) AppendLine(text, "remedy", problem.remedy);
        }
    }
    return text;
}

std::string PlainText(const FilmName& named, const FilmDescription& film,
                      const std::vector<TrackState>& states) {
    const std::string with_sound = film.is_pair ? " and " + Printable(named.sound) : "";
    std::string text = fmt::format("{}{}: {}, {} bytes\n", Printable(named.name), with_sound,
                                   film.is_film   ? "film"
                                   : film.is_pair ? "pair"
                                                  : "track",
                                   film.size);
    if (film.is_film) {
        const auto& [audio, video] = film.directory;
        AppendLine(text, "directory",
                   fmt::format("{} {} {} {}", audio.start, audio.end, video.start, video.end));
    }
    for (const TrackState& state : states)
        text += TextOf(state);
    return text;
}

int InfoOf(const FilmName& named, Results& results) {
    SetTask("info " + named.name);
    Reporter reporter(named.name);
    const auto film = DescribeNamedFilm(named, reporter);
    if (!film) {
        Json json = ResultFor(named.name);
        json["problems"] = tool::JsonOf(reporter.Problems());
        if (results.ListsFailures()) results.Add(json, "");
        return reporter.Code();
    }
    std::vector<TrackState> states;
    std::vector<Problem> problems = film->problems;
    for (const TrackDescription& track : film->tracks) {
        states.push_back(StateOf(*film, track));
        const auto& found = states.back().problems;
        problems.insert(problems.end(), found.begin(), found.end());
    }
    results.Add(JsonOf(named, *film, states, problems), PlainText(named, *film, states));
    for (const Problem& problem : problems)
        reporter.Report(problem);
    return reporter.Code();
}

int RunInfo(const std::vector<std::string>& names, const CommonOptions& common) {
    const FilmList list = ListFilms(names, common);
    Results results(common, list.is_several ? ResultCount::Several : ResultCount::One);
    int code = list.code;
    for (const FilmName& film : list.films) {
        if (!StopRequested() && !results.Failed()) code = std::max(code, InfoOf(film, results));
    }
    return results.Finish(code);
}

} // namespace

void AddInfo(CommandLine& line) {
    CLI::App& command =
        line.AddCommand("info", "Show the headers, tracks and sizes of films", kUsesJson);
    const auto files = line.AddFiles(command);
    line.WhenChosen(command,
                    [files](const CommonOptions& common) { return RunInfo(*files, common); });
}

} // namespace kelvo::tool
