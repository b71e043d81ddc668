#include "platform/desktop/Input.h"

#include "platform/desktop/Keys.h"
#include "platform/desktop/MessageQueue.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowPlacement.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <QCursor>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>

#include <cmath>
#include <map>
#include <optional>
#include <utility>

using namespace kelvo::desktop;

namespace kelvo::desktop {

namespace {

constexpr LPARAM kGotResult = 0x0800; ///< of WM_IME_COMPOSITION: text that is final

HWND focus_window = nullptr;
HWND capture_window = nullptr;

POINT ToPoint(const QPointF& position) {
    return {static_cast<LONG>(std::floor(position.x())),
            static_cast<LONG>(std::floor(position.y()))};
}

LPARAM Pack(const QPoint& point) {
    return MAKELPARAM(static_cast<DWORD_PTR>(static_cast<UINT>(point.x())),
                      static_cast<DWORD_PTR>(static_cast<UINT>(point.y())));
}

WPARAM HeldDown(const QMouseEvent& event) {
    WPARAM held = 0;
    if (event.buttons().testFlag(Qt::LeftButton)) held |= MK_LBUTTON;
    if (event.buttons().testFlag(Qt::RightButton)) held |= MK_RBUTTON;
    if (event.buttons().testFlag(Qt::MiddleButton)) held |= MK_MBUTTON;
    if (event.modifiers().testFlag(Qt::ShiftModifier)) held |= MK_SHIFT;
    if (event.modifiers().testFlag(Qt::ControlModifier)) held |= MK_CONTROL;
    return held;
}

UINT ButtonMessage(Qt::MouseButton button, QEvent::Type type, bool double_clicks) {
    UINT down = 0;
    switch (button) {
    case Qt::LeftButton:
        down = WM_LBUTTONDOWN;
        break;
    case Qt::RightButton:
        down = WM_RBUTTONDOWN;
        break;
    case Qt::MiddleButton:
        down = WM_MBUTTONDOWN;
        break;
    default:
        return WM_NULL;
    }
    if (type == QEvent::MouseButtonRelease) return down + 1;
    return type == QEvent::MouseButtonDblClick && double_clicks ? down + 2 : down;
}

UINT ClassStyle(HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    return data != nullptr && data->window_class ? data->window_class->values.style : 0;
}

/// The toolkit sends all that happens while a button is down to where it went down; without capture
/// it belongs to the window under the mouse.
HWND TargetOf(const QMouseEvent& event, const QWidget& widget, HWND window) {
    if (capture_window != nullptr) return capture_window;
    if (widget.rect().contains(event.position().toPoint())) return window;
    const FrameWidget* frame = FrameOf(window);
    if (frame == nullptr) return nullptr;
    const QWidget* below = frame->childAt(frame->mapFromGlobal(event.globalPosition().toPoint()));
    for (const HWND candidate : LockedWindows().All()) {
        if (below != nullptr && WidgetOf(candidate) == below) return candidate;
    }
    return nullptr;
}

void QueueMouse(const QMouseEvent& event, const QWidget& widget, HWND window) {
    const HWND target = TargetOf(event, widget, window);
    const QWidget* const target_widget = WidgetOf(target);
    if (target_widget == nullptr) return;
    const bool moves = event.type() == QEvent::MouseMove;
    MSG message{};
    message.hwnd = target;
    message.message =
        moves ? WM_MOUSEMOVE
              : ButtonMessage(event.button(), event.type(), (ClassStyle(target) & CS_DBLCLKS) != 0);
    if (message.message == WM_NULL) return;
    const POINT position = ToPoint(event.globalPosition());
    message.wParam = HeldDown(event);
    message.lParam = Pack(target_widget->mapFromGlobal(QPoint(position.x, position.y)));
    message.pt = position;
    MessageQueue::OfThisThread()->AddInput(message, std::unique_ptr<QEvent>(event.clone()));
}

/// Keys go to the window with the focus, if it lies in the top-level window that got them.
HWND KeyTarget(HWND window) {
    const FrameWidget* frame = FrameOf(window);
    return focus_window != nullptr && FrameOf(focus_window) == frame ? focus_window : window;
}

void QueueKey(const QKeyEvent& event, HWND window) {
    const bool released = event.type() == QEvent::KeyRelease;
    if (released && event.isAutoRepeat()) return; // a held key only goes down again and again
    const WPARAM key = VirtualKey(event);
    const bool with_alt = event.modifiers().testFlag(Qt::AltModifier);
    MSG message{};
    message.hwnd = KeyTarget(window);
    message.message =
        released ? (with_alt ? WM_SYSKEYUP : WM_KEYUP) : (with_alt ? WM_SYSKEYDOWN : WM_KEYDOWN);
    message.wParam = key;
    const bool was_down = released || event.isAutoRepeat();
    message.lParam = static_cast<LPARAM>(1U | (with_alt ? 1U << 29U : 0U) |
                                         (was_down ? 1U << 30U : 0U) | (released ? 1U << 31U : 0U));
    const QPoint mouse = QCursor::pos();
    message.pt = {mouse.x(), mouse.y()};
    MessageQueue::OfThisThread()->AddInput(message, std::unique_ptr<QEvent>(event.clone()));
}

void QueueComposition(const QInputMethodEvent& event, HWND window) {
    MSG message{};
    message.hwnd = KeyTarget(window);
    message.message = WM_IME_COMPOSITION;
    message.lParam = event.commitString().isEmpty() ? 0 : kGotResult;
    MessageQueue::OfThisThread()->AddInput(message, std::unique_ptr<QEvent>(event.clone()));
}

void ChangeFocus(HWND window) {
    if (window == focus_window) return;
    const HWND before = std::exchange(focus_window, window);
    CallWindow(before, WM_KILLFOCUS, reinterpret_cast<WPARAM>(window), 0);
    // The message may have moved the focus on.
    if (window == focus_window)
        CallWindow(window, WM_SETFOCUS, reinterpret_cast<WPARAM>(before), 0);
}

/// The window manager has made the frame the active one or another one.
void OnActivation(HWND window, bool active) {
    const WindowView* view = ViewOf(window);
    if (view == nullptr) return;
    if (!active) {
        if (focus_window != nullptr && FrameOf(focus_window) == view->frame) ChangeFocus(nullptr);
        return;
    }
    const QWidget* const focus_widget = view->frame->focusWidget();
    HWND target = window;
    for (const HWND candidate : LockedWindows().All()) {
        if (focus_widget != nullptr && WidgetOf(candidate) == focus_widget) target = candidate;
    }
    ChangeFocus(target);
}

class InputFilter final : public QObject {
public:
    void Watch(QWidget* widget, HWND window) {
        windows_[widget] = window;
        widget->installEventFilter(this);
    }
    void Forget(HWND window) {
        std::erase_if(windows_, [&](const auto& entry) { return entry.second == window; });
    }

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        const auto found = windows_.find(object);
        if (found == windows_.end()) return QObject::eventFilter(object, event);
        return Handle(*static_cast<QWidget*>(object), found->second, *event);
    }

private:
    /// @return whether the widget shall not see the event.
    static bool Handle(QWidget& widget, HWND window, QEvent& event) {
        switch (event.type()) {
        case QEvent::MouseMove:
        case QEvent::MouseButtonPress:
        case QEvent::MouseButtonRelease:
        case QEvent::MouseButtonDblClick:
            QueueMouse(static_cast<QMouseEvent&>(event), widget, window);
            event.accept();
            return true;
        case QEvent::KeyPress:
        case QEvent::KeyRelease:
            QueueKey(static_cast<QKeyEvent&>(event), window);
            event.accept();
            return true;
        case QEvent::InputMethod:
            QueueComposition(static_cast<QInputMethodEvent&>(event), window);
            event.accept();
            return true;
        case QEvent::Close:
            // Were it sent, the loop that is waiting now would go on waiting without a window.
            ::PostMessageA(window, WM_CLOSE, 0, 0);
            event.ignore();
            return true;
        default:
            return widget.isWindow() && HandleFrame(widget, window, event);
        }
    }

