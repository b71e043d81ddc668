#include "framework/base/FilePaths.h"

#include "platform/base/files.h"
#include "platform/base/paths.h"
#include "platform/base/resources.h"

#include <string>
#include <string_view>

namespace kelvo {
namespace {

constexpr std::string_view kSeparators = "\\/";
constexpr DWORD kLongestPath = 1U << 16U;

/// Index of the first character behind the last separator.
std::size_t FileNameStart(std::string_view path) {
    const std::size_t separator = path.find_last_of(kSeparators);
    return separator == std::string_view::npos ? 0 : separator + 1;
}

std::string ModuleFileName(HINSTANCE module) {
    std::string name(MAX_PATH, '\0');
    for (;;) {
        const auto size = static_cast<DWORD>(name.size());
        const DWORD length = GetModuleFileNameA(module, name.data(), size);
        if (length < size) {
            name.resize(length);
            return name;
        }
        if (size >= kLongestPath) return {};
        name.resize(name.size() * 2);
    }
}

} // namespace

CString ProgramDirectory(HINSTANCE module) {
    if (module == nullptr || module == GetModuleHandleA(nullptr)) {
        return CString(std::string_view(platform::ProgramDirectory()));
    }
    return PathDirectory(CString(std::string_view(ModuleFileName(module))));
}

CString ResolvePath(HINSTANCE module, const CString& name, const char* directory) {
    const std::string_view text = name.View();
    const bool has_directory = text.find_first_of(kSeparators, 1) != std::string_view::npos;
    if (has_directory || text.starts_with('/')) return name;
    CString path = directory != nullptr && directory[0] != '\0' ? CString(directory)
                                                                : ProgramDirectory(module);
    path += name;
    return path;
}

CString PathDirectory(const CString& path) {
    return CString(path.View().substr(0, FileNameStart(path.View())));
}

CString PathExtension(const CString& path) {
    const std::string_view text = path.View();
    const std::size_t dot = text.rfind('.');
    if (dot == std::string_view::npos || dot == 0 || dot < FileNameStart(text)) return {};
    return CString(text.substr(dot + 1));
}

CString PathTitle(const CString& path) {
    const std::string_view name = path.View().substr(FileNameStart(path.View()));
    const std::size_t dot = name.rfind('.');
    return CString(dot == std::string_view::npos || dot == 0 ? name : name.substr(0, dot));
}

CString PathFileName(const CString& path) {
    return CString(path.View().substr(FileNameStart(path.View())));
}

} // namespace kelvo
