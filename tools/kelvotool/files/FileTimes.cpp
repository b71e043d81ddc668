#include "tools/kelvotool/files/FileTimes.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <array>

namespace kelvo::tool {

bool CopyFileTime(const std::string& from, const std::string& to) {
    struct stat source{};
    if (::stat(from.c_str(), &source) != 0) return false;
    const std::array<timespec, 2> times{source.st_atim, source.st_mtim};
    return ::utimensat(AT_FDCWD, to.c_str(), times.data(), 0) == 0;
}

} // namespace kelvo::tool
