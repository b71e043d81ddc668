#include "tools/kelvotool/files/SeriesNames.h"

#include "tools/kelvotool/files/TemporaryFolder.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <filesystem>
#include <map>
#include <system_error>

namespace kelvo::tool {

namespace {

namespace fs = std::filesystem;

constexpr std::uint32_t kMostDigits = 18;

std::optional<std::vector<std::string>> FilesOfFolder(const std::string& folder,
                                                      Reporter& reporter) {
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string extension = ExtensionOf(entry->path().native());
        if (extension == ".png" || extension == ".bmp") names.push_back(entry->path().native());
    }
    if (error || names.empty()) {
        reporter.NotDone(error ? "it cannot be read" : "there are no .png and .bmp files in it",
                         ProblemCode::InputMissing);
        return std::nullopt;
    }
    std::ranges::sort(names);
    return names;
}

} // namespace

std::string ExtensionOf(std::string_view name) {
    const std::size_t slash = name.rfind('/');
    if (slash != std::string_view::npos) name.remove_prefix(slash + 1);
    const std::size_t point = name.rfind('.');
    if (point == std::string_view::npos || point == 0) return {};
    std::string extension(name.substr(point));
    std::ranges::transform(extension, extension.begin(), [](unsigned char letter) {
        return static_cast<char>(std::tolower(letter));
    });
    return extension;
}

std::string SeriesPattern::NameOf(std::uint64_t number) const {
    return fmt::format("{}{:0{}}{}", before, number, digits, after);
}

std::optional<std::uint64_t> SeriesPattern::NumberIn(std::string_view name) const {
    if (name.size() < before.size() + after.size() || !name.starts_with(before) ||
        !name.ends_with(after)) {
        return std::nullopt;
    }
    name.remove_prefix(before.size());
    name.remove_suffix(after.size());
    std::uint64_t number = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number);
    const bool is_number = error == std::errc{} && end == name.data() + name.size();
    if (!is_number || name.size() < digits) return std::nullopt;
    return number;
}

std::optional<SeriesPattern> ParsePattern(std::string_view file_name) {
    SeriesPattern pattern;
    bool found = false;
    while (!file_name.empty()) {
        std::string& part = found ? pattern.after : pattern.before;
        if (file_name.front() != '%' || file_name.starts_with("%%")) {
            file_name.remove_prefix(file_name.front() == '%' ? 1 : 0);
            part.push_back(file_name.front());
            file_name.remove_prefix(1);
            continue;
        }
        file_name.remove_prefix(1);
        const auto [end, error] =
            std::from_chars(file_name.data(), file_name.data() + file_name.size(), pattern.digits);
        file_name.remove_prefix(static_cast<std::size_t>(end - file_name.data()));
        const bool is_place = file_name.starts_with('d') && pattern.digits <= kMostDigits;
        if (found || !is_place) return std::nullopt;
        file_name.remove_prefix(1);
        found = true;
    }
    return found ? std::optional(pattern) : std::nullopt;
}

std::optional<std::vector<std::string>> ListSeries(const std::string& given, Reporter& reporter) {
    std::error_code error;
    if (fs::is_directory(given, error)) return FilesOfFolder(given, reporter);
    const fs::path path(given);
    const auto pattern = ParsePattern(path.filename().native());
    if (!pattern) {
        reporter.NotDone("it is neither a folder nor a name with a place for a number (%06d)",
                         ProblemCode::InputMissing);
        return std::nullopt;
    }
    std::map<std::uint64_t, std::string> found;
    const std::string folder = ParentOf(given);
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const auto number = pattern->NumberIn(entry->path().filename().native());
        if (number) found.emplace(*number, entry->path().native());
    }
    if (found.empty()) {
        reporter.NotDone("there is no such file", ProblemCode::InputMissing);
        return std::nullopt;
    }
    const std::uint64_t gaps = found.rbegin()->first - found.begin()->first + 1 - found.size();
    if (gaps > 0) {
        reporter.Report({.code = ProblemCode::RecordMissing,
                         .what = fmt::format("{} numbers are missing in the series", gaps)});
    }
    std::vector<std::string> names;
    for (const auto& [number, name] : found)
        names.push_back(name);
    return names;
}

} // namespace kelvo::tool
