#include "platform/desktop/MessageBoxes.h"

#include "platform/desktop/Desktop.h"
#include "platform/desktop/UiLoop.h"
#include "platform/desktop/WindowViews.h"

#include <QMessageBox>
#include <QPushButton>
#include <QWindow>

namespace kelvo::desktop {

namespace {

const QString kYes = QStringLiteral("Sì");
const QString kNo = QStringLiteral("No");
const QString kOk = QStringLiteral("OK");

QMessageBox::Icon IconFor(UINT type) {
    switch (type & MB_ICONMASK) {
    case MB_ICONHAND:
        return QMessageBox::Critical;
    case MB_ICONQUESTION:
        return QMessageBox::Question;
    case MB_ICONEXCLAMATION:
        return QMessageBox::Warning;
    default:
        return QMessageBox::NoIcon;
    }
}

/// An owner alone is inert meanwhile; without one, or task-modal, all windows are.
void MakeModal(QMessageBox& box, const platform::MessageBoxRequest& request) {
    box.setWindowModality(Qt::ApplicationModal);
    box.setWindowFlag(Qt::WindowStaysOnTopHint, (request.type & MB_TOPMOST) != 0);
    const FrameWidget* owner = FrameOf(request.owner);
    if (owner == nullptr || owner->windowHandle() == nullptr) return;
    if ((request.type & MB_TASKMODAL) == 0) box.setWindowModality(Qt::WindowModal);
    // No child of the owner: that may be destroyed while the box is open.
    box.winId();
    box.windowHandle()->setTransientParent(owner->windowHandle());
}

int ShowOnUiThread(const platform::MessageBoxRequest& request) {
    QMessageBox box(IconFor(request.type), QString::fromStdString(request.caption),
                    QString::fromStdString(request.text));
    box.setTextFormat(Qt::PlainText); // a file's name is no markup
    MakeModal(box, request);
    if ((request.type & MB_TYPEMASK) != MB_YESNO) {
        box.addButton(kOk, QMessageBox::AcceptRole);
        box.exec();
        return IDOK;
    }
    const QPushButton* yes = box.addButton(kYes, QMessageBox::YesRole);
    QPushButton* const no = box.addButton(kNo, QMessageBox::NoRole);
    box.setEscapeButton(no);
    box.exec();
    return box.clickedButton() == yes ? IDYES : IDNO;
}

} // namespace

int ShowMessageBox(const platform::MessageBoxRequest& request) {
    if (!platform::HasDisplay() && !platform::PlatformChosenByUser()) {
        return platform::ShowBoxOnConsole(request);
    }
    return static_cast<int>(RunOnUiThread([&]() -> LRESULT { return ShowOnUiThread(request); }));
}

} // namespace kelvo::desktop
