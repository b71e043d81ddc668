#pragma once
// The box that asks for one line of text.

#include "framework/base/CString.h"

namespace kelvo {

class CWin;

struct InputBoxTexts {
    CString caption;
    CString prompt;
    CString first_button;  ///< takes the edited text
    CString second_button; ///< keeps the initial one
};

/// Runs the box. @return the edited text, or `initial` when the second button or nothing was chosen
CString InputBox(const InputBoxTexts& texts, const CString& initial, CWin* owner);

} // namespace kelvo
