#pragma once
// An edit control under a framework object.

#include "framework/window/tools/CSubclassWin.h"

namespace kelvo {

class CEdit : public CSubclassWin {
public:
    /// Options, to be joined by |.
    static constexpr BYTE kUpperCase = 0x01;
    static constexpr BYTE kLowerCase = 0x02;
    static constexpr BYTE kPassword = 0x04;
    static constexpr BYTE kReadOnly = 0x08;
    static constexpr BYTE kNumber = 0x10;

    CEdit();
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

    /// Puts the styles of the five options in the place of those that the control has.
    void SetOptions(BYTE options);
    /// Sends each byte of the text as WM_CHAR.
    void TypeText(const char* text) const;
};

} // namespace kelvo
