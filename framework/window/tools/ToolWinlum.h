#pragma once
// The tool window of the player's button bar.

#include "framework/window/tools/CToolWin.h"

namespace kelvo {

class ToolWinlum : public CToolWin {
public:
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    ~ToolWinlum() override;
    bool ReportButtonMouse(const ButtonMessage& report) override;
};

} // namespace kelvo
