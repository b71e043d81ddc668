#include "tools/kelvotool/files/TemporaryFolder.h"

#include "platform/base/durable_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace kelvo::tool {

std::string ParentOf(const std::string& name) {
    const std::size_t slash = name.rfind('/');
    if (slash == std::string::npos) return ".";
    return slash == 0 ? "/" : name.substr(0, slash);
}

bool TemporaryFolder::Make(const std::string& parent, Reporter& reporter) {
    std::string name = parent + "/.kelvotool-XXXXXX";
    if (::mkdtemp(name.data()) == nullptr) {
        reporter.NotDone("it cannot be written", ProblemCode::OutputUnwritable);
        return false;
    }
    name_ = name;
    return true;
}

bool TemporaryFolder::Sync() const {
    const int folder = ::open(name_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0) return false;
    // One call for all files: thousands of single ones would take minutes.
    const bool synced = ::syncfs(folder) == 0;
    return ::close(folder) == 0 && synced;
}

bool TemporaryFolder::PutAt(const std::string& name) {
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (::chmod(name_.c_str(), 0777 & ~mask) != 0) return false;
    if (std::rename(name_.c_str(), name.c_str()) != 0) return false;
    name_.clear();
    platform::SyncFolderOf(name);
    return true;
}

void TemporaryFolder::Remove() {
    if (name_.empty()) return;
    std::error_code ignored; // a folder that cannot be removed has a name that tells whose it was
    std::filesystem::remove_all(name_, ignored);
    name_.clear();
}

} // namespace kelvo::tool
