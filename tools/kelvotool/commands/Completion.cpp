// Scripts that complete command lines in the usual shells, made from the options themselves, so
// that they cannot tell of an option that is not there.

#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"

#include <fmt/format.h>

#include <memory>
#include <string>
#include <vector>

namespace kelvo::tool {

namespace {

/// Every spelling of the options that a command knows.
std::vector<std::string> OptionNames(const CommandLine& line, const CLI::App& command) {
    std::vector<std::string> names;
    const auto add = [&names](const CLI::Option* option) {
        for (const std::string& name : option->get_snames())
            names.push_back("-" + name);
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    };
    for (const CLI::Option* option : command.get_options())
        add(option);
    for (const CLI::Option* option : line.CommonOptionsOf(command))
        add(option);
    return names;
}

std::string CommandNames(const CommandLine& line) {
    std::vector<std::string> names;
    for (const CLI::App* command : line.Commands())
        names.push_back(command->get_name());
    return fmt::format("{}", fmt::join(names, " "));
}

/// The text in single quotes for a Bourne shell.
std::string Quoted(std::string_view text) {
    std::string quoted = "'";
    for (const char letter : text) {
        if (letter == '\'') {
            quoted += "'\\''";
        } else {
            quoted += letter;
        }
    }
    return quoted + "'";
}

std::string BashScript(const CommandLine& line) {
    std::string script = fmt::format(R"(# bash completion for kelvotool
_kelvotool() {{
    local word=${{COMP_WORDS[COMP_CWORD]}} command= i
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${{COMP_WORDS[i]}} in -*) ;; *) command=${{COMP_WORDS[i]}}; break ;; esac
    done
    if [[ -z $command ]]; then
        COMPREPLY=($(compgen -W '{} -h --help -V --version' -- "$word"))
        return
    fi
    if [[ $word == -* ]]; then
        case $command in
)",
                                     CommandNames(line));
    for (const CLI::App* command : line.Commands()) {
        script += fmt::format("        {}) COMPREPLY=($(compgen -W '{}' -- \"$word\")) ;;\n",
                              command->get_name(), fmt::join(OptionNames(line, *command), " "));
    }
    script += fmt::format(R"(        esac
        return
    fi
    case $command in
    help) COMPREPLY=($(compgen -W '{}' -- "$word")) ;;
    completion) COMPREPLY=($(compgen -W 'bash zsh fish' -- "$word")) ;;
    *) COMPREPLY=($(compgen -f -- "$word")) ;;
    esac
}}
complete -o filenames -F _kelvotool kelvotool
)",
                          CommandNames(line));
    return script;
}

std::string ZshScript(const CommandLine& line) {
    std::string script = "#compdef kelvotool\n_kelvotool() {\n    local -a commands\n"
                         "    commands=(\n";
    for (const CLI::App* command : line.Commands()) {
        script += fmt::format("        {}\n",
                              Quoted(command->get_name() + ":" + command->get_description()));
    }
    script += "    )\n    if (( CURRENT == 2 )); then\n        _describe command commands\n"
              "        return\n    fi\n    if [[ $words[CURRENT] == -* ]]; then\n"
              "        case $words[2] in\n";
    for (const CLI::App* command : line.Commands()) {
        script += fmt::format("        {}) compadd -- {} ;;\n", command->get_name(),
                              fmt::join(OptionNames(line, *command), " "));
    }
    script +=
        fmt::format("        esac\n        return\n    fi\n    case $words[2] in\n"
                    "    help) compadd -- {} ;;\n    completion) compadd -- bash zsh fish ;;\n"
                    "    *) _files ;;\n    esac\n}}\ncompdef _kelvotool kelvotool\n",
                    CommandNames(line));
    return script;
}

std::string FishScript(const CommandLine& line) {
    std::string script = "# fish completion for kelvotool\n";
    for (const CLI::App* command : line.Commands()) {
        script += fmt::format("complete -c kelvotool -n __fish_use_subcommand -f -a {} -d {}\n",
                              command->get_name(), Quoted(command->get_description()));
        const auto add = [&](const CLI::Option* option) {
            std::string names;
            for (const std::string& name : option->get_snames())
                names += " -s " + name;
            for (const std::string& name : option->get_lnames())
                names += " -l " + name;
            if (names.empty()) return;
            const char* const value = option->get_expected_max() > 0 ? " -r" : "";
            script +=
                fmt::format("complete -c kelvotool -n '__fish_seen_subcommand_from {}'{}{} "
                            "-d {}\n",
                            command->get_name(), names, value, Quoted(option->get_description()));
        };
        for (const CLI::Option* option : command->get_options())
            add(option);
        for (const CLI::Option* option : line.CommonOptionsOf(*command))
            add(option);
    }
    script += fmt::format("complete -c kelvotool -n '__fish_seen_subcommand_from help' -f -a '{}'\n"
                          "complete -c kelvotool -n '__fish_seen_subcommand_from completion' -f "
                          "-a 'bash zsh fish'\n",
                          CommandNames(line));
    return script;
}

} // namespace

void AddCompletion(CommandLine& line) {
    CLI::App& command =
        line.AddCommand("completion", "Print a script that completes command lines in a shell", 0);
    const auto shell = std::make_shared<std::string>();
    command.add_option("SHELL", *shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}).description(""))
        ->type_name("");
    line.WhenChosen(command, [&line, shell](const CommonOptions&) {
        StandardOutput output;
        output.Write(*shell == "bash"  ? BashScript(line)
                     : *shell == "zsh" ? ZshScript(line)
                                       : FishScript(line));
        return output.Finish(kAllWell);
    });
}

} // namespace kelvo::tool
