#include "tools/kelvotool/files/MediaProgram.h"

#include "tools/kelvotool/report/StopSignal.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <system_error>

extern char** environ;

namespace kelvo::tool {

namespace {

constexpr const char* kProgram = "kelvotool-media";
constexpr int kNoProgram = 127;

std::string FindProgram() {
    std::error_code error;
    const auto own = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) {
        const auto beside = own.parent_path() / kProgram;
        if (::access(beside.c_str(), X_OK) == 0) return beside.native();
    }
    return kProgram; // PATH
}

} // namespace

MediaProgram::~MediaProgram() {
    if (process_ < 0) return;
    ::kill(process_, SIGTERM);
    Finish();
}

bool MediaProgram::Start(Task task, const std::vector<std::string>& arguments, Reporter& reporter) {
    const bool encodes = task == Task::Encode;
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) {
        reporter.NotDone("there is no pipe to kelvotool-media");
        return false;
    }
    std::vector<std::string> words{kProgram, encodes ? "encode" : "decode"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> pointers;
    for (std::string& word : words)
        pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ends[encodes ? 0 : 1],
                                       encodes ? STDIN_FILENO : STDOUT_FILENO);
    const std::string program = FindProgram();
    const int error =
        ::posix_spawnp(&process_, program.c_str(), &actions, nullptr, pointers.data(), environ);
    ::posix_spawn_file_actions_destroy(&actions);
    ::close(ends[encodes ? 0 : 1]);
    pipe_ = ends[encodes ? 1 : 0];
    if (error == 0) return true;
    process_ = -1;
    ::close(pipe_);
    reporter.NotDone("this format needs the program kelvotool-media, which is neither beside "
                     "kelvotool nor on PATH",
                     ProblemCode::NotPossible);
    return false;
}

bool MediaProgram::WriteAll(ByteView bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::write(pipe_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR && !StopRequested()) continue;
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

void MediaProgram::WriteBlock(std::uint32_t tag, ByteView head, ByteView rest) {
    const auto length = static_cast<std::uint32_t>(head.size() + rest.size());
    const auto block = media_stream::BytesOf({.tag = tag, .length = length});
    failed_ = failed_ || !WriteAll(block) || !WriteAll(head) || !WriteAll(rest);
}

bool MediaProgram::ReadAll(ByteSpan bytes) {
    while (!bytes.empty()) {
        const ssize_t count = ::read(pipe_, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR && !StopRequested()) continue;
        if (count <= 0) return false;
        bytes = bytes.subspan(static_cast<std::size_t>(count));
    }
    return true;
}

bool MediaProgram::ReadBlock(std::uint32_t& tag, ByteView& bytes) {
    std::array<std::uint8_t, media_stream::BlockHead::kBytes> head{};
    if (!ReadAll(head)) return false;
    const auto block = media_stream::ParseBlockHead(head);
    if (!block) return false;
    tag = block.Value().tag;
    block_.resize(block.Value().length);
    bytes = block_;
    return ReadAll(block_);
}

int MediaProgram::Finish() {
    if (pipe_ >= 0) ::close(pipe_);
    pipe_ = -1;
    if (process_ < 0) return kNotDone;
    int status = 0;
    while (::waitpid(process_, &status, 0) < 0 && errno == EINTR)
        ;
    process_ = -1;
    if (!WIFEXITED(status) || WEXITSTATUS(status) == kNoProgram) return kNotDone;
    return WEXITSTATUS(status);
}

} // namespace kelvo::tool
