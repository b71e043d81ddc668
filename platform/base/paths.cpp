#include "platform/base/paths.h"

#include "platform/base/file_names.h"

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace kelvo::platform {

namespace {

std::string FolderOf(const std::string& file) {
    return file.substr(0, file.rfind('/') + 1);
}

bool MayWriteIn(const std::string& folder) {
    return !folder.empty() && faccessat(AT_FDCWD, folder.c_str(), W_OK | X_OK, AT_EACCESS) == 0;
}

// Empty when nobody says where; a relative XDG_STATE_HOME counts as none.
std::string StateHome() {
    const char* const state_home = std::getenv("XDG_STATE_HOME");
    if (state_home != nullptr && state_home[0] == '/') return state_home;
    const char* home = std::getenv("HOME");
    if (home == nullptr || home[0] != '/') {
        const passwd* const user = getpwuid(geteuid());
        home = user != nullptr ? user->pw_dir : nullptr;
    }
    if (home == nullptr || home[0] != '/') return {};
    return std::string{home} + "/.local/state";
}

} // namespace

const std::string& ProgramFile() {
    static const std::string file = [] {
        std::error_code failure;
        return std::filesystem::read_symlink("/proc/self/exe", failure).string();
    }();
    return file;
}

std::string ProgramDirectory() {
    return OwnFilesDirectory(FolderOf(ProgramFile()));
}

std::string OwnFilesDirectory(const std::string& program_folder) {
    if (MayWriteIn(program_folder)) return program_folder;
    const std::string state_home = StateHome();
    if (state_home.empty()) return program_folder;
    const std::filesystem::path folder = std::filesystem::path{state_home} / "kelvo";
    std::error_code failure;
    if (std::filesystem::create_directories(folder, failure)) {
        std::filesystem::permissions(folder, std::filesystem::perms::owner_all, failure);
    }
    return MayWriteIn(folder.string()) ? folder.string() + '/' : program_folder;
}

std::string AbsoluteIfExisting(std::string_view name) {
    const auto existing = ExistingFileName(name);
    if (!existing) return std::string{name};
    if (existing->front() == '/') return *existing;
    std::error_code failure;
    const std::filesystem::path working_folder = std::filesystem::current_path(failure);
    if (failure) return std::string{name};
    return (working_folder / *existing).string();
}

} // namespace kelvo::platform
