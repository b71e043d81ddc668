// A film as something that other programs open.

#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/commands/RangeOption.h"
#include "tools/kelvotool/exporting/FilmExport.h"
#include "tools/kelvotool/options/CommandLine.h"

#include <fmt/format.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelvo::tool {

namespace {

constexpr std::uint32_t kLargestScale = 64;

} // namespace

void AddExport(CommandLine& line) {
    static const std::map<std::string, TrackKind> kKinds{{"audio", TrackKind::Audio},
                                                         {"video", TrackKind::Video}};
    static const std::map<std::string, TimingRule> kRules{{"sync", TimingRule::Sync},
                                                          {"cfr", TimingRule::Constant},
                                                          {"capture", TimingRule::Capture}};
    std::vector<std::string> formats;
    for (const ExportFormat& format : ExportFormats())
        formats.emplace_back(format.name);
    CLI::App& command = line.AddCommand("export",
                                        "Write a film as something that other programs open: " +
                                            fmt::format("{}", fmt::join(formats, ", ")),
                                        kUsesJson | kUsesForce | kUsesJobs);
    const auto options = std::make_shared<ExportOptions>();
    command.add_option("FILM", options->input, "a .kva, .kvf or .kaf file")->required();
    command
        .add_option("OUT", options->output,
                    "the new file; of pictures a name such as frames-%06d.png or a folder; - is "
                    "standard output")
        ->required();
    command.add_option("--format", options->format, "where OUT's name does not tell it")
        ->check(CLI::IsMember(formats).description(""))
        ->type_name("FORMAT");
    command
        .add_option_function<std::string>(
            "--track", [options](const std::string& name) { options->track = kKinds.at(name); },
            "only this one")
        ->check(CLI::IsMember({"audio", "video"}).description(""))
        ->type_name("audio|video");
    AddRangeOption(command, options->ranges);
    command
        .add_option_function<std::string>(
            "--timing", [options](const std::string& name) { options->timing = kRules.at(name); },
            "when images are shown: with their sound (repeating and dropping), each once, or as "
            "they were scanned; sync where sound goes with them, else cfr")
        ->check(CLI::IsMember({"sync", "cfr", "capture"}).description(""))
        ->type_name("sync|cfr|capture");
    command.add_option("--scale", options->scale, "every pixel so many times wide and high")
        ->check(CLI::Range(1U, kLargestScale))
        ->type_name("N");
    command
        .add_option("--preset", options->preset,
                    "of .mkv, .mp4 and .webm: archive loses nothing, share is small")
        ->check(CLI::IsMember({"archive", "share"}).description(""))
        ->type_name("archive|share");
    line.WhenChosen(command, [options](const CommonOptions& common) {
        SetTask("export " + options->input);
        return FilmExport(*options, common).Run();
    });
}

} // namespace kelvo::tool
