// resource_compiler [-I FOLDER]... [-D NAME[=VALUE]]... [--depfile FILE] -o OUT SCRIPT
//
// OUT ending in .cpp is a source file to be linked into the program, anything else the bytes alone.
// Exit: 0, or 1 with "file:line: what is wrong" on standard error and no OUT.

#include "tools/resource_compiler/ResourceScript.h"

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace {

using namespace kelvo::resource_compiler;

constexpr const char* kUsage = "usage: resource_compiler [-I FOLDER]... [-D NAME[=VALUE]]... "
                               "[--depfile FILE] -o OUT SCRIPT";

struct CommandLine {
    ScriptOptions options;
    std::string script;
    std::string output;
    std::string depfile;
};

std::optional<CommandLine> ParseCommandLine(const std::vector<std::string>& arguments) {
    CommandLine line;
    for (std::size_t i = 0; i < arguments.size(); ++i) {
        const std::string& argument = arguments[i];
        const bool takes_value =
            argument == "-I" || argument == "-D" || argument == "-o" || argument == "--depfile";
        if (!takes_value) {
            if (argument.starts_with('-') || !line.script.empty()) return std::nullopt;
            line.script = argument;
            continue;
        }
        if (++i == arguments.size()) return std::nullopt;
        const std::string& value = arguments[i];
        if (argument == "-I") {
            line.options.include_folders.push_back(value);
        } else if (argument == "-D") {
            const std::size_t equals = value.find('=');
            line.options.constants.emplace_back(
                value.substr(0, equals),
                equals == std::string::npos ? "1" : value.substr(equals + 1));
        } else {
            (argument == "-o" ? line.output : line.depfile) = value;
        }
    }
    if (line.script.empty() || line.output.empty()) return std::nullopt;
    return line;
}

// Beside its place first: a build that is cut off leaves no half file that looks newer than its
// sources.
bool WriteWholeFile(const std::string& file, std::string_view bytes) {
    const std::string unfinished = file + ".part";
    std::ofstream stream{unfinished, std::ios::binary | std::ios::trunc};
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    std::error_code failure;
    if (stream) std::filesystem::rename(unfinished, file, failure);
    if (stream && !failure) return true;
    std::filesystem::remove(unfinished, failure);
    std::fprintf(stderr, "%s: cannot be written\n", file.c_str());
    return false;
}

std::string DependencyRule(const std::string& output, const std::vector<std::string>& files) {
    const auto escaped = [](const std::string& name) {
        std::string text;
        for (const char letter : name) {
            if (letter == ' ' || letter == '#') text += '\\';
            if (letter == '$') text += '$';
            text += letter;
        }
        return text;
    };
    std::string rule = escaped(output) + ':';
    for (const std::string& file : files) {
        rule += " \\\n  " + escaped(file);
    }
    return rule + '\n';
}

int Compile(const CommandLine& line) {
    const CompiledScript compiled = CompileScript(line.script, line.options);
    if (compiled.error) {
        std::fprintf(stderr, "%s\n", compiled.error->Line().c_str());
        return 1;
    }
    const std::vector<std::uint8_t> packed = PackResources(compiled.resources);
    const std::string bytes = line.output.ends_with(".cpp")
                                  ? SourceFileFor(packed)
                                  : std::string{packed.begin(), packed.end()};
    if (!line.depfile.empty() &&
        !WriteWholeFile(line.depfile, DependencyRule(line.output, compiled.files))) {
        return 1;
    }
    return WriteWholeFile(line.output, bytes) ? 0 : 1;
}

} // namespace

int main(int count, char** arguments) {
    const auto line = ParseCommandLine({arguments + 1, arguments + count});
    if (!line) {
        std::fprintf(stderr, "%s\n", kUsage);
        return 1;
    }
    return Compile(*line);
}
