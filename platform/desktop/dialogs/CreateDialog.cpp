// From a template to a dialog with its controls.

#include "platform/base/message_boxes.h"
#include "platform/base/resources.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowLife.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/dialogs/DialogAccessibility.h"
#include "platform/desktop/dialogs/DialogState.h"
#include "platform/desktop/dialogs/DialogTemplate.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/menus.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>

#include <algorithm>

using namespace kelvo::desktop;

namespace {

constexpr int kPointsPerInch = 72;
constexpr std::int16_t kPlacedBySystem = static_cast<std::int16_t>(0x8000);
constexpr DWORD kPageFrame = WS_CAPTION | WS_SYSMENU;

void RegisterSystemClass() {
    WNDCLASSA values{};
    values.style = CS_DBLCLKS;
    values.lpfnWndProc = &DefDlgProcA;
    values.cbWndExtra = DLGWINDOWEXTRA;
    values.hCursor = ::LoadCursorA(nullptr, IDC_ARROW);
    values.lpszClassName = kSystemDialogClass;
    ::RegisterClassA(&values); // refused, and no harm done, when it is there already
}

LOGFONTA DescribeFont(const TemplateFont& font) {
    const HDC screen = ::GetDC(nullptr);
    LOGFONTA description{};
    description.lfHeight = -(font.points * ::GetDeviceCaps(screen, LOGPIXELSY) / kPointsPerInch);
    ::ReleaseDC(nullptr, screen);
    description.lfWeight = font.weight == 0 ? FW_NORMAL : font.weight;
    description.lfItalic = font.italic ? 1 : 0;
    description.lfCharSet = DEFAULT_CHARSET;
    std::copy_n(font.face.c_str(), std::min<std::size_t>(font.face.size(), LF_FACESIZE - 1),
                description.lfFaceName);
    return description;
}

/// A template without a font is in the units of the desktop's own.
DialogState StateFor(const DialogTemplate& read) {
    if (read.font && read.font->points > 0) {
        const LOGFONTA description = DescribeFont(*read.font);
        return {::CreateFontIndirectA(&description),
                kelvo::platform::DialogUnits(read.font->face.c_str(), read.font->points)};
    }
    LOGFONTA desktop{};
    ::GetObjectA(::GetStockObject(DEFAULT_GUI_FONT), sizeof desktop, &desktop);
    const HDC screen = ::GetDC(nullptr);
    const int points = std::max(1, std::abs(desktop.lfHeight) * kPointsPerInch /
                                       std::max(1, ::GetDeviceCaps(screen, LOGPIXELSY)));
    ::ReleaseDC(nullptr, screen);
    return {nullptr, kelvo::platform::DialogUnits(desktop.lfFaceName, points)};
}

bool IsReservedFor(const std::string& window_class) {
    LockedWindows windows;
    const auto known = windows.FindClass(window_class.c_str());
    return known && known->values.cbWndExtra >= DLGWINDOWEXTRA;
}

DWORD StyleFor(const DialogTemplate& read) {
    DWORD style = read.style & ~WS_VISIBLE;
    if ((style & DS_CONTROL) != 0) style = (style & ~kPageFrame) | WS_CHILD;
    return style;
}

const QScreen& ScreenOf(HWND owner) {
    const FrameWidget* frame = FrameOf(owner);
    const QScreen* screen = frame != nullptr ? frame->screen() : nullptr;
    return screen != nullptr ? *screen : *QGuiApplication::primaryScreen();
}

/// Where a dialog of this size goes on the screen; all of it is seen where there is room.
POINT PlaceOnScreen(const DialogTemplate& read, const DialogState& state, HWND owner, SIZE size) {
    const QRect screen = ScreenOf(owner).availableGeometry();
    POINT corner{state.units.Horizontal(read.place.x), state.units.Vertical(read.place.y)};
    RECT around{screen.left(), screen.top(), screen.right() + 1, screen.bottom() + 1};
    if ((read.style & DS_CENTERMOUSE) != 0) {
        const QPoint mouse = QCursor::pos();
        corner = {mouse.x() - size.cx / 2, mouse.y() - size.cy / 2};
    } else if ((read.style & DS_CENTER) != 0 || read.place.x == kPlacedBySystem) {
        if (::IsWindowVisible(owner) != FALSE) ::GetWindowRect(owner, &around);
        corner = {(around.left + around.right - size.cx) / 2,
                  (around.top + around.bottom - size.cy) / 2};
    } else if ((read.style & DS_ABSALIGN) == 0 && owner != nullptr) {
        ::ClientToScreen(owner, &corner);
    }
    const auto kept = [](LONG at, int first, int room, LONG length) {
        return std::max<LONG>(first, std::min<LONG>(at, first + room - length));
    };
    return {kept(corner.x, screen.left(), screen.width(), size.cx),
            kept(corner.y, screen.top(), screen.height(), size.cy)};
}

CREATESTRUCTA Describe(const DialogTemplate& read, const DialogState& state, HINSTANCE instance,
                       HWND owner) {
    CREATESTRUCTA asked{};
    const DWORD style = StyleFor(read);
    const bool is_child = (style & WS_CHILD) != 0;
    asked.hInstance = instance;
    asked.hwndParent = owner;
    asked.style = static_cast<LONG>(style);
    asked.dwExStyle = read.extended_style;
    if ((style & DS_CONTROL) != 0) asked.dwExStyle |= WS_EX_CONTROLPARENT;
    asked.lpszName = read.title.c_str();
    asked.lpszClass = read.window_class.empty() ? kSystemDialogClass : read.window_class.c_str();
    if (!is_child && !read.menu.empty()) asked.hMenu = ::LoadMenuA(instance, read.menu.c_str());
    RECT rect{0, 0, state.units.Horizontal(std::max<std::int16_t>(read.place.width, 0)),
              state.units.Vertical(std::max<std::int16_t>(read.place.height, 0))};
    if (!is_child) {
        ::AdjustWindowRectEx(&rect, style, asked.hMenu != nullptr ? TRUE : FALSE, asked.dwExStyle);
    }
    asked.cx = rect.right - rect.left;
    asked.cy = rect.bottom - rect.top;
    const POINT corner =
        is_child ? POINT{state.units.Horizontal(read.place.x), state.units.Vertical(read.place.y)}
                 : PlaceOnScreen(read, state, owner, {asked.cx, asked.cy});
    asked.x = corner.x;
    asked.y = corner.y;
    return asked;
}

bool CreateControl(HWND dialog, const TemplateControl& control, HINSTANCE instance) {
    DialogState* const state = DialogStateOf(dialog);
    if (state == nullptr) return false; // a control's creation has destroyed the dialog
    const kelvo::platform::DialogUnits& units = state->units;
    const TemplatePlace& place = control.place;
    const HWND made = ::CreateWindowExA(
        control.extended_style, control.window_class.c_str(), control.title.c_str(),
        control.style | WS_CHILD, units.Horizontal(place.x), units.Vertical(place.y),
        units.Horizontal(place.width), units.Vertical(place.height), dialog,
        reinterpret_cast<HMENU>(static_cast<INT_PTR>(control.id)), instance, nullptr);
    if (made == nullptr) return false;
    if (state->font != nullptr) {
        ::SendMessageA(made, WM_SETFONT, reinterpret_cast<WPARAM>(state->font), FALSE);
    }
    if (state->default_id == 0 && (DialogCode(made) & DLGC_DEFPUSHBUTTON) != 0) {
        state->default_id = control.id;
    }
    return true;
}

bool CreateControls(HWND dialog, const DialogTemplate& read, HINSTANCE instance) {
    const bool may_fail = (read.style & DS_NOFAILCREATE) != 0;
    for (const TemplateControl& control : read.controls) {
        const bool made = CreateControl(dialog, control, instance);
        if (::IsWindow(dialog) == FALSE || (!made && !may_fail)) return false;
    }
    return true;
}

/// A window manager that frames a new window moves it by the frame's edges.
void ShowInPlace(HWND dialog) {
    RECT wanted{};
    ::GetWindowRect(dialog, &wanted);
    ::ShowWindow(dialog, SW_SHOWNORMAL);
    RECT shown{};
    if (::GetWindowRect(dialog, &shown) == FALSE) return;
    if (shown.left == wanted.left && shown.top == wanted.top) return;
    ::SetWindowPos(dialog, nullptr, wanted.left, wanted.top, 0, 0, SWP_NOSIZE | SWP_NOZORDER);
}

/// WM_INITDIALOG, the first focus, and the dialog's first appearance.
void Begin(HWND dialog, const DialogTemplate& read, LPARAM parameter) {
    const bool is_page = (read.style & DS_CONTROL) != 0;
    const HWND first = ::GetNextDlgTabItem(dialog, nullptr, FALSE);
    const LRESULT wants_focus =
        ::SendMessageA(dialog, WM_INITDIALOG, reinterpret_cast<WPARAM>(first), parameter);
    if (::IsWindow(dialog) == FALSE) return;
    if (wants_focus != 0 && !is_page) {
        FocusControl(dialog, ::GetNextDlgTabItem(dialog, nullptr, FALSE));
    }
    if ((read.style & WS_VISIBLE) == 0 || ::IsWindow(dialog) == FALSE) return;
    ShowInPlace(dialog);
    if (::IsWindow(dialog) == FALSE) return;
    // What is shown becomes the active window, and in a dialog a control has the keyboard.
    if ((read.style & WS_CHILD) == 0 && !is_page && ::IsChild(dialog, ::GetFocus()) == FALSE) {
        ::SetFocus(dialog);
    }
}

} // namespace

