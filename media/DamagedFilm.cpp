#include "media/DamagedFilm.h"

#include "framework/base/CObj.h"
#include "framework/base/FilePaths.h"

#include <string>
#include <utility>
#include <vector>

namespace kelvo {

namespace {

constexpr char kDamagedFilmText[] =
    "Il film [%s] è danneggiato.\r\n\r\nSarà riprodotto quanto è ancora leggibile; il file non "
    "viene modificato.";

std::string FilmOf(const CString& name) {
    const CString path = ResolvePath(nullptr, name, nullptr);
    return std::string{(PathDirectory(path) + PathTitle(path)).View()};
}

} // namespace

struct DamagedFilmNotice::Shown {
    std::string film;
};

namespace {

/// Of each thread: previews look at films on threads of their own.
template <class T>
std::vector<std::weak_ptr<T>>& ShownHere() {
    thread_local std::vector<std::weak_ptr<T>> shown;
    std::erase_if(shown, [](const std::weak_ptr<T>& entry) { return entry.expired(); });
    return shown;
}

template <class T>
std::shared_ptr<T> FindShown(const std::string& film) {
    for (const std::weak_ptr<T>& entry : ShownHere<T>()) {
        std::shared_ptr<T> shown = entry.lock();
        if (shown && shown->film == film) return shown;
    }
    return nullptr;
}

} // namespace

void DamagedFilmNotice::Show(const CString& name) {
    const std::string film = FilmOf(name);
    shown_ = FindShown<Shown>(film);
    if (shown_) return;
    shown_ = std::make_shared<Shown>(Shown{film});
    ShownHere<Shown>().push_back(shown_);
    const CString path = name;
    const CString extension = PathExtension(path);
    const CString title = PathTitle(path) + (extension.IsEmpty() ? "" : ".") + extension;
    CObj::WarningBox(kDamagedFilmText, std::string{title.View()}.c_str());
}

bool DamagedFilmNotice::WasShownFor(const CString& name) {
    return FindShown<Shown>(FilmOf(name)) != nullptr;
}

} // namespace kelvo
