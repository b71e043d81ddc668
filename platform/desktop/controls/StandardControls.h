#pragma once
// The classes of controls.h, one function for each family that makes the Control behind a window.

#include "platform/desktop/controls/ControlClass.h"

#include <memory>

namespace kelvo::desktop {

std::unique_ptr<Control> MakeButton(const ControlSetup& setup);
std::unique_ptr<Control> MakeComboBox(const ControlSetup& setup);
std::unique_ptr<Control> MakeEdit(const ControlSetup& setup);
std::unique_ptr<Control> MakeListBox(const ControlSetup& setup);
std::unique_ptr<Control> MakeScrollBar(const ControlSetup& setup);
std::unique_ptr<Control> MakeStatic(const ControlSetup& setup);
std::unique_ptr<Control> MakeTrackbar(const ControlSetup& setup);

} // namespace kelvo::desktop
