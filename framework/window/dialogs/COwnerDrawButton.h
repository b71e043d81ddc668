#pragma once
// A picture in the place of a push button's face, and the buttons of one dialog. The control itself
// is an owner-drawn button of the dialog's template; the dialog offers each of its messages here.

#include "framework/base/CObj.h"
#include "framework/base/CObjArray.h"
#include "platform/base/types.h"

#include <cstdint>
#include <optional>

struct DRAWITEMSTRUCT;

namespace kelvo {

/// The pictures of one button; either may be 0. A "pressed" picture makes it a button that takes
/// its pictures' size; a "normal" one alone is fitted into the control.
struct ButtonPictures {
    HBITMAP pressed = nullptr;
    HBITMAP normal = nullptr;
};

class COwnerDrawButton : public CObj {
public:
    static constexpr std::uint32_t kClassId = 23030007;

    /// @param pictures     deleted with the object
    /// @param replacement  the colour that the background of the pictures becomes, as their corners
    ///                     tell it; none leaves them alone
    COwnerDrawButton(int control_id, const ButtonPictures& pictures,
                     std::optional<COLORREF> replacement);
    COwnerDrawButton(const COwnerDrawButton&) = delete;
    COwnerDrawButton& operator=(const COwnerDrawButton&) = delete;

    /// WM_DRAWITEM and WM_MEASUREITEM of its control. @return whether it was this control's; the
    /// answer is then 1
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    ~COwnerDrawButton() override;

    int ControlId() const { return control_id_; }

private:
    bool OnDraw(const DRAWITEMSTRUCT& item) const;
    void DrawOnto(const DRAWITEMSTRUCT& item, HBITMAP picture) const;

    int control_id_;
    ButtonPictures pictures_;
    std::uint32_t owns_pictures_ = 1;
    COLORREF replacement_ = 0;
    std::uint8_t replaces_background_ = 0;
};

class COwnerDrawButtonArray : public CObjArray {
public:
    COwnerDrawButtonArray() : CObjArray(kOwnsElements) {}

    /// The pictures belong to the array from here on, also when it fails.
    /// @return false, after a box, when there was no memory
    bool AddButton(int control_id, const ButtonPictures& pictures,
                   std::optional<COLORREF> replacement = std::nullopt);
    /// Offers the message to each button until one handles it.
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
};

} // namespace kelvo
