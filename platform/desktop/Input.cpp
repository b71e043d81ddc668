#include "platform/desktop/Input.h"

#include "platform/desktop/Keys.h"
#include "platform/desktop/MessageQueue.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/UiLoop.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowFrames.h"
#include "platform/desktop/WindowMenus.h"
#include "platform/desktop/WindowPlacement.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <QContextMenuEvent>
#include <QCoreApplication>
#include <QCursor>
#include <QGuiApplication>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPointer>
#include <QWheelEvent>

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
QPointer<FrameWidget> wanted_frame; ///< that was asked to become the active window

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
    return WindowOf(frame->childAt(frame->mapFromGlobal(event.globalPosition().toPoint())));
}

/// Whom input for the window reaches: a disabled child leaves it to its parent, and nothing gets
/// into a top-level window that is disabled.
HWND EnabledTarget(HWND window) {
    LockedWindows windows;
    HWND target = window;
    for (const WindowData* data = windows.Find(window); data != nullptr;
         data = windows.Find(data->parent)) {
        const bool disabled = (data->style & WS_DISABLED) != 0;
        if (data->kind != WindowKind::Child) return disabled ? nullptr : target;
        if (disabled) target = data->parent;
    }
    return nullptr;
}

/// Of the message that a press outside of the client area sends.
void QueueFramePress(const QMouseEvent& event, const FrameHit& hit) {
    const UINT down = ButtonMessage(event.button(), QEvent::MouseButtonPress, false);
    if (down == WM_NULL) return;
    const QPoint on_screen = event.globalPosition().toPoint();
    MSG message{};
    message.hwnd = hit.window;
    message.message = down - WM_LBUTTONDOWN + WM_NCLBUTTONDOWN;
    message.wParam = hit.part;
    message.lParam = Pack(on_screen);
    message.pt = {on_screen.x(), on_screen.y()};
    MessageQueue::OfThisThread()->AddInput(message, std::unique_ptr<QEvent>(event.clone()));
}

bool IsPress(const QEvent& event) {
    return event.type() == QEvent::MouseButtonPress || event.type() == QEvent::MouseButtonDblClick;
}

