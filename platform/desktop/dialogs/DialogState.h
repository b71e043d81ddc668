#pragma once
// What the layer keeps with each dialog besides the window: its font and units, its default button.
// UI thread only.

#include "platform/desktop/dialog_units.h"
#include "platform/desktop/dialogs.h"

#include <vector>

namespace kelvo::desktop {

inline constexpr char kSystemDialogClass[] = "#32770";

struct DialogState {
    HFONT font = nullptr; ///< of the template; deleted with the dialog
    platform::DialogUnits units;
    int default_id = 0; ///< of the button that Enter presses; 0 for none
};

/// @return null for a window that is no dialog; else valid until it is forgotten.
DialogState* DialogStateOf(HWND dialog);
void AddDialogState(HWND dialog, DialogState state);
/// Deletes its font, too.
void ForgetDialogState(HWND dialog);

/// The controls of a dialog in the order of their creation, those of its pages in the place of the
/// page; hidden and disabled ones included.
std::vector<HWND> ControlsOf(HWND dialog);
bool IsUsable(HWND control); ///< visible and not disabled
LRESULT DialogCode(HWND control);

/// Gives a control of the dialog the keyboard: an edit control's text is selected, and a push
/// button becomes the default one as long as it keeps the keyboard.
void FocusControl(HWND dialog, HWND control);
/// The control that had the keyboard last, else the first that Tab stops at, gets it.
void RestoreFocus(HWND dialog);
/// Sends the command of a button of this number, unless it is disabled.
void PressById(HWND dialog, int id);

} // namespace kelvo::desktop
