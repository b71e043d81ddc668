#include "tools/kelvotool/options/CommandLine.h"

#include "tools/kelvotool/report/Reporter.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace kelvo::tool {

namespace {

constexpr unsigned kMostJobs = 1024;
constexpr unsigned kEverybody = 0;

} // namespace

CommandLine::CommandLine()
    : app_("Inspects, proves, mends, changes and frees films and sound tracks.", "kelvotool") {
    app_.set_help_flag("-h,--help", "show this, or the page of a command");
    app_.set_version_flag("-V,--version", "kelvotool " KELVO_VERSION);
    app_.require_subcommand(1);
    app_.fallthrough();
    AddCommonOptions();
}

void CommandLine::AddCommonOption(CLI::Option* option, unsigned use) {
    option->group("Common options");
    common_uses_[option] = use;
}

void CommandLine::AddCommonOptions() {
    static const std::map<std::string, ProgressStyle> kProgress{{"auto", ProgressStyle::Auto},
                                                                {"bar", ProgressStyle::Bar},
                                                                {"lines", ProgressStyle::Lines},
                                                                {"json", ProgressStyle::Json},
                                                                {"none", ProgressStyle::None}};
    static const std::map<std::string, ColourUse> kColours{
        {"auto", ColourUse::Auto}, {"always", ColourUse::Always}, {"never", ColourUse::Never}};
    const auto choose = [this](const std::string& name, auto& target, const auto& values,
                               const std::string& description) {
        std::vector<std::string> names;
        for (const auto& [value_name, value] : values)
            names.push_back(value_name);
        return app_
            .add_option_function<std::string>(
                name, [&target, &values](const std::string& value) { target = values.at(value); },
                description)
            ->check(CLI::IsMember(names).description(""))
            ->type_name(fmt::format("{}", fmt::join(names, "|")));
    };
    AddCommonOption(app_.add_flag("-q,--quiet", common_.quiet,
                                  "no results in words and no progress; what is wrong is said"),
                    kEverybody);
    AddCommonOption(
        app_.add_flag("-v,--verbose", common_.verbose, "show the boxes that a player would show"),
        kEverybody);
    AddCommonOption(app_.add_flag("--strict", common_.strict, "warnings count as damage"),
                    kEverybody);
    AddCommonOption(choose("--progress", common_.progress, kProgress,
                           "how far long work is, on standard error"),
                    kEverybody);
    AddCommonOption(choose("--color", common_.colour, kColours,
                           "colours on standard error; NO_COLOR turns auto off"),
                    kEverybody);
    AddCommonOption(app_.add_flag("--json", json_, "results as one JSON document"), kUsesJson);
    AddCommonOption(app_.add_flag("--jsonl", json_lines_, "results as one JSON object a line"),
                    kUsesJson);
    AddCommonOption(app_.add_flag("-f,--force", common_.force, "replace an output that exists"),
                    kUsesForce);
    AddCommonOption(
        app_.add_option("-o,--output", common_.output, "the file to write")->type_name("OUT"),
        kUsesOutput);
    AddCommonOption(app_.add_option("--jobs", common_.jobs,
                                    "so many at the same time; as many as there are cores if not "
                                    "given")
                        ->type_name("N")
                        ->check(CLI::Range(1U, kMostJobs)),
                    kUsesJobs);
}

CLI::App& CommandLine::AddCommand(const std::string& name, const std::string& description,
                                  unsigned uses) {
    CLI::App* const command = app_.add_subcommand(name, description);
    command->set_help_flag("-h,--help", "show this");
    commands_.push_back({.app = command, .uses = uses});
    return *command;
}

CommandLine::Command& CommandLine::Find(const CLI::App& app) {
    return *std::ranges::find(commands_, &app, &Command::app);
}

void CommandLine::WhenChosen(CLI::App& command, std::function<int(const CommonOptions&)> run) {
    Find(command).run = std::move(run);
}

void CommandLine::CheckWhenChosen(CLI::App& command, std::function<void()> check) {
    Find(command).check = std::move(check);
}

std::vector<const CLI::App*> CommandLine::Commands() const {
    std::vector<const CLI::App*> commands;
    for (const Command& command : commands_)
        commands.push_back(command.app);
    return commands;
}