    static bool HandleFrame(QWidget& widget, HWND window, QEvent& event) {
        switch (event.type()) {
        case QEvent::Move:
            OnFrameMoved(window);
            break;
        case QEvent::Resize:
            OnFrameResized(window);
            break;
        case QEvent::LayoutRequest:
            AdaptClient(window);
            break;
        case QEvent::WindowActivate:
            OnActivation(window, true);
            break;
        case QEvent::WindowDeactivate:
            // A menu of ours that opens is no other window.
            OnActivation(window, widget.isActiveWindow());
            break;
        default:
            break;
        }
        return false;
    }

    std::map<const QObject*, HWND> windows_;
};

InputFilter& Filter() {
    static auto* const filter = new InputFilter; // the widgets that it watches may be deleted late
    return *filter;
}

} // namespace

void WatchWidget(QWidget* widget, HWND window) {
    Filter().Watch(widget, window);
}

void ForgetInput(HWND window) {
    Filter().Forget(window);
    if (focus_window == window) focus_window = nullptr;
    if (capture_window == window) capture_window = nullptr;
}

void PostComposedText(HWND window) {
    const auto input = InputInDispatch();
    if (!input || input->type() != QEvent::InputMethod) return;
    const QByteArray text = static_cast<const QInputMethodEvent&>(*input).commitString().toUtf8();
    for (const char letter : text)
        ::PostMessageA(window, WM_CHAR, static_cast<unsigned char>(letter), 1);
}

} // namespace kelvo::desktop

HWND SetCapture(HWND window) {
    if (!OnUiThread() || ViewOf(window) == nullptr) return nullptr;
    const HWND before = std::exchange(capture_window, window);
    if (before != nullptr && before != window) {
        CallWindow(before, WM_CAPTURECHANGED, 0, reinterpret_cast<LPARAM>(window));
    }
    return before;
}

BOOL ReleaseCapture() {
    if (!OnUiThread()) return FALSE;
    const HWND before = std::exchange(capture_window, nullptr);
    if (before != nullptr) CallWindow(before, WM_CAPTURECHANGED, 0, 0);
    return TRUE;
}

HWND GetCapture() {
    return OnUiThread() ? capture_window : nullptr;
}

HWND SetFocus(HWND window) {
    if (!OnUiThread()) return nullptr;
    const HWND before = focus_window;
    if (window == nullptr) {
        ChangeFocus(nullptr);
        return before;
    }
    QWidget* const widget = WidgetOf(window);
    if (widget == nullptr) return nullptr;
    ChangeFocus(window);
    if (focus_window == window) widget->setFocus();
    return before;
}

HWND GetFocus() {
    return OnUiThread() ? focus_window : nullptr;
}
