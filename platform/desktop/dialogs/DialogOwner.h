#pragma once
// What a dialog of the toolkit's does to the windows around it. UI thread only.

#include "platform/base/types.h"

class QWidget;

namespace kelvo::desktop {

/// Whether there is somebody who could answer a dialog: a screen, or a platform that the user
/// chose.
bool CanShowDialogs();

/// Before it is shown: makes the owner, or without one all windows, inert while the dialog is
/// open, and keeps it in front.
void MakeModalFor(QWidget& dialog, HWND owner);

} // namespace kelvo::desktop
