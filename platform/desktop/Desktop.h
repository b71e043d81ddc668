#pragma once
// Start and end of the desktop: the application object behind all windows.

namespace kelvo::platform {

/// Begins the desktop on the calling thread, which becomes the UI thread; message boxes are real
/// from here on. Unless the user chose a platform (QT_QPA_PLATFORM), xcb is tried first, then
/// wayland, then off screen. Numbers keep the C locale's form. The second call of a process is
/// refused.
/// @param program_name  shown by the window system; nothing of the command line is interpreted
/// @return whether the desktop could be started.
[[nodiscard]] bool StartDesktop(const char* program_name);

/// Destroys what windows, menus and timers are left and ends the desktop. Handles are dead
/// afterwards, calls with them fail; nothing happens when the desktop has not been started.
void EndDesktop();

/// Whether a person can see the windows: false off screen, be it by choice or for want of a
/// display.
bool HasDisplay();

/// Whether the user chose the platform; boxes are then real even off screen.
bool PlatformChosenByUser();

} // namespace kelvo::platform
