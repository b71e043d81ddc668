#include "platform/desktop/controls/StandardControls.h"

#include "platform/desktop/controls.h"

namespace kelvo::desktop {

void RegisterStandardControls() {
    RegisterControlClass(WC_BUTTON, CS_DBLCLKS, &MakeButton);
    RegisterControlClass(WC_STATIC, CS_DBLCLKS, &MakeStatic);
    RegisterControlClass(WC_EDIT, CS_DBLCLKS, &MakeEdit);
    RegisterControlClass(WC_LISTBOX, CS_DBLCLKS, &MakeListBox);
    RegisterControlClass(WC_COMBOBOX, CS_DBLCLKS, &MakeComboBox);
    RegisterControlClass(WC_SCROLLBAR, CS_DBLCLKS, &MakeScrollBar);
    RegisterControlClass(TRACKBAR_CLASS, 0, &MakeTrackbar);
}

} // namespace kelvo::desktop
