#pragma once
// The small dialog in the main window's strip: the volume slider and the labels of the elapsed and
// the whole time.

#include "framework/window/CDialog.h"

namespace kelvo {

/// What the parent's notification handler receives when the slider moves: the volume, 0 to 65025,
/// and 0.
inline constexpr int kVolumeChanged = 444;

class DxToolkel : public CDialog {
public:
    static constexpr char kTemplate[] = "DXTOOLKEL";
    static constexpr int kVolumeSlider = 101;
    static constexpr int kElapsedLabel = 106;
    static constexpr int kTotalLabel = 107;

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

    /// @param id  kElapsedLabel or kTotalLabel
    void SetLabel(int id, const CString& text) const;
    /// Gives the keyboard to the slider; its Tab key goes to the parent.
    void TakeKeyboard() const;
    /// Moves the slider alone. @param volume  0 to 65535
    void SetVolumePosition(WORD volume) const;

private:
    void OnInitDialog();
    bool OnScroll(HWND control);
};

} // namespace kelvo
