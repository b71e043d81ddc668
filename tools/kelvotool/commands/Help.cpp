#include "tools/kelvotool/commands/Commands.h"
#include "tools/kelvotool/options/CommandLine.h"
#include "tools/kelvotool/report/Console.h"

#include <algorithm>
#include <memory>
#include <string>

namespace kelvo::tool {

void AddHelp(CommandLine& line) {
    CLI::App& command = line.AddCommand("help", "Show this overview, or the page of a command", 0);
    const auto topic = std::make_shared<std::string>();
    command.add_option("COMMAND", *topic, "the command to explain");
    line.CheckWhenChosen(command, [&line, topic] {
        const auto commands = line.Commands();
        const bool is_known =
            topic->empty() || std::ranges::any_of(commands, [&](const CLI::App* known) {
                return known->get_name() == *topic;
            });
        if (!is_known) throw CLI::ValidationError("there is no command " + *topic);
    });
    line.WhenChosen(command, [&line, topic](const CommonOptions&) {
        StandardOutput output;
        if (topic->empty()) output.Write(line.Overview());
        for (const CLI::App* known : line.Commands()) {
            if (known->get_name() == *topic) output.Write(line.HelpFor(*known));
        }
        return output.Finish(kAllWell);
    });
}

} // namespace kelvo::tool