std::vector<const CLI::Option*> CommandLine::CommonOptionsOf(const CLI::App& command) const {
    const unsigned uses = std::ranges::find(commands_, &command, &Command::app)->uses;
    std::vector<const CLI::Option*> options;
    for (const CLI::Option* option : app_.get_options()) {
        const auto found = common_uses_.find(option);
        if (found == common_uses_.end()) continue;
        if (found->second == kEverybody || (found->second & uses) != 0) options.push_back(option);
    }
    return options;
}

std::string CommandLine::Overview() const {
    // The parser's own way would show the command that was chosen.
    return app_.get_formatter()->make_help(&app_, "kelvotool", CLI::AppFormatMode::Normal);
}

std::string CommandLine::HelpFor(const CLI::App& command) const {
    std::string text = command.help("kelvotool");
    text += "\nCommon options:\n";
    const auto formatter = app_.get_formatter();
    const auto* const formatted = dynamic_cast<const CLI::Formatter*>(formatter.get());
    for (const CLI::Option* option : CommonOptionsOf(command)) {
        text += formatted->make_option(option, false);
    }
    return text;
}

void CommandLine::RefuseUnusedOptions(const CLI::App& command) const {
    const auto used = CommonOptionsOf(command);
    for (const auto& [option, use] : common_uses_) {
        if (option->count() == 0 || std::ranges::find(used, option) != used.end()) continue;
        throw CLI::ValidationError(
            fmt::format("{} has no use for {}", command.get_name(), option->get_name()));
    }
}

// Wrong use is said in one line, help on standard output.
int CommandLine::SayWhyNot(const CLI::ParseError& error) const {
    const auto chosen = app_.get_subcommands();
    if (error.get_exit_code() == 0) {
        StandardOutput output;
        const bool is_help = dynamic_cast<const CLI::CallForHelp*>(&error) != nullptr ||
                             dynamic_cast<const CLI::CallForAllHelp*>(&error) != nullptr;
        const auto help = [&] { return chosen.empty() ? Overview() : HelpFor(*chosen.front()); };
        output.Write(is_help ? help() : std::string(error.what()) + "\n");
        return output.Finish(kAllWell);
    }
    // An unknown command is found to be missing before it is found to be unknown.
    std::string what = error.what();
    if (const auto rest = app_.remaining(); chosen.empty() && !rest.empty()) {
        what = (rest.front().starts_with('-') ? "there is no option " : "there is no command ") +
               rest.front();
    }
    SayError(Printable(what) + "; see kelvotool --help");
    return kNotDone;
}

int CommandLine::Run(int argc, char** argv) {
    const Command* chosen = nullptr;
    try {
        app_.parse(argc, argv);
        const CLI::App& command = *app_.get_subcommands().front();
        RefuseUnusedOptions(command);
        chosen = &Find(command);
        if (json_ && json_lines_) throw CLI::ExcludesError("--json", "--jsonl");
        if (chosen->check) chosen->check();
    } catch (const CLI::ParseError& error) {
        return SayWhyNot(error);
    }
    if (json_) common_.format = ResultFormat::Document;
    if (json_lines_) common_.format = ResultFormat::Lines;
    if (common_.strict) Reporter::CountWarningsAsDamage();
    if (common_.quiet && common_.progress == ProgressStyle::Auto) {
        common_.progress = ProgressStyle::None;
    }
    InstallConsole({.boxes = common_.verbose ? Boxes::Shown : Boxes::Hidden,
                    .progress = common_.progress,
                    .colour = common_.colour});
    return chosen->run(common_);
}

std::shared_ptr<std::vector<std::string>> CommandLine::AddFiles(CLI::App& command) {
    auto names = std::make_shared<std::vector<std::string>>();
    command.add_option("FILE", *names, "films (.kva) and tracks (.kvf, .kaf)");
    command
        .add_option("-0,--files0-from", common_.names_from,
                    "also the files whose names, each ended by a 0 byte, stand in F; - is standard "
                    "input")
        ->type_name("F");
    command.add_flag("-r,--recursive", common_.recursive,
                     "a folder stands for all films and tracks in and below it");
    CheckWhenChosen(command, [this, names] {
        if (names->empty() && !common_.names_from) throw CLI::RequiredError("FILE");
    });
    return names;
}

} // namespace kelvo::tool
