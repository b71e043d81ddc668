#pragma once
// One button of a tool window: it shows its normal or its pressed image, tells its parent of clicks
// and of every message that it gets, and shows its tip when the pointer rests on it. What a click
// means (radio groups, the command) is its tool window's affair.

#include "framework/window/CWin.h"
#include "platform/desktop/drawing.h"

#include <cstdint>

namespace kelvo {

class BitmapButton;

enum class ButtonKind : std::int32_t {
    Push = 0,   ///< pressed while the mouse button is; its command comes with the release
    Toggle = 1, ///< each press turns its state over
};

/// Posted to the parent for a click: wParam the command id, lParam the button.
inline constexpr UINT kButtonClicked = 0x501;
/// Sent to the parent for every message of a button: wParam the command id, lParam a ButtonMessage.
inline constexpr UINT kButtonMessage = 0x502;

/// What a button reports of a message before it handles it.
struct ButtonMessage {
    UINT message = 0;
    LPARAM lparam = 0;
    BitmapButton* button = nullptr;
};

class BitmapButton final : public CWin {
public:
    static constexpr std::uint32_t kClassId = 13040000;

    /// @param normal, pressed  shown, never deleted; they must outlive the window
    BitmapButton(std::int32_t command_id, ButtonKind kind, HBITMAP normal, HBITMAP pressed);
    ~BitmapButton() override;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

    std::int32_t CommandId() const { return command_id_; }
    ButtonKind Kind() const { return kind_; }
    bool IsPressed() const { return pressed_ != 0; }
    /// Changes the state alone; Repaint shows it.
    void SetPressed(bool pressed) { pressed_ = pressed ? 1 : 0; }
    void Repaint() const;
    HBITMAP NormalImage() const { return normal_image_; }
    HBITMAP PressedImage() const { return pressed_image_; }

    /// The text shown when the pointer rests on the button, which is also the window's text, so
    /// that a screen reader knows the button by it. Empty: no tip.
    void SetTipText(const char* text) { SetTitle(text); }
    const CString& TipText() const { return Title(); }

    /// Whether messages are reported to the parent; true at first.
    void SetForwarding(bool forwards) { forwards_ = forwards ? 1 : 0; }

private:
    void Describe() const;
    void Report(UINT message, LPARAM lparam);
    bool OnPaint();
    bool OnLeftDown();
    bool OnLeftUp();
    bool OnCaptureLost(HWND taken_by);
    bool OnKeyDown(WPARAM key, LPARAM lparam);
    void PostClick();

    std::int32_t command_id_;
    ButtonKind kind_;
    std::int32_t pressed_ = 0;
    HBITMAP normal_image_;
    HBITMAP pressed_image_;
    std::int32_t highlights_ = 0; ///< under the pointer; not for buttons with raised faces
    BYTE forwards_ = 1;
    ButtonMessage last_message_;
};

} // namespace kelvo
