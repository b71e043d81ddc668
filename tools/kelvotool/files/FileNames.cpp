#include "tools/kelvotool/files/FileNames.h"

#include "container/AVDirectory.h"
#include "platform/base/file_names.h"

#include <fmt/format.h>

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

namespace kelvo::tool {

namespace {

/// From the working directory on: the classes would take a bare name as one of the program's files.
std::string Absolute(const std::string& given) {
    if (!given.empty() && given.front() == '/') return given;
    std::error_code error;
    const std::filesystem::path folder = std::filesystem::current_path(error);
    return error ? given : folder.string() + "/" + given;
}

} // namespace

std::optional<std::string> InputName(const std::string& given, Reporter& reporter) {
    std::optional<std::string> name;
    if (!given.empty()) name = platform::ExistingFileName(Absolute(given));
    struct stat status{};
    if (!name || ::stat(name->c_str(), &status) != 0) {
        const int reason = given.empty() ? ENOENT : errno;
        reporter.NotDone(
            reason == ENOENT ? "there is no such file"
                             : fmt::format("it cannot be opened: {}", std::strerror(reason)),
            reason == ENOENT ? ProblemCode::InputMissing : ProblemCode::InputUnreadable);
        return std::nullopt;
    }
    if (!S_ISREG(status.st_mode)) {
        reporter.NotDone("it is not an ordinary file", ProblemCode::InputUnreadable);
        return std::nullopt;
    }
    return name;
}

std::optional<std::string> OutputName(const std::string& given, const std::string& input,
                                      bool force, Reporter& reporter) {
    std::optional<std::string> name;
    if (!given.empty()) name = platform::NewFileName(Absolute(given));
    if (!name || name->back() == '/') {
        reporter.NotDone("there is no such folder to write into", ProblemCode::OutputUnwritable);
        return std::nullopt;
    }
    struct stat status{};
    struct stat input_status{};
    if (::stat(name->c_str(), &status) != 0) {
        // A link that leads nowhere is something that exists, too.
        if (::lstat(name->c_str(), &status) != 0) return name;
    } else if (::stat(input.c_str(), &input_status) == 0 && status.st_dev == input_status.st_dev &&
               status.st_ino == input_status.st_ino) {
        reporter.NotDone("it is the file that is read", ProblemCode::OutputUnwritable);
        return std::nullopt;
    } else if (!S_ISREG(status.st_mode)) {
        reporter.NotDone("it is not an ordinary file", ProblemCode::OutputUnwritable);
        return std::nullopt;
    }
    if (!force) {
        reporter.NotDone("it exists already; -f replaces it", ProblemCode::OutputExists);
        return std::nullopt;
    }
    return name;
}

bool HasFilmName(const std::string& name) {
    return IsFilmName(name);
}

} // namespace kelvo::tool
