#pragma once
// The seam through which long work shows how far it is, without knowing any window. The desktop
// installs a dialog, a console a line of text; with nothing installed nothing is shown and nobody
// stops.

#include "framework/base/CString.h"

#include <cstdint>
#include <functional>
#include <memory>

namespace kelvo {

class ProgressDisplay {
public:
    virtual ~ProgressDisplay();
    /// Shows `current` of `total`, and keeps the windows alive meanwhile.
    /// @return false when the person asked to stop
    virtual bool Update(std::int32_t current, std::int32_t total) = 0;
    /// Takes the display away; the destructor does, too.
    virtual void Close() = 0;
};

using ProgressDisplayFactory =
    std::function<std::unique_ptr<ProgressDisplay>(const CString& title)>;

/// A display made by the installed factory; never null.
std::unique_ptr<ProgressDisplay> ShowProgress(const CString& title);

/// An empty factory brings the silent display back. Call before work starts.
void SetProgressDisplayFactory(ProgressDisplayFactory factory);

} // namespace kelvo
