#include "framework/window/tools/CEdit.h"

#include "platform/desktop/controls.h"
#include "platform/desktop/messages.h"

#include <string_view>

namespace kelvo {
namespace {

struct OptionStyle {
    BYTE option;
    DWORD style;
};
constexpr OptionStyle kOptionStyles[] = {
    {CEdit::kUpperCase, ES_UPPERCASE}, {CEdit::kLowerCase, ES_LOWERCASE},
    {CEdit::kPassword, ES_PASSWORD},   {CEdit::kReadOnly, ES_READONLY},
    {CEdit::kNumber, ES_NUMBER},
};

} // namespace

CEdit::CEdit() : CSubclassWin("EDIT") {
    SetStyle(WS_VISIBLE | WS_BORDER | ES_AUTOHSCROLL);
}

bool CEdit::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CSubclassWin::HandleMessage(message, wparam, lparam)) return true;
    if (message == WM_LBUTTONDOWN) SetFocus(Window());
    return false;
}

void CEdit::SetOptions(BYTE options) {
    DWORD style = Style();
    for (const OptionStyle& row : kOptionStyles) {
        style = (options & row.option) != 0 ? style | row.style : style & ~row.style;
    }
    SetStyle(style);
}

void CEdit::TypeText(const char* text) const {
    for (const char character : std::string_view(text)) {
        Send(WM_CHAR, static_cast<unsigned char>(character), 1);
    }
}

} // namespace kelvo
