#pragma once
// The kernel: the one object that holds the module handles and the default resources, registers
// the window classes and runs the program's message loops.

#include "framework/base/CObj.h"
#include "framework/window/CWin.h"
#include "platform/desktop/windows.h"

#include <array>
#include <cstddef>

namespace kelvo {

class CString;

class LUM : public CObj {
public:
    LUM();
    LUM(const LUM&) = delete;
    LUM& operator=(const LUM&) = delete;
    /// Deletes the ten pan and zoom bitmaps.
    ~LUM() override;

    /// Starts the framework on the program's module: default bitmaps and cursors (one that is
    /// missing stays 0), icon, desktop window, window classes.
    /// @return 1 when the dialog class was registered plus 2 when the base class was
    int StartDefaultKernel(HINSTANCE instance, LPCSTR icon_name);
    /// The same without bitmaps, cursors, icon and resource module.
    int Start(HINSTANCE instance);
    /// Takes templates and default bitmaps from another module.
    void SetDllIst(HMODULE module);
    /// The module that dialog templates and default bitmaps are loaded from; 0 until set.
    HMODULE ResourceIst() const { return resource_module_; }
    /// The program's module; 0 until started.
    HINSTANCE Instance() const { return instance_; }
    /// Stands for the desktop: the parent of last resort.
    CWin& Desktop() { return desktop_; }

    /// Registers a class whose windows are CWin objects. A background of 0 becomes the window
    /// colour, a cursor of 0 the arrow, an icon of 0 the standard icon.
    /// @return the class's atom; 0 on failure, after a box when the name is missing
    ATOM RegisterNewClass(HINSTANCE instance, LPCSTR menu_name, LPCSTR class_name,
                          HBRUSH background, UINT class_style, HCURSOR cursor, HICON icon);
    /// The same for dialog windows: no icon, no cursor, no menu.
    ATOM RegisterNewDialogClass(HINSTANCE instance, LPCSTR menu_name, LPCSTR class_name,
                                HBRUSH background, UINT class_style);

    /// Runs until WM_QUIT. @return the wParam of WM_QUIT
    WPARAM MessageLoop();
    /// The same, but the keys of an accelerator table become commands of the window first. A table
    /// that is missing is reported in a box, and the loop runs without.
    WPARAM AcceleratorLoop(const CWin& window, LPCSTR table_name);
    /// Dispatches what is queued and returns 1 without waiting; long operations call it to keep
    /// windows painted.
    int ProcessMessages();

    /// One of the sixteen standard colours; any other index gives 0.
    static COLORREF IndexColor(int index);

    /// Shows a text in a small window above all others; once it is there, the text is replaced.
    void ShowInformation(const CString& text);
    /// Takes the window with the text away.
    void HideInformation();
    /// 0 when none is shown.
    HWND InformationWindow() const { return information_window_; }

    static constexpr std::size_t kBitmapCount = 11;
    static constexpr std::size_t kCursorCount = 4;
    /// In the order of their names in the resources: pan, zoom in, out, window and custom, each on
    /// and off, then the general picture. 0 when the module has none.
    HBITMAP DefaultBitmap(std::size_t number) const { return bitmaps_[number]; }
    /// Zoom window, custom, pan, box. 0 when the module has none.
    HCURSOR DefaultCursor(std::size_t number) const { return cursors_[number]; }

private:
    void LoadDefaults(HMODULE module);
    int RegisterDefaultClasses(HICON icon);

    CWin desktop_;
    std::array<HBITMAP, kBitmapCount> bitmaps_{};
    std::array<HCURSOR, kCursorCount> cursors_{};
    HINSTANCE instance_ = nullptr;
    HMODULE resource_module_ = nullptr;
    HWND information_window_ = nullptr;
};

/// The kernel, constructed before the entry routine and destroyed after it.
extern LUM lum;

} // namespace kelvo
