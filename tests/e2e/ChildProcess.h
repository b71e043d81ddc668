#pragma once
// A program that a test starts: with an environment of the test's making, its output kept, and gone
// with the test whatever happens.

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace kelvo::test {

using Clock = std::chrono::steady_clock;

/// How long anything may take that is only waited for: generous, for sanitizers on a busy machine.
inline constexpr std::chrono::seconds kPatience{20};

/// Asks every few milliseconds. @return false when the condition did not come true in time
bool WaitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds patience = kPatience);

/// Variables to set; an empty optional removes one.
using Environment = std::map<std::string, std::optional<std::string>>;

struct ExitStatus {
    int code = -1;  ///< -1 when a signal ended it
    int signal = 0; ///< 0 when it ended by itself
    friend bool operator==(const ExitStatus&, const ExitStatus&) = default;
};

class ChildProcess {
public:
    /// @param arguments    the program first
    /// @param environment  on top of this process's own
    /// @param folder       its working directory; empty for this process's own
    /// @param ready_fd     when not -1: inherited as file descriptor 3
    ChildProcess(const std::vector<std::string>& arguments, const Environment& environment,
                 const std::string& folder = {}, int ready_fd = -1);
    /// Ends it, gently at first.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    pid_t Pid() const { return pid_; }
    bool IsRunning();
    /// @return nothing when it still runs after that time
    std::optional<ExitStatus> WaitForExit(std::chrono::milliseconds patience = kPatience);
    void Signal(int number) const;
    /// Writes to its standard input.
    void Tell(const std::string& text) const;
    /// What it has written so far.
    std::string Output() const;
    std::string Errors() const;

private:
    pid_t pid_ = -1;
    int input_ = -1; ///< our end of its standard input
    int output_ = -1;
    int errors_ = -1;
    std::optional<ExitStatus> status_;
};

/// A folder that goes away with the test.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    const std::string& Path() const { return path_; }
    std::string File(const std::string& name) const { return path_ + "/" + name; }
    /// The name of a copy of the program, made where there is none yet. What a program keeps beside
    /// itself then goes away with the folder. The program's own name, where it cannot be copied.
    std::string CopyOf(const std::string& program) const;

private:
    std::string path_;
};

} // namespace kelvo::test
