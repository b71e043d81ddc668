#include "framework/window/tools/ButtonsMenu.h"

#include "framework/base/XLanguageInfoClass.h"
#include "framework/window/LUM.h"
#include "framework/window/tools/ButtonTip.h"
#include "framework/window/tools/CLittleWin.h"
#include "platform/desktop/messages.h"

#include <cstring>

namespace kelvo {
namespace {

constexpr char kMenuClass[] = "Lum32BtnmnuToolWin";
constexpr int kNotRegisteredId = 1239;
constexpr char kNotRegistered[] = "IMPOSSIBILE REGISTRARE CLASSE";
constexpr char kNotRegisteredCaption[] = "ButtonsMenu::newModalRun()";

constexpr int kBackgroundIndex = 7; // light grey
constexpr POINT kStripPlace{1, 1};
constexpr UINT kAnchorTipMs = 800;
/// No message tells when the pointer leaves the program's windows: the menu looks for itself.
constexpr UINT_PTR kWatchTimer = 1966;
constexpr UINT kWatchMs = 100;

bool RegisterMenuClass() {
    static bool registered = false; // once per process
    if (!registered) {
        registered = lum.RegisterNewClass(lum.Instance(), nullptr, kMenuClass, nullptr, CS_SAVEBITS,
                                          nullptr, nullptr) != 0;
    }
    return registered;
}

bool Contains(const RECT& rect, POINT point) {
    return point.x >= rect.left && point.x < rect.right && point.y >= rect.top &&
           point.y < rect.bottom;
}

bool BelongsTo(HWND window, HWND message_window) {
    return message_window == window || IsChild(window, message_window) != FALSE;
}

template <std::size_t capacity>
void CopyName(char (&target)[capacity], const char* name) {
    std::strncpy(target, name == nullptr ? "" : name, capacity - 1);
    target[capacity - 1] = '\0';
}

} // namespace

ButtonsMenu::ButtonsMenu() {
    SetWindowClass(kMenuClass);
    SetStyle(WS_POPUP | WS_VISIBLE);
    SetExtendedStyle(WS_EX_TOOLWINDOW);
    SetBackgroundColour(LUM::IndexColor(kBackgroundIndex));
    SetPaintBackground(true);
}

ButtonsMenu::~ButtonsMenu() {
    // While the strip, whose window lies in this one, is still there.
    if (HasWindow()) DestroyWindow(Window());
}

void ButtonsMenu::AddItem(const char* bitmap_name, std::int32_t command_id, const char* second_name,
                          bool initially_pressed) {
    btninfo item{};
    CopyName(item.bitmap_name, bitmap_name);
    CopyName(item.second_name, second_name);
    item.command_id = command_id;
    item.initially_pressed = initially_pressed ? 1 : 0;
    items_.Add(item);
}

bool ButtonsMenu::IsPressedItem(std::int32_t command_id) const {
    for (const btninfo& item : items_) {
        if (item.command_id == command_id) return item.initially_pressed != 0;
    }
    return false;
}

int ButtonsMenu::Open(LONG x, LONG y, CWin* anchor, MenuSide side, LONG button_size,
                      std::int32_t* chosen, Post post) {
    anchor_ = anchor;
    side_ = side;
    button_size_ = button_size;
    vertical_ = side == MenuSide::Below || side == MenuSide::Above ? 1 : 0;
    PlaceAt(x, y);
    if (newModalRun(anchor) == 0) return 0;
    if (chosen != nullptr) *chosen = chosen_;
    if (post == Post::Yes && anchor != nullptr) {
        anchor->CWin::Post(WM_COMMAND, static_cast<WPARAM>(chosen_),
                           IsPressedItem(chosen_) ? 0 : 1);
    }
    return 1;
}

void ButtonsMenu::PlaceAt(LONG x, LONG y) {
    const LONG total = StripLength();
    switch (side_) {
    case MenuSide::Below:
        SetPlacement(x, y, button_size_, total);
        break;
    case MenuSide::Above:
        SetPlacement(x, y - total, button_size_, total);
        break;
    case MenuSide::Left:
        SetPlacement(x - total, y, total, button_size_);
        break;
    case MenuSide::Right:
        SetPlacement(x, y, total, button_size_);
        break;
    }
}

bool ButtonsMenu::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CWin::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case WM_CREATE:
        OnCreate();
        return false;
    case WM_COMMAND:
        chosen_ = static_cast<std::int32_t>(wparam);
        EndModal(1);
        return true;
    case WM_TIMER:
        if (wparam == kTipTimer) ShowAnchorTip();
        return true;
    default:
        return false;
    }
}

