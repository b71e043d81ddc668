// Input on its way from a control's window procedure to the control's widget.

#include "platform/desktop/Input.h"
#include "platform/desktop/Keys.h"
#include "platform/desktop/NextMessage.h"
#include "platform/desktop/controls/ControlClass.h"

#include <QContextMenuEvent>
#include <QInputMethodEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QWheelEvent>

#include <algorithm>

namespace kelvo::desktop {

namespace {

QPoint PointFrom(LPARAM lparam) {
    return {static_cast<std::int16_t>(LOWORD(static_cast<DWORD_PTR>(lparam))),
            static_cast<std::int16_t>(HIWORD(static_cast<DWORD_PTR>(lparam)))};
}

struct MouseKind {
    UINT message;
    QEvent::Type type;
    Qt::MouseButton button;
};
constexpr MouseKind kMouseKinds[] = {
    {WM_MOUSEMOVE, QEvent::MouseMove, Qt::NoButton},
    {WM_LBUTTONDOWN, QEvent::MouseButtonPress, Qt::LeftButton},
    {WM_LBUTTONUP, QEvent::MouseButtonRelease, Qt::LeftButton},
    {WM_LBUTTONDBLCLK, QEvent::MouseButtonDblClick, Qt::LeftButton},
    {WM_RBUTTONDOWN, QEvent::MouseButtonPress, Qt::RightButton},
    {WM_RBUTTONUP, QEvent::MouseButtonRelease, Qt::RightButton},
    {WM_RBUTTONDBLCLK, QEvent::MouseButtonDblClick, Qt::RightButton},
    {WM_MBUTTONDOWN, QEvent::MouseButtonPress, Qt::MiddleButton},
    {WM_MBUTTONUP, QEvent::MouseButtonRelease, Qt::MiddleButton},
    {WM_MBUTTONDBLCLK, QEvent::MouseButtonDblClick, Qt::MiddleButton},
};

Qt::MouseButtons ButtonsFrom(WPARAM held) {
    Qt::MouseButtons buttons;
    if ((held & MK_LBUTTON) != 0) buttons |= Qt::LeftButton;
    if ((held & MK_RBUTTON) != 0) buttons |= Qt::RightButton;
    if ((held & MK_MBUTTON) != 0) buttons |= Qt::MiddleButton;
    return buttons;
}

Qt::KeyboardModifiers ModifiersFrom(WPARAM held) {
    Qt::KeyboardModifiers modifiers;
    if ((held & MK_SHIFT) != 0) modifiers |= Qt::ShiftModifier;
    if ((held & MK_CONTROL) != 0) modifiers |= Qt::ControlModifier;
    return modifiers;
}

} // namespace

QWidget* Control::ReceiverAt(const QPoint& position) const {
    if (pressed_) return pressed_;
    QWidget* const below = host_ ? host_->childAt(position) : nullptr;
    return below != nullptr ? below : widget_.data();
}

void Control::GiveMouse(UINT message, WPARAM wparam, LPARAM lparam) {
    const auto* kind = std::ranges::find(kMouseKinds, message, &MouseKind::message);
    if (kind == std::end(kMouseKinds) || !host_ || !widget_) return;
    const QPoint position = PointFrom(lparam);
    QPointer<QWidget> receiver = ReceiverAt(position);
    QEvent::Type type = kind->type;
    if (const auto input = InputBehindMessage(window_, message);
        input && input->type() == QEvent::MouseButtonDblClick) {
        type = input->type();
    }
    const bool presses = type != QEvent::MouseMove && type != QEvent::MouseButtonRelease;
    if (presses && kind->button == Qt::LeftButton) {
        pressed_ = receiver;
        ::SetCapture(window_);
        if (!HasFocus()) ::SetFocus(window_);
    } else if (message == WM_LBUTTONUP) {
        EndPress();
    }
    if (!receiver || ::IsWindow(window_) == FALSE) return; // the focus's messages destroyed it
    QMouseEvent event(type, QPointF(receiver->mapFrom(host_.data(), position)),
                      QPointF(host_->mapToGlobal(position)), kind->button, ButtonsFrom(wparam),
                      ModifiersFrom(wparam));
    // The toolkit recognises the next double click by the time of the last press that it was given.
    if (const auto input = InputBehindMessage(window_, message)) {
        event.setTimestamp(static_cast<const QInputEvent&>(*input).timestamp());
    }
    GiveToWidget(*receiver, event);
    if (message != WM_RBUTTONUP || !receiver) return;
    QContextMenuEvent menu(QContextMenuEvent::Mouse, receiver->mapFrom(host_.data(), position),
                           host_->mapToGlobal(position), ModifiersFrom(wparam));
    GiveToWidget(*receiver, menu);
}

void Control::EndPress() {
    pressed_ = nullptr;
    releasing_ = true;
    if (::GetCapture() == window_) ::ReleaseCapture();
    releasing_ = false;
}

void Control::GiveKey(UINT message, WPARAM wparam) {
    if (!widget_) return;
    const bool down = message == WM_KEYDOWN || message == WM_SYSKEYDOWN;
    const auto type = down ? QEvent::KeyPress : QEvent::KeyRelease;
    const auto input = InputBehindMessage(window_, message);
    if (input && input->type() == type) {
        const std::unique_ptr<QEvent> copy(input->clone());
        if (WantsKey(static_cast<const QKeyEvent&>(*copy))) GiveToWidget(*widget_, *copy);
        return;
    }
    const auto key = ToolkitKey(wparam);
    if (key == 0) return;
    QKeyEvent event(type, key, Qt::NoModifier);
    if (WantsKey(event)) GiveToWidget(*widget_, event);
}

LRESULT Control::GiveWheel(WPARAM wparam, LPARAM lparam) {
    if (!widget_ || !host_) return 0;
    const QPoint global = PointFrom(lparam);
    const QPoint position = host_->mapFromGlobal(global);
    QWidget* const receiver = ReceiverAt(position);
    const auto turned = static_cast<std::int16_t>(HIWORD(wparam));
    QPoint pixels;
    QPoint angle(0, turned);
    if (const auto input = InputBehindMessage(window_, WM_MOUSEWHEEL);
        input && input->type() == QEvent::Wheel) {
        const auto& wheel = static_cast<const QWheelEvent&>(*input);
        pixels = wheel.pixelDelta();
        angle = wheel.angleDelta();
    }
    QWheelEvent event(QPointF(receiver->mapFrom(host_.data(), position)), QPointF(global), pixels,
                      angle, ButtonsFrom(wparam), ModifiersFrom(wparam), Qt::NoScrollPhase, false);
    event.ignore();
    GiveToWidget(*receiver, event);
    if (event.isAccepted()) return 0;
    return ::DefWindowProcA(window_, WM_MOUSEWHEEL, wparam, lparam);
}

void Control::ShowComposition() {
    const auto input = InputBehindMessage(window_, WM_IME_COMPOSITION);
    if (!input || input->type() != QEvent::InputMethod) return;
    const auto& composed = static_cast<const QInputMethodEvent&>(*input);
    QInputMethodEvent unfinished(composed.preeditString(), composed.attributes());
    Give(unfinished);
    PostComposedText(window_);
}

void Control::Give(QEvent& event) {
    if (widget_) GiveToWidget(*widget_, event);
}

} // namespace kelvo::desktop
