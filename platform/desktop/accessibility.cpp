#include "platform/desktop/accessibility.h"

#include "platform/desktop/Window.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QVariant>

using namespace kelvo::desktop;
using kelvo::platform::AccessibleButton;

namespace {

// Properties of the widget.
constexpr char kToggles[] = "kelvo_toggles";
constexpr char kIsDown[] = "kelvo_is_down";
constexpr char kHasKeyboard[] = "kelvo_has_keyboard";
constexpr char kWindow[] = "kelvo_window";

/// A button that is a window of its own making.
class DescribedButton final : public QAccessibleWidget {
public:
    explicit DescribedButton(QWidget* widget) : QAccessibleWidget(widget, QAccessible::Button) {}

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        const bool is_down = widget()->property(kIsDown).toBool();
        state.checkable = widget()->property(kToggles).toBool();
        state.checked = state.checkable && is_down;
        state.pressed = is_down;
        state.focusable = true;
        state.focused = widget()->property(kHasKeyboard).toBool();
        return state;
    }
    QStringList actionNames() const override {
        return widget()->isEnabled() ? QStringList{pressAction()} : QStringList{};
    }
    void doAction(const QString& name) override {
        if (name != pressAction() || !widget()->isEnabled()) return;
        const auto window = reinterpret_cast<HWND>(widget()->property(kWindow).toULongLong());
        const LPARAM middle = MAKELPARAM(static_cast<DWORD_PTR>(widget()->width() / 2),
                                         static_cast<DWORD_PTR>(widget()->height() / 2));
        ::PostMessageA(window, WM_LBUTTONDOWN, MK_LBUTTON, middle);
        ::PostMessageA(window, WM_LBUTTONUP, 0, middle);
    }
};

QAccessibleInterface* Describe(const QString& /*class_name*/, QObject* object) {
    auto* const widget = dynamic_cast<ClientWidget*>(object);
    if (widget == nullptr || !widget->property(kWindow).isValid()) return nullptr;
    return new DescribedButton(widget); // the toolkit's registry owns it
}

} // namespace

namespace kelvo::platform {

void DescribeButton(HWND window, AccessibleButton button) {
    static const bool installed = (QAccessible::installFactory(&Describe), true);
    QWidget* const widget = WidgetOf(window);
    if (!installed || widget == nullptr) return;
    const bool changes = widget->property(kIsDown).toBool() != button.is_down;
    const bool got_keyboard = button.has_keyboard && !widget->property(kHasKeyboard).toBool();
    widget->setProperty(kHasKeyboard, button.has_keyboard);
    widget->setProperty(kToggles, button.toggles);
    widget->setProperty(kIsDown, button.is_down);
    widget->setProperty(kWindow, static_cast<qulonglong>(reinterpret_cast<std::uintptr_t>(window)));
    if (!QAccessible::isActive()) return;
    if (got_keyboard) {
        QAccessibleEvent event(widget, QAccessible::Focus);
        QAccessible::updateAccessibility(&event);
    }
    if (!changes) return;
    QAccessible::State changed;
    changed.checked = button.toggles;
    changed.pressed = true;
    QAccessibleStateChangeEvent event(widget, changed);
    QAccessible::updateAccessibility(&event);
}

} // namespace kelvo::platform
