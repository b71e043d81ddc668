#include "platform/desktop/dialogs/DialogOwner.h"

#include "platform/desktop/Desktop.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowViews.h"

#include <QWindow>

namespace kelvo::desktop {

bool CanShowDialogs() {
    return OnUiThread() && (platform::HasDisplay() || platform::PlatformChosenByUser());
}

void MakeModalFor(QWidget& dialog, HWND owner) {
    dialog.setWindowModality(Qt::ApplicationModal);
    const FrameWidget* frame = FrameOf(owner);
    if (frame == nullptr || frame->windowHandle() == nullptr) return;
    dialog.setWindowModality(Qt::WindowModal);
    // No child of the owner: that may be destroyed while the dialog is open.
    dialog.winId();
    dialog.windowHandle()->setTransientParent(frame->windowHandle());
}

} // namespace kelvo::desktop
