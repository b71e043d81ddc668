#include "platform/base/file_names.h"

#include "platform/base/file_calls.h"

#include <dirent.h>
#include <limits.h>
#include <wctype.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdint>
#include <memory>
#include <vector>

namespace kelvo::platform {

namespace {

bool Exists(const std::string& name) {
    struct stat status = {};
    return CurrentFileCalls().lstat(name.c_str(), &status) == 0;
}

// Above every code point, so that a byte that is no UTF-8 equals only itself.
constexpr std::uint32_t kStrayByte = 0x110000;

// The next letter of the text, which is not empty, and away with it.
std::uint32_t TakeLetter(std::string_view& text) {
    const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
    const std::uint8_t first = byte(0);
    std::size_t length = 1;
    std::uint32_t letter = first;
    if (first >= 0xC2 && first < 0xF5) {
        length = first < 0xE0 ? 2 : first < 0xF0 ? 3 : 4;
        letter = first & (0x7FU >> length);
    }
    bool whole = length <= text.size();
    for (std::size_t i = 1; whole && i < length; ++i) {
        whole = (byte(i) & 0xC0U) == 0x80;
        letter = (letter << 6U) | (byte(i) & 0x3FU);
    }
    if (!whole || (length == 1 && first >= 0x80)) {
        text.remove_prefix(1);
        return kStrayByte + first;
    }
    text.remove_prefix(length);
    return letter;
}

std::uint32_t WithoutCase(std::uint32_t letter) {
    if (letter >= kStrayByte) return letter;
    // The program's own locale is "C", which knows the case of no accented letter.
    static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
    if (unicode == nullptr)
        return static_cast<std::uint32_t>(towlower(static_cast<wint_t>(letter)));
    return static_cast<std::uint32_t>(towlower_l(static_cast<wint_t>(letter), unicode));
}

std::vector<std::string> OtherCases(const std::string& folder, std::string_view component) {
    struct CloseFolder {
        void operator()(DIR* open_folder) const { closedir(open_folder); }
    };
    std::vector<std::string> found;
    const std::unique_ptr<DIR, CloseFolder> listing{opendir(folder.empty() ? "." : folder.c_str())};
    if (!listing) return found;
    while (const dirent* entry = readdir(listing.get())) {
        const std::string_view entry_name = entry->d_name;
        if (entry_name != component && EqualWithoutCase(entry_name, component)) {
            found.emplace_back(entry_name);
        }
    }
    std::ranges::sort(found);
    return found;
}

std::optional<std::string> FindBelow(const std::string& folder, std::string_view rest);

// Takes the first `length` letters of `rest` as one component.
std::optional<std::string> FindByComponent(const std::string& folder, std::string_view rest,
                                           std::size_t length) {
    const std::string_view component = rest.substr(0, length);
    const std::string_view tail = rest.substr(length);
    const auto descend = [&](std::string_view entry) -> std::optional<std::string> {
        std::string path = folder;
        path += entry;
        if (tail.empty()) return path;
        path += '/';
        return FindBelow(path, tail);
    };
    if (Exists(folder + std::string{component})) {
        if (auto found = descend(component)) return found;
    }
    for (const std::string& entry : OtherCases(folder, component)) {
        if (auto found = descend(entry)) return found;
    }
    return std::nullopt;
}

// `folder` is empty or ends in '/'.
std::optional<std::string> FindBelow(const std::string& folder, std::string_view rest) {
    const std::size_t start = std::min(rest.find_first_not_of("/\\"), rest.size());
    rest.remove_prefix(start);
    if (rest.empty()) {
        if (Exists(folder)) return folder;
        return std::nullopt;
    }
    const std::size_t to_slash = std::min(rest.find('/'), rest.size());
    if (auto found = FindByComponent(folder, rest, to_slash)) return found;
    const std::size_t to_backslash = rest.find('\\');
    if (to_backslash >= to_slash) return std::nullopt;
    return FindByComponent(folder, rest, to_backslash);
}

} // namespace

std::optional<std::string> ExistingFileName(std::string_view name) {
    if (name.empty() || name.find('\0') != std::string_view::npos) {
        errno = ENOENT;
        return std::nullopt;
    }
    if (name.size() >= PATH_MAX) { // which also bounds how deep the search goes
        errno = ENAMETOOLONG;
        return std::nullopt;
    }
    std::string literal{name};
    if (Exists(literal)) return literal;
    const int reason = errno;
    auto found = FindBelow(IsSeparator(name.front()) ? "/" : "", name);
    if (!found) errno = reason;
    return found;
}

std::optional<std::string> NewFileName(std::string_view name) {
    const std::size_t last = name.find_last_of("/\\");
    const std::string_view title = last == std::string_view::npos ? name : name.substr(last + 1);
    if (name.find('\0') != std::string_view::npos || title.empty()) {
        errno = ENOENT;
        return std::nullopt;
    }
    std::string literal{name};
    if (last == std::string_view::npos || Exists(literal)) return literal;
    // The separator stays: "/" alone is a folder, too.
    auto folder = ExistingFileName(name.substr(0, last + 1));
    if (!folder) return std::nullopt;
    if (folder->back() != '/') *folder += '/';
    return *folder + std::string{title};
}

bool EqualWithoutCase(std::string_view a, std::string_view b) {
    while (!a.empty() && !b.empty()) {
        if (WithoutCase(TakeLetter(a)) != WithoutCase(TakeLetter(b))) return false;
    }
    return a.empty() && b.empty();
}

} // namespace kelvo::platform
