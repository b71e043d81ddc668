#pragma once
// A child window that holds bitmap buttons and turns their clicks into commands for its owner. The
// faces of the buttons are drawn by ButtonFaces, one button is BitmapButton's.

#include "framework/base/CObjArray.h"
#include "framework/window/tools/BitmapButton.h"
#include "framework/window/tools/CButtonInfo.h"
#include "framework/window/tools/CMovableWin.h"

#include <cstdint>
#include <memory>

namespace kelvo {

class GestToolButtonsGroups;

/// Sent to the receiver of commands for a right press on a button; wParam the command id.
inline constexpr UINT kButtonRightPressed = 0xBAD;

class CToolWin : public CMovableWin {
public:
    CToolWin();
    ~CToolWin() override;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

    // Virtual slots 9 to 12.

    /// Gets every message of a button before the button does; a right press becomes 0xBAD.
    virtual bool ReportButtonMouse(const ButtonMessage& report);
    /// Sunken face with the picture moved right and down; each side 4 pixels longer than the
    /// picture's. The result is the caller's.
    virtual HBITMAP MakePressedImage(HDC context, HBITMAP bitmap);
    /// Raised face with the picture in its middle, in the same size.
    virtual HBITMAP MakeNormalImage(HDC context, HBITMAP bitmap);
    /// Grey copy of an image, in the image's size.
    virtual HBITMAP MakeDisabledImage(HDC context, HBITMAP bitmap);

    // The tool window must have been created. A button has the size of its images once painted.

    /// Adds a button with faces made around one picture of the kernel's resource module.
    /// @param group  of toggle buttons: of those with the same number above 0 one is down at a
    /// time; 0 keeps the button on its own
    /// @return 1; 0 after a box when there is no such picture
    int AddButton(const char* bitmap_name, std::int32_t command_id, LONG left, LONG top,
                  const char* tip_text, ButtonKind kind, std::int32_t group);
    /// The same with two pictures shown as they are.
    int AddButton(const char* pressed_name, const char* normal_name, std::int32_t command_id,
                  LONG left, LONG top, const char* tip_text, ButtonKind kind, std::int32_t group);
    /// The same with pictures of the caller, who deletes them after the button.
    int AddButton(HBITMAP pressed_image, HBITMAP normal_image, std::int32_t command_id, LONG left,
                  LONG top, const char* tip_text, ButtonKind kind, std::int32_t group);

    // Each of these gives 0 for an unknown id.

    int RemoveButton(std::int32_t command_id);
    BitmapButton* FindButton(std::int32_t command_id) const;
    int EnableButton(std::int32_t command_id);
    int DisableButton(std::int32_t command_id);
    int ShowButton(std::int32_t command_id);
    int HideButton(std::int32_t command_id);
    /// Turns the state over as a click would, command included.
    int ToggleButton(std::int32_t command_id);

    /// Gives the keyboard to the first button that can be pressed. From there the arrow keys lead
    /// to the others, Space and Return press, Escape gives the keyboard back to the parent, which
    /// gets all other keys. @return false when no button can be pressed
    bool TakeKeyboard();
    bool HasKeyboard() const;

    /// Receives the commands instead of the parent: WM_COMMAND with the command id and the
    /// BitmapButton as lParam.
    void SetNotifyTarget(CObj* target) { notify_target_ = target; }
    void SetGroups(std::unique_ptr<GestToolButtonsGroups> groups);
    GestToolButtonsGroups* Groups() const { return groups_.get(); }

private:
    CButtonInfo* FindRecord(std::int32_t command_id) const;
    CButtonInfo* FindRecord(const BitmapButton* button) const;
    int Add(std::unique_ptr<CButtonInfo> record, std::int32_t command_id, LONG left, LONG top,
            const char* tip_text, ButtonKind kind, std::int32_t group);
    bool OnClick(std::int32_t command_id, const BitmapButton* clicked);
    bool OnKey(WPARAM key, LPARAM lparam);
    std::int32_t ButtonWithKeyboard() const;
    bool MoveKeyboard(std::int32_t from, std::int32_t step);
    void ReleaseOthers(const CButtonInfo& pressed) const;
    void Tell(UINT message, std::int32_t command_id, BitmapButton* button) const;

    CObjArray buttons_{CObjArray::kOwnsElements};
    CObj* notify_target_ = nullptr;
    std::unique_ptr<GestToolButtonsGroups> groups_;
};

} // namespace kelvo
