#include "platform/desktop/dialogs/DialogAccessibility.h"

#include "platform/desktop/WindowViews.h"

#include <QAccessible>
#include <QAccessibleWidget>

namespace kelvo::desktop {

namespace {

QAccessibleInterface* DescribeDialog(const QString& /*class_name*/, QObject* object) {
    auto* const frame = dynamic_cast<FrameWidget*>(object);
    if (frame == nullptr || frame->windowType() != Qt::Dialog) return nullptr;
    return new QAccessibleWidget(frame, QAccessible::Dialog); // the toolkit's registry owns it
}

} // namespace

void DescribeDialogsToAssistants() {
    static bool described = false;
    if (!described) QAccessible::installFactory(&DescribeDialog);
    described = true;
}

} // namespace kelvo::desktop
