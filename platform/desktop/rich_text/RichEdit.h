#pragma once
// The control class of rich_text.h: what its messages mean for the text in the field.

#include "platform/desktop/controls/ControlClass.h"

#include <memory>

namespace kelvo::desktop {

std::unique_ptr<Control> MakeRichEdit(const ControlSetup& setup);

} // namespace kelvo::desktop
