#pragma once
// The main window's button bar: its buttons, and which of them are shown while something plays.
// What the commands do is the main window's affair.

#include "app/Commands.h"
#include "framework/window/tools/ToolWinlum.h"

#include <cstdint>

namespace kelvo {

/// Whether the pause button goes, too: fast playback cannot be paused.
enum class WithPause : bool { No, Yes };

class TransportBar : public ToolWinlum {
public:
    /// Makes the bar and its buttons in the top left corner of a window, which gets the commands.
    void CreateIn(CWin& parent);

    /// While something plays: only Open, Stop and (without pause) Pause stay.
    void SetTransportBusy(WithPause with_pause);
    /// All buttons are back, the pause button is up.
    void RestoreTransport();
    /// The same, and every button is up.
    void ResetTransport();

    /// Puts a button up again, for a command that cannot be carried out.
    void Raise(Command command);
    /// Shows what a click on the button would, for a command that came without one: the states of
    /// the buttons decide what later clicks do.
    void ShowClick(Command command);
    /// Whether a button is down.
    bool IsDown(Command command) const;

private:
    void SetDown(Command command, bool down);
};

} // namespace kelvo
