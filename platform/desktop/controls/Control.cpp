#include "platform/desktop/DeviceContext.h"
#include "platform/desktop/Fonts.h"
#include "platform/desktop/GraphicsObject.h"
#include "platform/desktop/Input.h"
#include "platform/desktop/MessageQueue.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/Surface.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/controls/ControlClass.h"
#include "platform/desktop/drawing.h"

#include <QApplication>

#include <variant>

namespace kelvo::desktop {

namespace {

QColor ToQt(COLORREF colour) {
    return QColor::fromRgb(PixelFrom(colour));
}

std::string TextOf(HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    return data == nullptr ? std::string() : data->text;
}

ClientWidget* ClientOf(HWND window) {
    const WindowView* view = ViewOf(window);
    return view == nullptr ? nullptr : view->client.data();
}

} // namespace

Control::Control(const ControlSetup& setup)
    : window_(setup.window), parent_(setup.parent), host_(setup.host),
      face_(std::make_shared<ControlFace>(setup.window)) {}

Control::~Control() = default;

void Control::Adopt(QWidget* widget) {
    widget_ = widget;
    // The focus follows the program's own calls, not the toolkit's clicks.
    widget->setFocusPolicy(Qt::TabFocus);
    if (const auto surface = SurfaceOf(window_)) face_->Attach(*surface, widget);
    static_cast<ClientWidget*>(host_.data())->HoldControl(widget);
    WatchControl(widget, window_);
    widget->show();
}

DWORD Control::Style() const {
    LockedWindows windows;
    const WindowData* data = windows.Find(window_);
    return data == nullptr ? 0 : data->style;
}

UINT Control::Number() const {
    LockedWindows windows;
    const WindowData* data = windows.Find(window_);
    return data == nullptr ? 0 : static_cast<UINT>(data->id);
}

bool Control::HasFocus() const {
    return ::GetFocus() == window_;
}

void Control::Notify(UINT code) {
    Report(WM_COMMAND, MAKEWPARAM(Number(), code));
}

void Control::Report(UINT message, WPARAM wparam) {
    // Told of one thing, the parent may have destroyed the control before it is told the next.
    if (parent_ == nullptr || ::IsWindow(window_) == FALSE) return;
    const auto lparam = reinterpret_cast<LPARAM>(window_);
    // Code of the toolkit that no message brought about must not meet a parent that destroys it.
    if (answering_ > 0) {
        ::SendMessageA(parent_, message, wparam, lparam);
    } else {
        ::PostMessageA(parent_, message, wparam, lparam);
    }
}

void Control::SeeThrough() {
    static_cast<ClientWidget*>(host_.data())->SetControlBackground(QBrush(Qt::NoBrush));
}

void Control::Repaint() {
    ::InvalidateRect(window_, nullptr, TRUE);
}

std::optional<LRESULT> Control::Handle(UINT /*message*/, WPARAM /*wparam*/, LPARAM /*lparam*/) {
    return std::nullopt;
}

LRESULT Control::Answer(UINT message, WPARAM wparam, LPARAM lparam) {
    struct Depth {
        explicit Depth(int& value) : depth(value) { ++depth; }
        ~Depth() { --depth; }
        Depth(const Depth&) = delete;
        Depth& operator=(const Depth&) = delete;
        int& depth;
    };
    const Depth depth(answering_);
    if (message == WM_CAPTURECHANGED) {
        if (releasing_) return 0;
        pressed_ = nullptr;
    }
    if (const auto answer = Handle(message, wparam, lparam)) return *answer;
    return AnswerCommon(message, wparam, lparam);
}

LRESULT Control::AnswerCommon(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_PAINT:
        return Paint();
    case WM_ERASEBKGND:
        return FALSE;
    case WM_SETFONT:
        return SetFont(reinterpret_cast<HFONT>(wparam),
                       LOWORD(static_cast<DWORD_PTR>(lparam)) != 0);
    case WM_GETFONT:
        return reinterpret_cast<LRESULT>(font_);
    case WM_SETTEXT: {
        const LRESULT set = ::DefWindowProcA(window_, message, wparam, lparam);
        ShowText(TextOf(window_));
        Repaint(); // what somebody has drawn over the old text goes with it
        return set;
    }
    case WM_ENABLE:
        Repaint();
        return 0;
    case WM_MOUSEMOVE:
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
    case WM_LBUTTONDBLCLK:
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
    case WM_RBUTTONDBLCLK:
    case WM_MBUTTONDOWN:
    case WM_MBUTTONUP:
    case WM_MBUTTONDBLCLK:
        GiveMouse(message, wparam, lparam);
        return 0;
    case WM_MOUSEWHEEL:
        return GiveWheel(wparam, lparam);
    case WM_KEYDOWN:
    case WM_KEYUP:
    case WM_SYSKEYDOWN:
    case WM_SYSKEYUP:
        GiveKey(message, wparam);
        return 0;
    default:
        return ::DefWindowProcA(window_, message, wparam, lparam);
    }
}