void ButtonsMenu::OnCreate() {
    strip_.SetStyle(WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_CLIPCHILDREN);
    strip_.SetExtendedStyle(WS_EX_TOOLWINDOW);
    strip_.SetBackgroundColour(BackgroundColour());
    strip_.SetParent(this);
    strip_.SetNotifyTarget(this);
    strip_.SetPlacement(kStripPlace.x, kStripPlace.y, IsVertical() ? button_size_ : StripLength(),
                        IsVertical() ? StripLength() : button_size_);
    if (strip_.Create() != 0) AddButtons();
}

void ButtonsMenu::AddButtons() {
    LONG offset = 0;
    for (const btninfo& item : items_) {
        const LONG left = IsVertical() ? 0 : offset;
        const LONG top = IsVertical() ? offset : 0;
        if (item.second_name[0] != '\0') {
            strip_.AddButton(item.bitmap_name, item.second_name, item.command_id, left, top, "",
                             ButtonKind::Push, 0);
        } else {
            strip_.AddButton(item.bitmap_name, item.command_id, left, top, "", ButtonKind::Push, 0);
        }
        BitmapButton* const button = strip_.FindButton(item.command_id);
        if (button != nullptr) button->SetPressed(item.initially_pressed != 0);
        offset += button_size_;
    }
}

int ButtonsMenu::CreateMenu(CWin* owner) {
    lum.ProcessMessages();
    if (Instance() == nullptr) SetInstance(lum.Instance());
    SetParent(owner);
    if (!RegisterMenuClass()) {
        const char* const text = XLanguageInfoClass::Translate(kNotRegisteredId, kNotRegistered);
        return static_cast<int>(ErrorBox(text, Caption{kNotRegisteredCaption}));
    }
    return Create();
}

void ButtonsMenu::TakeRectangles() {
    GetWindowRect(Window(), &menu_rect_);
    anchor_rect_ = {};
    if (anchor_ != nullptr) GetWindowRect(anchor_->Window(), &anchor_rect_);
    neighbourhood_ = menu_rect_;
    if (IsVertical()) {
        neighbourhood_.top -= button_size_;
        neighbourhood_.bottom += button_size_;
    } else {
        neighbourhood_.left -= button_size_;
        neighbourhood_.right += button_size_;
    }
    GetCursorPos(&watched_pointer_);
}

LPARAM ButtonsMenu::newModalRun(CWin* owner) {
    chosen_ = 0;
    if (!HasWindow() && CreateMenu(owner) == 0) return 0;
    BeginModalLoop();
    TakeRectangles();
    if (tracks_mouse_ != 0) SetTimer(Window(), kWatchTimer, kWatchMs, nullptr);
    while (true) {
        MSG message{};
        if (GetMessageA(&message, nullptr, 0, 0) == 0) {
            PostQuitMessage(static_cast<int>(message.wParam)); // meant for the program's own loop
            return Finish(0);
        }
        if (message.message == WM_LBUTTONDOWN && PassToAnchor(message)) return 0;
        if (Judge(message) == Verdict::Leave) return Finish(0);
        if (MayDispatch(message, owner)) {
            TranslateMessage(&message);
            DispatchMessageA(&message);
        }
        if (IsEndRequested() || !HasWindow()) return Finish(EndResult());
    }
}

