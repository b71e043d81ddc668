#include "framework/window/CWin.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"
#include "framework/base/Stream.h"
#include "framework/base/XLanguageInfoClass.h"
#include "framework/window/LUM.h"
#include "framework/window/WindowProcedures.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <algorithm>
#include <array>

namespace kelvo {
namespace {

constexpr char kNotStarted[] = "CHIAMARE lum.StartDefaultKernel() prima di creare oggetti CWin!";
constexpr char kNotCreatedText[] = "Classe : <%s>, Titolo <%s>, Istanza <%p>, ResIst <%p>";
constexpr int kNotCreatedCaptionId = 1254;
constexpr char kNotCreatedCaption[] = "FINESTRA NON CREATA CWin::Create(void)";
constexpr int kClassLabelId = 1255;
constexpr char kClassLabel[] = "Classe : ";
constexpr int kTitleLabelId = 1256;
constexpr char kTitleLabel[] = "Titolo : ";
constexpr int kNotCreatedHwndCaptionId = 1257;
constexpr char kNotCreatedHwndCaption[] = "FINESTRA NON CREATA CWin::Create(HWND)";

constexpr std::uint32_t kSavedBytes = 25;

} // namespace

CWin::CWin(std::uint32_t class_id)
    : CObj(class_id), class_name_(kBaseWindowClass),
      style_(WS_VISIBLE | WS_CLIPCHILDREN | WS_OVERLAPPEDWINDOW), left_(CW_USEDEFAULT),
      top_(CW_USEDEFAULT), height_(CW_USEDEFAULT), width_(CW_USEDEFAULT) {}

CWin::~CWin() {
    // WM_DESTROY arrives inside DestroyWindow and sets the flag. Where it does not (a window of
    // another thread), waiting would be for ever.
    if (no_window_ == 0 && DestroyWindow(window_) == FALSE) no_window_ = 1;
    // One that is on its way out has messages still to come, and they find no object any more.
    if (GetWindowLongPtrA(window_, kObjectOffset) == reinterpret_cast<LONG_PTR>(this)) {
        BindWindow(window_, nullptr);
    }
}

bool CWin::Save(Stream& stream) {
    std::array<std::uint8_t, kSavedBytes> bytes{};
    ByteWriter writer{bytes};
    writer.WriteU32(background_colour_);
    writer.WriteU32(extended_style_);
    for (const LONG value : {left_, top_, height_, width_}) {
        writer.WriteU32(static_cast<std::uint32_t>(value));
    }
    writer.WriteU8(paint_background_);
    const std::int64_t before = stream.Position();
    return stream.Write(bytes.data(), kSavedBytes) - before == kSavedBytes;
}

bool CWin::Load(Stream& stream) {
    std::array<std::uint8_t, kSavedBytes> bytes{};
    const std::int64_t before = stream.Position();
    if (stream.Read(bytes.data(), kSavedBytes) - before != kSavedBytes) return false;
    ByteReader reader{bytes};
    background_colour_ = reader.ReadU32();
    extended_style_ = reader.ReadU32();
    for (LONG* value : {&left_, &top_, &height_, &width_}) {
        *value = static_cast<LONG>(reader.ReadU32());
    }
    paint_background_ = reader.ReadU8();
    return true;
}

bool CWin::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_DESTROY:
        no_window_ = 1;
        return false;
    case WM_MOVE:
        return OnMove();
    case WM_SIZE:
        if (!anchored_) {
            width_ = LOWORD(static_cast<DWORD_PTR>(lparam));
            height_ = HIWORD(static_cast<DWORD_PTR>(lparam));
        }
        return false;
    case WM_CLOSE:
        if (modal_running_) {
            end_requested_ = true;
            end_result_ = lparam;
            modal_running_ = false;
        }
        return false; // the default procedure destroys the window
    case kEndModalMessage:
        // ProcessMessages or the loop of an open box may have taken it: the end is not lost with
        // it.
        if (modal_running_) {
            end_requested_ = true;
            end_result_ = lparam;
        }
        return false;
    case WM_ERASEBKGND:
        return OnEraseBackground(reinterpret_cast<HDC>(wparam));
    default:
        return false;
    }
}

bool CWin::OnMove() {
    RECT rectangle{};
    GetWindowRect(window_, &rectangle);
    POINT corner{rectangle.left, rectangle.top};
    if (parent_ != nullptr && (style_ & WS_CHILD) != 0) ScreenToClient(parent_->window_, &corner);
    left_ = corner.x;
    top_ = corner.y;
    return false;
}

bool CWin::OnEraseBackground(HDC context) const {
    if (paint_background_ == 0) return false;
    RECT client{};
    GetClientRect(window_, &client);
    const HBRUSH brush = CreateSolidBrush(background_colour_);
    FillRect(context, &client, brush);
    DeleteObject(brush);
    return true;
}

bool CWin::HasInstance() {
    if (instance_ == nullptr) instance_ = lum.Instance();
    return instance_ != nullptr || ErrorBox(kNotStarted);
}

bool CWin::CreateIn(HWND parent) {
    modal_running_ = false;
    window_ = CreateWindowExA(extended_style_, class_name_.Text(), title_.Text(), style_, left_,
                              top_, width_, height_, parent, menu_, instance_, this);
    return window_ != nullptr;
}

int CWin::Create() {
    if (!HasInstance()) return 0;
    if (!CreateIn(parent_ != nullptr ? parent_->window_ : nullptr)) {
        const CString text = CString::Formatted(kNotCreatedText, class_name_.Text(), title_.Text(),
                                                static_cast<void*>(instance_),
                                                static_cast<void*>(lum.ResourceIst()));
        MessageBoxA(nullptr, text.Text(),
                    XLanguageInfoClass::Translate(kNotCreatedCaptionId, kNotCreatedCaption), MB_OK);
        return 0;
    }
    return FinishCreation();
}

