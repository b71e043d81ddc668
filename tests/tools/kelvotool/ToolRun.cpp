#include "tests/tools/kelvotool/ToolRun.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace kelvo::test {

namespace {

void BecomeProgram(const std::string& program, std::vector<std::string> arguments,
                   const ToolCircumstances& circumstances, int output, int messages) {
    if (!circumstances.output_file.empty()) {
        output = ::open(circumstances.output_file.c_str(), O_WRONLY);
    }
    ::dup2(output, STDOUT_FILENO);
    ::dup2(messages, STDERR_FILENO);
    if (!circumstances.folder.empty() && ::chdir(circumstances.folder.c_str()) != 0) ::_exit(126);
    if (circumstances.largest_file != 0) {
        const rlimit limit{circumstances.largest_file, circumstances.largest_file};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    arguments.insert(arguments.begin(), program);
    std::vector<char*> pointers;
    for (std::string& argument : arguments)
        pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    ::execv(program.c_str(), pointers.data());
    ::_exit(127);
}

/// Reads both pipes until both are closed, so that neither fills up.
void Collect(int output, int messages, ToolResult& result) {
    std::array<pollfd, 2> pipes{{{output, POLLIN, 0}, {messages, POLLIN, 0}}};
    std::array<char, 65536> bytes{};
    while (pipes[0].fd >= 0 || pipes[1].fd >= 0) {
        if (::poll(pipes.data(), pipes.size(), -1) < 0 && errno != EINTR) return;
        for (std::size_t i = 0; i < pipes.size(); ++i) {
            if (pipes[i].fd < 0 || pipes[i].revents == 0) continue;
            const ssize_t count = ::read(pipes[i].fd, bytes.data(), bytes.size());
            if (count > 0) {
                (i == 0 ? result.output : result.messages)
                    .append(bytes.data(), static_cast<std::size_t>(count));
            } else if (count == 0) {
                pipes[i].fd = -1;
            }
        }
    }
}

} // namespace

ToolResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const ToolCircumstances& circumstances) {
    std::array<int, 2> output{};
    std::array<int, 2> messages{};
    if (::pipe2(output.data(), O_CLOEXEC) != 0 || ::pipe2(messages.data(), O_CLOEXEC) != 0) {
        ADD_FAILURE() << "no pipe";
        return {};
    }
    const pid_t child = ::fork();
    if (child == 0) BecomeProgram(program, arguments, circumstances, output[1], messages[1]);
    ::close(output[1]);
    ::close(messages[1]);
    if (circumstances.meanwhile) circumstances.meanwhile(child);
    ToolResult result;
    Collect(output[0], messages[0], result);
    ::close(output[0]);
    ::close(messages[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    result.code = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    return result;
}

ToolResult RunTool(const std::vector<std::string>& arguments,
                   const ToolCircumstances& circumstances) {
    return RunProgram(KELVOTOOL, arguments, circumstances);
}

Bytes ReadFile(const std::string& name) {
    std::ifstream stream(name, std::ios::binary);
    EXPECT_TRUE(stream) << "there is no " << name;
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

void WriteFile(const std::string& name, const Bytes& bytes) {
    std::ofstream stream(name, std::ios::binary | std::ios::trunc);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(stream.flush());
}

std::uint32_t NumberAt(const Bytes& bytes, std::size_t offset) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value |= static_cast<std::uint32_t>(bytes.at(offset + i)) << 8 * i;
    return value;
}

void PutNumber(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        bytes.at(offset + i) = static_cast<std::uint8_t>(value >> 8 * i);
}

std::string Sample(const std::string& name) {
    return KELVO_SOURCE_DIR "/tests/samples/" + name;
}

nlohmann::json Records(const std::string& file, const std::string& track) {
    const ToolResult result = RunTool({"frames", file, "--track", track, "--json"});
    const auto document = nlohmann::json::parse(result.output, nullptr, false);
    if (document.is_discarded()) {
        ADD_FAILURE() << file << ": " << result.messages;
        return nlohmann::json::array();
    }
    return document.at("records");
}

std::vector<std::pair<std::string, std::string>> Contents(const std::string& file,
                                                          const std::string& track) {
    std::vector<std::pair<std::string, std::string>> contents;
    for (const auto& record : Records(file, track)) {
        EXPECT_FALSE(record.at("corrupt")) << file << " " << record.at("n");
        contents.emplace_back(record.at("sha256"), record.at("side"));
    }
    return contents;
}

ToolFolder::ToolFolder() {
    std::string name = testing::TempDir() + "kelvotool-XXXXXX";
    if (::mkdtemp(name.data()) != nullptr) folder_ = name;
}

ToolFolder::~ToolFolder() {
    std::error_code ignored; // what cannot be removed is the temporary folder's affair
    std::filesystem::remove_all(folder_, ignored);
}

std::string ToolFolder::Copy(const std::string& sample, const std::string& name) const {
    WriteFile(Path(name), ReadFile(Sample(sample)));
    return Path(name);
}

std::vector<std::string> ToolFolder::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_))
        names.push_back(entry.path().filename().string());
    std::ranges::sort(names);
    return names;
}

} // namespace kelvo::test
