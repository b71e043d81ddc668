#pragma once
// The pictures behind icon and cursor handles. UI thread only.

#include "platform/base/types.h"

#include <QCursor>
#include <QIcon>

namespace kelvo::desktop {

QIcon IconBehind(HICON icon);         ///< empty for no icon
QCursor CursorBehind(HCURSOR cursor); ///< the arrow for no cursor
void ForgetPictures();                ///< all handles are dead afterwards

} // namespace kelvo::desktop