HWND CreateDialogIndirectParamA(HINSTANCE instance, const DLGTEMPLATE* dialog_template, HWND owner,
                                DLGPROC procedure, LPARAM parameter) {
    if (!OnUiThread()) return nullptr;
    const auto read = ReadDialogTemplate(kelvo::platform::ResourceBytesAt(dialog_template));
    if (!read) return nullptr;
    RegisterSystemClass();
    DescribeDialogsToAssistants();
    if (!read->window_class.empty() && !IsReservedFor(read->window_class)) return nullptr;
    const DialogState state = StateFor(*read);
    const HWND dialog =
        CreateWindowInRole(Describe(*read, state, instance, owner), FrameRole::Dialog);
    if (dialog == nullptr) {
        if (state.font != nullptr) ::DeleteObject(state.font);
        return nullptr;
    }
    AddDialogState(dialog, state);
    ::SetWindowLongPtrA(dialog, DWLP_DLGPROC, reinterpret_cast<LONG_PTR>(procedure));
    if (state.font != nullptr) {
        ::SendMessageA(dialog, WM_SETFONT, reinterpret_cast<WPARAM>(state.font), FALSE);
    }
    if (!CreateControls(dialog, *read, instance)) {
        ::DestroyWindow(dialog);
        return nullptr;
    }
    Begin(dialog, *read, parameter);
    return ::IsWindow(dialog) != FALSE ? dialog : nullptr;
}
