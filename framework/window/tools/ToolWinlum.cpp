#include "framework/window/tools/ToolWinlum.h"

namespace kelvo {

ToolWinlum::~ToolWinlum() = default;

bool ToolWinlum::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    return CToolWin::HandleMessage(message, wparam, lparam);
}

bool ToolWinlum::ReportButtonMouse(const ButtonMessage& report) {
    return CToolWin::ReportButtonMouse(report);
}

} // namespace kelvo