LRESULT Control::Paint() {
    const auto surface = SurfaceOf(window_);
    if (!surface) return 0;
    PAINTSTRUCT paint{};
    const HDC dc = ::BeginPaint(window_, &paint);
    if (dc == nullptr) return 0;
    AskColours();
    const RECT& area = paint.rcPaint;
    const ClientWidget* const client = ClientOf(window_);
    if (client != nullptr && !DrawItself(dc)) {
        const QRect painted(QPoint(area.left, area.top), QPoint(area.right - 1, area.bottom - 1));
        face_->Render(*surface, painted, client->ControlBackground());
    }
    ::EndPaint(window_, &paint);
    return 0;
}

void Control::AskColours() {
    const UINT message = ColourMessage();
    if (message == 0 || parent_ == nullptr) return;
    const HDC dc = ::GetDC(window_);
    if (dc == nullptr) return;
    ::SetTextColor(dc, ::GetSysColor(COLOR_WINDOWTEXT));
    ::SetBkColor(dc, ::GetSysColor(COLOR_WINDOW));
    const COLORREF text_before = ::GetSysColor(COLOR_WINDOWTEXT);
    const auto brush = reinterpret_cast<HBRUSH>(::SendMessageA(
        parent_, message, reinterpret_cast<WPARAM>(dc), reinterpret_cast<LPARAM>(window_)));
    const auto state = StateOf(dc);
    ::ReleaseDC(window_, dc);
    if (!state || !host_) return; // the parent has destroyed it
    ControlColours colours;
    if (state->text_colour != text_before) colours.text = ToQt(state->text_colour);
    Brush found;
    if (brush != nullptr && FindBrush(brush, found)) {
        colours.transparent = found.hollow;
        if (!found.hollow) colours.background = ToQt(found.colour);
    }
    if (colours == colours_) return;
    colours_ = colours;
    ShowColours(colours);
}

void Control::ShowColours(const ControlColours& colours) {
    if (!widget_) return;
    QPalette palette;
    for (const auto group : {QPalette::Active, QPalette::Inactive}) {
        if (!colours.text) break;
        for (const auto role : {QPalette::WindowText, QPalette::Text})
            palette.setColor(group, role, *colours.text);
    }
    if (colours.background) {
        for (const auto role : {QPalette::Window, QPalette::Base})
            palette.setColor(role, *colours.background);
    }
    widget_->setPalette(palette);
    ClientWidget* const client = ClientOf(window_);
    if (client == nullptr) return;
    if (colours.transparent) {
        client->SetControlBackground(QBrush(Qt::NoBrush));
    } else if (colours.background) {
        client->SetControlBackground(QBrush(*colours.background));
    } else {
        client->SetControlBackground(std::nullopt);
    }
}

LRESULT Control::SetFont(HFONT font, bool repaint) {
    font_ = font;
    QFont realised = QApplication::font();
    if (const auto item = FindGraphicsItem(font)) {
        if (const auto* found = std::get_if<std::shared_ptr<Font>>(&item->content)) {
            const std::lock_guard lock(TextMutex());
            const RealisedFont given = (*found)->Realise(1.0, 1.0);
            realised = given.font;
            // The toolkit widens by whole per cents.
            if (given.stretch != 1.0)
                realised.setStretch(std::max(1, static_cast<int>(given.stretch * 100.0 + 0.5)));
        }
    }
    ShowFont(realised);
    if (repaint) Repaint();
    return 0;
}

void Control::ShowFont(const QFont& font) {
    if (widget_) widget_->setFont(font);
}

void Control::NameAfterLabel() {
    if (!widget_ || parent_ == nullptr) return;
    std::string name;
    {
        LockedWindows windows;
        const WindowData* parent = windows.Find(parent_);
        if (parent == nullptr) return;
        for (const HWND sibling : parent->children) {
            if (sibling == window_) break;
            const WindowData* data = windows.Find(sibling);
            const bool is_label = data != nullptr && data->window_class &&
                                  qstricmp(data->window_class->name.c_str(), WC_STATIC) == 0;
            name = is_label ? data->text : std::string();
        }
    }
    widget_->setAccessibleName(WithoutPrefix(QString::fromStdString(name)));
}

void RegisterControlClass(const char* name, UINT class_style, MakeControl make) {
    const auto made = std::make_shared<WindowClass>();
    made->name = name;
    made->values.style = class_style;
    made->values.lpfnWndProc = &ControlProcedure;
    made->values.lpszClassName = made->name.c_str();
    made->make_control = make;
    LockedWindows().AddClass(made);
}

LRESULT ControlProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam) {
    const WindowView* view = OnUiThread() ? ViewOf(window) : nullptr;
    // It outlives its window until the message is answered.
    const std::shared_ptr<Control> control = view == nullptr ? nullptr : view->control;
    return control ? control->Answer(message, wparam, lparam)
                   : ::DefWindowProcA(window, message, wparam, lparam);
}

QString WithoutPrefix(const QString& text) {
    QString plain;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('&') && i + 1 < text.size()) ++i;
        plain += text[i];
    }
    return plain;
}

QImage PictureOf(HBITMAP bitmap) {
    const auto item = FindGraphicsItem(bitmap);
    if (!item) return {};
    const auto* pixels = std::get_if<std::shared_ptr<PixelBuffer>>(&item->content);
    if (pixels == nullptr) return {};
    const std::lock_guard lock((*pixels)->Mutex());
    return (*pixels)->Image().copy();
}

} // namespace kelvo::desktop

void InitCommonControls() {
    kelvo::desktop::RegisterStandardControls();
}
