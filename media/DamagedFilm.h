#pragma once
// The one message about a damaged film: shown by the first of its tracks that opens as a damaged
// one, and by no other as long as one of them is open.

#include "framework/base/CString.h"

#include <memory>

namespace kelvo {

class DamagedFilmNotice {
public:
    /// Says it, unless another track of the film has done so. On the thread that opens the film.
    /// @param name  of the track's file; the film is its folder and title
    void Show(const CString& name);
    /// The track is closed.
    void Release() { shown_.reset(); }
    /// Whether it was said of this film, by this thread.
    static bool WasShownFor(const CString& name);

private:
    struct Shown;
    std::shared_ptr<Shown> shown_;
};

} // namespace kelvo