int CWin::Create(HWND parent) {
    if (!HasInstance()) return 0;
    parent_ = nullptr;
    if (!CreateIn(parent)) {
        CString text = XLanguageInfoClass::Translate(kClassLabelId, kClassLabel);
        text += class_name_;
        text += ",  ";
        text += XLanguageInfoClass::Translate(kTitleLabelId, kTitleLabel);
        text += title_;
        text += ",  ";
        MessageBoxA(nullptr, text.Text(),
                    XLanguageInfoClass::Translate(kNotCreatedHwndCaptionId, kNotCreatedHwndCaption),
                    MB_OK);
        return 0;
    }
    return FinishCreation();
}

void CWin::MarkCreated() {
    no_window_ = 0;
    state_ |= kCreatedState;
}

int CWin::FinishCreation() {
    MarkCreated();
    BindWindow(window_, this);
    if (paint_background_ != 0) InvalidateRect(window_, nullptr, TRUE);
    return 1;
}

void CWin::SetTitle(LPCSTR title) {
    title_ = title;
    if (HasWindow()) SetWindowTextA(window_, title_.Text());
}

void CWin::SetText(LPCSTR text) {
    if (HasWindow()) SendMessageA(window_, WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
}

void CWin::Place(UINT flags) const {
    if (!HasWindow()) return;
    // What the system was to choose has been chosen.
    if (left_ == CW_USEDEFAULT || top_ == CW_USEDEFAULT) flags |= SWP_NOMOVE;
    if (width_ == CW_USEDEFAULT || height_ == CW_USEDEFAULT) flags |= SWP_NOSIZE;
    SetWindowPos(window_, nullptr, left_, top_, width_, height_, SWP_NOZORDER | flags);
}

void CWin::SetLeft(LONG left) {
    SetPosition(left, top_);
}
void CWin::SetTop(LONG top) {
    SetPosition(left_, top);
}
void CWin::SetWidth(LONG width) {
    SetSize(width, height_);
}
void CWin::SetHeight(LONG height) {
    SetSize(width_, height);
}

void CWin::SetPosition(LONG left, LONG top) {
    left_ = left;
    top_ = top;
    Place(SWP_NOSIZE);
}

void CWin::SetSize(LONG width, LONG height) {
    width_ = width;
    height_ = height;
    Place(SWP_NOMOVE);
}

void CWin::SetPlacement(LONG left, LONG top, LONG width, LONG height) {
    left_ = left;
    top_ = top;
    width_ = width;
    height_ = height;
    Place(0);
}

void CWin::SetTopmost() {
    SetWindowPos(window_, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

void CWin::SetNotTopmost() {
    SetWindowPos(window_, HWND_NOTOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE);
}

DWORD CWin::ClientSize() const {
    RECT client{};
    GetClientRect(window_, &client);
    return static_cast<DWORD>(
        MAKELONG(static_cast<DWORD_PTR>(client.right), static_cast<DWORD_PTR>(client.bottom)));
}

LRESULT CWin::Send(UINT message, WPARAM wparam, LPARAM lparam) const {
    return SendMessageA(window_, message, wparam, lparam);
}

bool CWin::Post(UINT message, WPARAM wparam, LPARAM lparam) const {
    return PostMessageA(window_, message, wparam, lparam) != FALSE;
}

int CWin::SetAnchors(const AnchorMargins& margins) {
    anchors_ = margins;
    anchored_ = true;
    return 1;
}

int CWin::ApplyAnchors(const AnchorMargins& margins) {
    if (parent_ == nullptr || (style_ & WS_CHILD) == 0 || !HasWindow()) return 0;
    anchors_ = margins;
    if (margins.left >= 0) left_ = margins.left;
    if (margins.top >= 0) top_ = margins.top;
    RECT client{};
    GetClientRect(parent_->window_, &client);
    if (margins.right >= 0) {
        if (margins.left < 0) {
            left_ = client.right - width_ - margins.right;
        } else {
            width_ = client.right - margins.left - margins.right;
        }
    }
    if (margins.bottom >= 0) {
        if (margins.top < 0) {
            top_ = client.bottom - height_ - margins.bottom;
        } else {
            height_ = client.bottom - margins.top - margins.bottom;
        }
    }
    SetWindowPos(window_, nullptr, left_, top_, width_, height_, SWP_NOZORDER);
    return 1;
}

int CWin::ReapplyAnchors() {
    return anchored_ ? ApplyAnchors(anchors_) : 0;
}

int CWin::CentreOnScreen(LONG width, LONG height) {
    const HDC screen = CreateDCA("DISPLAY", nullptr, nullptr, nullptr);
    if (screen == nullptr) return 0;
    const LONG screen_width = GetDeviceCaps(screen, HORZRES);
    const LONG screen_height = GetDeviceCaps(screen, VERTRES);
    DeleteDC(screen);

    RECT own{};
    GetWindowRect(window_, &own);
    if (width < 1) width = own.right - own.left;
    if (height < 1) height = own.bottom - own.top;
    width = std::min(width, screen_width);
    height = std::min(height, screen_height);
    SetWindowPos(window_, nullptr, (screen_width - width) / 2, (screen_height - height) / 2, width,
                 height, SWP_NOZORDER | SWP_NOOWNERZORDER);
    return 1;
}

} // namespace kelvo
