#pragma once
// The command line: each command adds itself with its own options, and says which of the common
// ones it has a use for.

#include "tools/kelvotool/options/CommonOptions.h"

#include <CLI/CLI.hpp>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace kelvo::tool {

class CommandLine {
public:
    CommandLine();
    CommandLine(const CommandLine&) = delete;
    CommandLine& operator=(const CommandLine&) = delete;

    /// @param uses  CommonUse bits
    /// @return where the command adds its own options
    CLI::App& AddCommand(const std::string& name, const std::string& description, unsigned uses);
    /// What the command does once everything was understood; its answer is the exit code.
    void WhenChosen(CLI::App& command, std::function<int(const CommonOptions&)> run);
    /// Looked at before the command runs: it may throw CLI::ValidationError.
    void CheckWhenChosen(CLI::App& command, std::function<void()> check);
    /// Adds the names of any number of films, given on the command line, in a list (-0) or as a
    /// folder (-r). To name none is wrong use.
    std::shared_ptr<std::vector<std::string>> AddFiles(CLI::App& command);

    /// Reads the arguments and runs what they ask for.
    int Run(int argc, char** argv);

    /// What `help` shows: all commands and the common options.
    std::string Overview() const;
    /// The commands in the order in which they were added.
    std::vector<const CLI::App*> Commands() const;
    /// The common options that a command has a use for, those of everybody included.
    std::vector<const CLI::Option*> CommonOptionsOf(const CLI::App& command) const;
    /// What `help COMMAND` shows: the command's own options and the common ones.
    std::string HelpFor(const CLI::App& command) const;

private:
    void AddCommonOptions();
    void AddCommonOption(CLI::Option* option, unsigned use);
    void RefuseUnusedOptions(const CLI::App& command) const;
    int SayWhyNot(const CLI::ParseError& error) const;

    struct Command {
        const CLI::App* app = nullptr;
        unsigned uses = 0;
        std::function<void()> check = {};
        std::function<int(const CommonOptions&)> run = {};
    };
    Command& Find(const CLI::App& app);

    CLI::App app_;
    CommonOptions common_;
    bool json_ = false;
    bool json_lines_ = false;
    std::map<const CLI::Option*, unsigned> common_uses_;
    std::vector<Command> commands_;
};

} // namespace kelvo::tool
