#pragma once
// Runs the built kelvotool (or another program) as a person would: arguments in; output, messages
// and exit code out. And a folder for the files of one test.

#include <nlohmann/json.hpp>

#include <csignal>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace kelvo::test {

struct ToolResult {
    int code = -1; ///< exit code; 1000 plus the signal that killed it
    std::string output;
    std::string messages;
};

struct ToolCircumstances {
    std::string folder = {};                   ///< working directory
    std::string output_file = {};              ///< standard output goes there
    std::uint64_t largest_file = 0;            ///< limit of what it may write; 0 for none
    std::function<void(pid_t)> meanwhile = {}; ///< called while it runs
};

ToolResult RunProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const ToolCircumstances& circumstances = {});
ToolResult RunTool(const std::vector<std::string>& arguments,
                   const ToolCircumstances& circumstances = {});

using Bytes = std::vector<std::uint8_t>;
Bytes ReadFile(const std::string& name);
void WriteFile(const std::string& name, const Bytes& bytes);
std::uint32_t NumberAt(const Bytes& bytes, std::size_t offset);
void PutNumber(Bytes& bytes, std::size_t offset, std::uint32_t value);

/// A sample of the repository.
std::string Sample(const std::string& name);

/// The records of a track, as `frames --json` lists them.
nlohmann::json Records(const std::string& file, const std::string& track);
/// What must survive a change of type: hash and side block of every record.
std::vector<std::pair<std::string, std::string>> Contents(const std::string& file,
                                                          const std::string& track);

/// A temporary folder and what a test does in it; it goes with its object.
class ToolFolder {
public:
    ToolFolder();
    ~ToolFolder();
    ToolFolder(const ToolFolder&) = delete;
    ToolFolder& operator=(const ToolFolder&) = delete;

    const std::string& Folder() const { return folder_; }
    std::string Path(const std::string& name) const { return folder_ + "/" + name; }
    /// A copy of a sample that may be written.
    std::string Copy(const std::string& sample, const std::string& name) const;
    std::vector<std::string> Names() const; ///< of the files in it, sorted

private:
    std::string folder_;
};

class ToolTest : public testing::Test, public ToolFolder {};

} // namespace kelvo::test
