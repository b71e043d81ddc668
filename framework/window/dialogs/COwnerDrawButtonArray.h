#pragma once
// The owner-drawn buttons of a dialog: each shows one bitmap while it is pressed and another one
// while it is not.

#include "framework/base/CObj.h"
#include "framework/base/CObjArray.h"
#include "platform/base/types.h"

#include <cstdint>
#include <optional>

namespace kelvo {

class COwnerDrawButtonArray {
public:
    /// The bitmaps then belong to the button; either may be 0. A null button shows the error box.
    /// @param replacement  what the normal bitmap's background becomes
    void AddButton(int id, HBITMAP pressed, HBITMAP normal, std::optional<COLORREF> replacement);
    /// Offers WM_DRAWITEM and WM_MEASUREITEM to each button in turn. @return true when one took it
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam);

private:
    CObjArray buttons_{CObjArray::kOwnsElements};
};

} // namespace kelvo
