#include "tests/e2e/ChildProcess.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <tuple>
#include <unistd.h>

extern char** environ;

namespace kelvo::test {
namespace {

constexpr std::chrono::milliseconds kPoll{3};
constexpr std::chrono::seconds kGentle{3};
constexpr int kReadyFd = 3;

std::vector<std::string> Merged(const Environment& changes) {
    std::vector<std::string> merged;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        if (!changes.contains(text.substr(0, text.find('=')))) merged.push_back(text);
    }
    for (const auto& [name, value] : changes) {
        if (value) merged.push_back(name + "=" + *value);
    }
    return merged;
}

std::vector<char*> Pointers(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);
    return pointers;
}

std::string Contents(int file) {
    std::string text;
    std::array<char, 4096> block{};
    while (true) {
        const ssize_t count =
            pread(file, block.data(), block.size(), static_cast<off_t>(text.size()));
        if (count <= 0) return text;
        text.append(block.data(), static_cast<std::size_t>(count));
    }
}

} // namespace

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds patience) {
    const auto deadline = Clock::now() + patience;
    while (!condition()) {
        if (Clock::now() > deadline) return false;
        std::this_thread::sleep_for(kPoll);
    }
    return true;
}

ChildProcess::ChildProcess(const std::vector<std::string>& arguments,
                           const Environment& environment, const std::string& folder,
                           int ready_fd) {
    output_ = memfd_create("output", MFD_CLOEXEC);
    errors_ = memfd_create("errors", MFD_CLOEXEC);
    // Everything is made ready before the fork: afterwards only calls that are safe there.
    std::vector<std::string> argument_texts = arguments;
    std::vector<std::string> environment_texts = Merged(environment);
    const std::vector<char*> argument_list = Pointers(argument_texts);
    const std::vector<char*> environment_list = Pointers(environment_texts);
    std::array<int, 2> input{};
    if (pipe2(input.data(), O_CLOEXEC) != 0) return;
    input_ = input[1];
    pid_ = fork();
    if (pid_ != 0) {
        close(input[0]);
        return;
    }
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(input[0], STDIN_FILENO);
    dup2(output_, STDOUT_FILENO);
    dup2(errors_, STDERR_FILENO);
    if (ready_fd == kReadyFd) {
        // dup2 onto itself would leave it closed at the exec.
        const int other = dup(ready_fd);
        dup2(other, kReadyFd);
    } else if (ready_fd >= 0) {
        dup2(ready_fd, kReadyFd);
    }
    if (!folder.empty() && chdir(folder.c_str()) != 0) _exit(126);
    execvpe(argument_list[0], argument_list.data(), environment_list.data());
    _exit(127);
}

ChildProcess::~ChildProcess() {
    if (IsRunning()) {
        Signal(SIGTERM);
        if (!WaitForExit(kGentle)) {
            Signal(SIGKILL);
            WaitForExit();
        }
    }
    close(input_);
    close(output_);
    close(errors_);
}

bool ChildProcess::IsRunning() {
    if (status_ || pid_ < 0) return false;
    int status = 0;
    if (waitpid(pid_, &status, WNOHANG) != pid_) return true;
    ExitStatus ended;
    if (WIFSIGNALED(status)) {
        ended.signal = WTERMSIG(status);
    } else {
        ended.code = WEXITSTATUS(status);
    }
    status_ = ended;
    return false;
}

std::optional<ExitStatus> ChildProcess::WaitForExit(std::chrono::milliseconds patience) {
    if (!WaitUntil([this] { return !IsRunning(); }, patience)) return std::nullopt;
    return status_;
}

void ChildProcess::Signal(int number) const {
    if (pid_ > 0 && !status_) kill(pid_, number);
}

void ChildProcess::Tell(const std::string& text) const {
    std::ignore = write(input_, text.data(), text.size()); // one that has ended hears nothing
}

std::string ChildProcess::Output() const {
    return Contents(output_);
}

std::string ChildProcess::Errors() const {
    return Contents(errors_);
}

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kelvo-e2e-XXXXXX").string();
    path_ = mkdtemp(pattern.data());
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored; // a program that is still ending may hold something in it
    std::filesystem::remove_all(path_, ignored);
}

std::string TemporaryFolder::CopyOf(const std::string& program) const {
    const std::string copy = File(std::filesystem::path(program).filename().string());
    std::error_code failure;
    std::filesystem::copy_file(program, copy, std::filesystem::copy_options::skip_existing,
                               failure);
    return failure ? program : copy;
}

} // namespace kelvo::test