LPARAM ButtonsMenu::Finish(LPARAM result) {
    HideTip();
    EndModalLoop();
    if (HasWindow()) DestroyWindow(Window());
    return result;
}

ButtonsMenu::Verdict ButtonsMenu::Judge(const MSG& message) {
    switch (message.message) {
    case WM_NCLBUTTONDOWN:
    case WM_NCRBUTTONDOWN:
    case WM_NCMBUTTONDOWN:
        RequestEnd(0);
        return Verdict::GoOn;
    case WM_MOUSEMOVE:
        return tracks_mouse_ != 0 ? OnPointerMoved() : Verdict::GoOn;
    case WM_TIMER:
        return message.hwnd == Window() && message.wParam == kWatchTimer ? OnWatch()
                                                                         : Verdict::GoOn;
    case WM_LBUTTONDOWN:
    case WM_RBUTTONDOWN:
    case WM_MBUTTONDOWN:
        OnPress(message);
        return Verdict::GoOn;
    case WM_LBUTTONUP:
    case WM_RBUTTONUP:
    case WM_MBUTTONUP:
        HideTip();
        return Verdict::GoOn;
    case WM_KEYDOWN:
        if (message.wParam == VK_ESCAPE) RequestEnd(0);
        return Verdict::GoOn;
    default:
        return Verdict::GoOn;
    }
}

ButtonsMenu::Verdict ButtonsMenu::OnPointerMoved() {
    POINT pointer{};
    GetCursorPos(&pointer);
    if (!Contains(neighbourhood_, pointer)) return Verdict::Leave;
    if (!Contains(anchor_rect_, pointer)) {
        HideTip();
    } else if (!waits_for_tip_ && !anchor_->Title().IsEmpty()) {
        waits_for_tip_ = SetTimer(Window(), kTipTimer, kAnchorTipMs, nullptr) != 0;
    }
    return Verdict::GoOn;
}

// A pointer that has not moved has not left, wherever it was when the menu opened.
ButtonsMenu::Verdict ButtonsMenu::OnWatch() {
    POINT pointer{};
    GetCursorPos(&pointer);
    if (pointer.x == watched_pointer_.x && pointer.y == watched_pointer_.y) return Verdict::GoOn;
    watched_pointer_ = pointer;
    return Contains(neighbourhood_, pointer) ? Verdict::GoOn : Verdict::Leave;
}

void ButtonsMenu::OnPress(const MSG& message) {
    HideTip();
    if (!Contains(menu_rect_, message.pt)) RequestEnd(0);
}

bool ButtonsMenu::PassToAnchor(const MSG& message) {
    if (!Contains(anchor_rect_, message.pt) || Contains(menu_rect_, message.pt)) return false;
    Finish(0);
    POINT place = message.pt;
    ScreenToClient(anchor_->Window(), &place);
    anchor_->HandleMessage(
        message.message, message.wParam,
        MAKELPARAM(static_cast<DWORD_PTR>(place.x), static_cast<DWORD_PTR>(place.y)));
    return true;
}

bool ButtonsMenu::MayDispatch(const MSG& message, const CWin* owner) const {
    if (owner == nullptr || BelongsTo(Window(), message.hwnd)) return true;
    // A window that is not painted would ask for it for ever.
    return message.message == WM_PAINT || !BelongsTo(owner->Window(), message.hwnd);
}

void ButtonsMenu::ShowAnchorTip() {
    CLittleWin& tip = CLittleWin::MenuTips();
    if (!waits_for_tip_ || tip.IsShown()) return;
    POINT pointer{};
    GetCursorPos(&pointer);
    tip.SetHintText(anchor_->Title().Text());
    tip.Show(pointer.x, pointer.y);
    shows_tip_ = true;
}

void ButtonsMenu::HideTip() {
    if (shows_tip_) CLittleWin::MenuTips().Hide();
    if (waits_for_tip_ && HasWindow()) KillTimer(Window(), kTipTimer);
    shows_tip_ = false;
    waits_for_tip_ = false;
}

} // namespace kelvo
