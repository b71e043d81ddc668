#include "tools/kelvotool/files/FileList.h"

#include "tools/kelvotool/options/CommonOptions.h"
#include "tools/kelvotool/report/Reporter.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <map>
#include <optional>
#include <strings.h>
#include <system_error>

namespace kelvo::tool {

namespace {

namespace fs = std::filesystem;

constexpr std::array<const char*, 3> kExtensions = {".kva", ".kvf", ".kaf"};

std::string ExtensionOf(const std::string& name) {
    return fs::path(name).extension().string();
}

bool HasExtension(const std::string& name, const char* extension) {
    return strcasecmp(ExtensionOf(name).c_str(), extension) == 0;
}

bool IsOurs(const std::string& name) {
    return std::ranges::any_of(
        kExtensions, [&](const char* extension) { return HasExtension(name, extension); });
}

/// All that is in the file.
std::optional<std::string> ReadList(const std::string& name) {
    const int file = name == "-" ? STDIN_FILENO : ::open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return std::nullopt;
    std::string text;
    std::array<char, 65536> piece{};
    ssize_t count = 0;
    for (;;) {
        count = ::read(file, piece.data(), piece.size());
        if (count < 0 && errno == EINTR && !StopRequested()) continue;
        if (count <= 0) break;
        text.append(piece.data(), static_cast<std::size_t>(count));
    }
    if (file != STDIN_FILENO) ::close(file);
    if (count < 0) return std::nullopt;
    return text;
}

class Listing {
public:
    explicit Listing(const CommonOptions& options) : options_(options) {}

    void Add(const std::string& name) {
        std::error_code error;
        if (!options_.recursive || !fs::is_directory(name, error)) {
            names_.push_back(name);
            return;
        }
        list_.is_several = true;
        std::vector<std::string> found;
        auto walk = fs::recursive_directory_iterator(
            name, fs::directory_options::skip_permission_denied, error);
        for (; !error && walk != fs::recursive_directory_iterator(); walk.increment(error)) {
            if (StopRequested()) return;
            std::error_code ignored;
            if (walk->is_regular_file(ignored) && IsOurs(walk->path().string()))
                found.push_back(walk->path().string());
        }
        if (error) Fail(name, "the folder cannot be read: " + error.message());
        std::ranges::sort(found);
        names_.insert(names_.end(), found.begin(), found.end());
    }

    void AddList(const std::string& list_name) {
        list_.is_several = true;
        const auto text = ReadList(list_name);
        if (!text) {
            Fail(list_name, std::string("the list cannot be read: ") + std::strerror(errno));
            return;
        }
        for (std::size_t begin = 0; begin < text->size();) {
            const std::size_t end = std::min(text->find('\0', begin), text->size());
            if (end > begin) Add(text->substr(begin, end - begin));
            begin = end + 1;
        }
    }

    FilmList Finish() {
        list_.is_several = list_.is_several || names_.size() > 1;
        PairUp();
        return std::move(list_);
    }

private:
    void Fail(const std::string& name, const std::string& what) {
        Reporter reporter(name);
        reporter.NotDone(what, ProblemCode::InputUnreadable);
        list_.code = reporter.Code();
    }

    static std::string StemOf(const std::string& name) {
        return name.substr(0, name.size() - ExtensionOf(name).size());
    }

    void PairUp() {
        std::map<std::string, std::size_t> pictures; // by the name without its extension
        for (const std::string& name : names_) {
            if (HasExtension(name, ".kvf")) pictures.emplace(StemOf(name), 0);
        }
        std::map<std::string, std::string> sounds;
        for (const std::string& name : names_) {
            if (HasExtension(name, ".kaf") && pictures.contains(StemOf(name)))
                sounds.emplace(StemOf(name), name);
        }
        for (const std::string& name : names_) {
            const auto sound = sounds.find(StemOf(name));
            if (sound == sounds.end()) {
                list_.films.push_back({.name = name});
            } else if (HasExtension(name, ".kvf")) {
                list_.films.push_back({.name = name, .sound = sound->second});
            }
        }
    }

    const CommonOptions& options_;
    std::vector<std::string> names_;
    FilmList list_;
};

} // namespace

FilmList ListFilms(const std::vector<std::string>& names, const CommonOptions& options) {
    Listing listing(options);
    for (const std::string& name : names)
        listing.Add(name);
    if (options.names_from) listing.AddList(*options.names_from);
    return listing.Finish();
}

} // namespace kelvo::tool