void QueueMouse(const QMouseEvent& event, const QWidget& widget, HWND window) {
    const HWND aimed_at = TargetOf(event, widget, window);
    const HWND target = capture_window != nullptr ? aimed_at : EnabledTarget(aimed_at);
    const QWidget* const target_widget = WidgetOf(target);
    if (target_widget == nullptr) return;
    if (capture_window == nullptr && IsPress(event)) {
        if (const auto hit = FrameHitAt(target, event.globalPosition().toPoint())) {
            QueueFramePress(event, *hit);
            return;
        }
    }
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

void QueueWheel(const QWheelEvent& event, HWND window) {
    const HWND target = EnabledTarget(capture_window != nullptr ? capture_window : window);
    const int turned = event.angleDelta().y();
    if (target == nullptr || turned == 0) return;
    WPARAM held = 0;
    if (event.modifiers().testFlag(Qt::ShiftModifier)) held |= MK_SHIFT;
    if (event.modifiers().testFlag(Qt::ControlModifier)) held |= MK_CONTROL;
    MSG message{};
    message.hwnd = target;
    message.message = WM_MOUSEWHEEL;
    message.wParam = MAKEWPARAM(held, static_cast<DWORD_PTR>(static_cast<UINT>(turned)));
    const POINT position = ToPoint(event.globalPosition());
    message.lParam = Pack(QPoint(position.x, position.y));
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
    if (EnabledTarget(message.hwnd) != message.hwnd) return;
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
    // What was typed ahead belongs to whoever has the keyboard when its turn comes.
    if (before != nullptr && window != nullptr && FrameOf(before) == FrameOf(window)) {
        MessageQueue::OfThisThread()->MoveKeys(before, window);
    }
    CallWindow(before, WM_KILLFOCUS, reinterpret_cast<WPARAM>(window), 0);
    // The message may have moved the focus on.
    if (window == focus_window)
        CallWindow(window, WM_SETFOCUS, reinterpret_cast<WPARAM>(before), 0);
}

/// The keyboard moves between windows of ours; from another program's it is not taken.
void Activate(FrameWidget* frame) {
    if (frame == nullptr || !frame->isVisible() || QGuiApplication::focusWindow() == nullptr)
        return;
    // An earlier wish that the window manager has not fulfilled yet would undo this one.
    const bool is_another_wanted = wanted_frame && wanted_frame != frame;
    if (frame->isActiveWindow() && !is_another_wanted) return;
    wanted_frame = frame;
    frame->activateWindow();
}

/// The window manager has made the frame the active one or another one.
void OnActivation(HWND window, bool active) {
    const WindowView* view = ViewOf(window);
    if (view == nullptr) return;
    if (!active) {
        if (focus_window != nullptr && FrameOf(focus_window) == view->frame) ChangeFocus(nullptr);
        return;
    }
    if (wanted_frame == view->frame) wanted_frame.clear();
    const HWND focused = WindowOf(view->frame->focusWidget());
    ChangeFocus(focused != nullptr ? focused : window);
}

/// The toolkit itself has moved the focus to a control: an assistive program asked for it, or what
/// had it was hidden.
void OnFocusIn(HWND window) {
    {
        LockedWindows windows;
        const WindowData* data = windows.Find(window);
        if (data == nullptr || data->dying) return;
    }
    ChangeFocus(window);
}

/// What GiveToWidget is handing over; null: nothing.
const QEvent* event_given = nullptr;

bool IsInput(QEvent::Type type) {
    switch (type) {
    case QEvent::MouseMove:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::InputMethod:
        return true;
    default:
        return false;
    }
}

class InputFilter final : public QObject {
public:
    void Watch(QWidget* widget, HWND window) {
        windows_[widget] = window;
        widget->installEventFilter(this);
    }
    void WatchAll(QWidget* widget, HWND window) {
        if (widget->isWindow()) return; // an open list looks after its input itself
        controls_[widget] = window;
        widget->setMouseTracking(true); // moves are messages whether or not a button is down
        widget->installEventFilter(this);
        for (QObject* child : widget->children()) {
            if (child->isWidgetType()) WatchAll(static_cast<QWidget*>(child), window);
        }
    }
    HWND WindowOf(const QWidget* widget) const {
        for (; widget != nullptr; widget = widget->parentWidget()) {
            if (const auto found = windows_.find(widget); found != windows_.end()) {
                return found->second;
            }
            if (widget->isWindow()) break;
        }
        return nullptr;
    }
    void WatchMenuBar(QWidget* bar, HWND window) {
        menu_bars_[bar] = window;
        bar->installEventFilter(this);
    }
    void Forget(HWND window) {
        const auto is_of_window = [&](const auto& entry) { return entry.second == window; };
        std::erase_if(windows_, is_of_window);
        std::erase_if(controls_, is_of_window);
        std::erase_if(menu_bars_, is_of_window);
    }

protected:
    bool eventFilter(QObject* object, QEvent* event) override {
        if (IsInput(event->type()) && event_given != nullptr) {
            if (event == event_given) return false;
            // What the receiver leaves is handed on by the toolkit as a copy.
            if (!event->spontaneous()) return true;
        }
        if (const auto inside = controls_.find(object); inside != controls_.end()) {
            return HandleControl(*static_cast<QWidget*>(object), inside->second, *event);
        }
        const auto found = windows_.find(object);
        if (found == windows_.end()) {
            const auto bar = menu_bars_.find(object);
            if (bar != menu_bars_.end() && IsPress(*event)) {
                QueueFramePress(static_cast<QMouseEvent&>(*event), {bar->second, HTMENU});
                if (::GetPropA(bar->second, kMenuHolds) != nullptr) return true;
            }
            return QObject::eventFilter(object, event);
        }
        return Handle(*static_cast<QWidget*>(object), found->second, *event);
    }

private:
    bool HandleControl(QWidget& widget, HWND window, QEvent& event) {
        switch (event.type()) {
        case QEvent::ChildPolished:
            if (QObject* child = static_cast<QChildEvent&>(event).child(); child->isWidgetType()) {
                WatchAll(static_cast<QWidget*>(child), window);
            }
            return false;
        case QEvent::FocusIn:
            OnFocusIn(window);
            return false;
        case QEvent::ContextMenu:
            // The mouse's comes with the message of its button.
            return &event != event_given &&
                   static_cast<QContextMenuEvent&>(event).reason() == QContextMenuEvent::Mouse;
        default:
            return IsInput(event.type()) && Handle(widget, window, event);
        }
    }

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
        case QEvent::Wheel:
            QueueWheel(static_cast<QWheelEvent&>(event), window);
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
    std::map<const QObject*, HWND> controls_;  ///< widgets in the client area of a control
    std::map<const QObject*, HWND> menu_bars_; ///< they keep their events
};

InputFilter& Filter() {
    static auto* const filter = new InputFilter; // the widgets that it watches may be deleted late
    return *filter;
}

} // namespace

void WatchWidget(QWidget* widget, HWND window) {
    Filter().Watch(widget, window);
}

void WatchMenuBar(QWidget* bar, HWND window) {
    Filter().WatchMenuBar(bar, window);
}

void WatchControl(QWidget* widget, HWND window) {
    Filter().WatchAll(widget, window);
}

HWND WindowOf(const QWidget* widget) {
    return Filter().WindowOf(widget);
}

void GiveToWidget(QWidget& receiver, QEvent& event) {
    const QEvent* const before = std::exchange(event_given, &event);
    QCoreApplication::sendEvent(&receiver, &event);
    event_given = before;
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

BOOL GetCursorPos(POINT* point) {
    if (point == nullptr) return FALSE;
    return static_cast<BOOL>(RunOnUiThread([point]() -> LRESULT {
        const QPoint position = QCursor::pos();
        *point = {position.x(), position.y()};
        return TRUE;
    }));
}

HWND SetCapture(HWND window) {
    if (!OnUiThread() || ViewOf(window) == nullptr) return nullptr;
    const HWND before = std::exchange(capture_window, window);
    // What a quick hand has done since the press that is being handled belongs to it, too.
    MessageQueue::OfThisThread()->MoveMouse(window, [window](POINT on_screen) {
        return Pack(WidgetOf(window)->mapFromGlobal(QPoint(on_screen.x, on_screen.y)));
    });
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
    if (focus_window == window) {
        widget->setFocus();
        Activate(FrameOf(window));
    }
    return before;
}

HWND GetFocus() {
    return OnUiThread() ? focus_window : nullptr;
}
