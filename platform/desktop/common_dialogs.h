#pragma once
// The system's ready-made dialogs: choosing a file to open or to save, and choosing a font. They
// are the toolkit's own; while one is open posted messages go on being dispatched, so sound and
// clocks do not stop. UI thread only.

#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"

// ---- choosing a file ----

using LPOFNHOOKPROC = UINT_PTR (*)(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

inline constexpr DWORD OFN_HIDEREADONLY = 0x00000004; ///< there never is a read-only box
inline constexpr DWORD OFN_ENABLEHOOK = 0x00000020;
inline constexpr DWORD OFN_ENABLETEMPLATE = 0x00000040;
/// A name in a folder that does not exist is refused; the dialog says so and stays open.
inline constexpr DWORD OFN_PATHMUSTEXIST = 0x00000800;
inline constexpr DWORD OFN_NOTESTFILECREATE = 0x00010000; ///< no file is ever made to try a name
inline constexpr DWORD OFN_EXPLORER = 0x00080000;

/// File names are bytes, whatever they may be. Both separators are understood; names come out as
/// the file system has them.
struct OPENFILENAMEA {
    DWORD lStructSize;   ///< sizeof(OPENFILENAMEA); anything else is refused
    HWND hwndOwner;      ///< inert while the dialog is open; null for none
    HINSTANCE hInstance; ///< with OFN_ENABLETEMPLATE, whose resources hold the template
    /// Pairs of a description and its patterns ("*.kva;*.kvf"), each text with a closing zero byte,
    /// behind the last pair one more; letters' case is not looked at. Null for none.
    LPCSTR lpstrFilter;
    LPSTR lpstrCustomFilter; ///< must be null
    DWORD nMaxCustFilter;
    DWORD nFilterIndex; ///< in and out: the pair that is chosen, counted from 1
    /// In: the name that stands there at first, with or without a folder. Out: the full path.
    LPSTR lpstrFile;
    DWORD nMaxFile; ///< room in lpstrFile, the closing zero included
    /// Out: the name without its folder, cut at the room that there is. May be null.
    LPSTR lpstrFileTitle;
    DWORD nMaxFileTitle;
    LPCSTR lpstrInitialDir; ///< where the dialog starts; null, empty or missing: the working folder
    LPCSTR lpstrTitle;      ///< null: "Apri" or "Salva con nome"
    DWORD Flags;
    WORD nFileOffset;       ///< out: where the name begins in lpstrFile
    WORD nFileExtension;    ///< out: where the extension begins; behind the name when there is none
    LPCSTR lpstrDefExt;     ///< must be null
    LPARAM lCustData;       ///< for the hook
    LPOFNHOOKPROC lpfnHook; ///< with OFN_ENABLEHOOK
    /// With OFN_ENABLETEMPLATE, a dialog template without a frame (WS_CHILD). Its control stc32 is
    /// where the standard part goes, which pushes away what lies right of it or below.
    LPCSTR lpTemplateName;
};

/// @return FALSE when cancelled (CommDlgExtendedError is then 0) and on failure.
BOOL GetOpenFileNameA(OPENFILENAMEA* request);
/// The same for a file to write; whether it exists is not asked.
BOOL GetSaveFileNameA(OPENFILENAMEA* request);

inline constexpr DWORD CDERR_STRUCTSIZE = 0x0001;
inline constexpr DWORD CDERR_INITIALIZATION = 0x0002;
inline constexpr DWORD CDERR_FINDRESFAILURE = 0x0006;
inline constexpr DWORD FNERR_BUFFERTOOSMALL = 0x3003; ///< lpstrFile begins with the room needed

/// Why the last of these dialogs failed; 0 for one that was answered or cancelled.
DWORD CommDlgExtendedError();

// ---- hook and template ----

/// A report of a dialog's part; lParam points at what begins with an NMHDR.
inline constexpr UINT WM_NOTIFY = 0x004E;
struct NMHDR {
    HWND hwndFrom; ///< the file dialog
    UINT_PTR idFrom;
    UINT code;
};

/// The template's placeholder of the standard part.
inline constexpr int stc32 = 0x045F;

/// What the hook gets with WM_NOTIFY. It also gets WM_INITDIALOG, with the OPENFILENAMEA in lParam,
/// and every other message of the template's dialog, whose parent is the file dialog.
struct OFNOTIFYA {
    NMHDR hdr;
    OPENFILENAMEA* lpOFN;
    LPSTR pszFile; ///< null
};
inline constexpr UINT CDN_INITDONE = static_cast<UINT>(-601);
inline constexpr UINT CDN_SELCHANGE = static_cast<UINT>(-602);
inline constexpr UINT CDN_FOLDERCHANGE = static_cast<UINT>(-603);
/// A name was chosen; a hook that returns nonzero keeps the dialog open.
inline constexpr UINT CDN_FILEOK = static_cast<UINT>(-606);

/// To the file dialog (the parent of the template's dialog): the full path of what is selected.
/// wParam is the room at lParam, the closing zero included.
/// @return the room needed, -1 when nothing is selected
inline constexpr UINT CDM_GETFILEPATH = WM_USER + 101;

// ---- choosing a font ----

inline constexpr DWORD CF_SCREENFONTS = 0x00000001;
inline constexpr DWORD CF_INITTOLOGFONTSTRUCT = 0x00000040; ///< starts from what lpLogFont says
inline constexpr WORD SCREEN_FONTTYPE = 0x2000;

struct CHOOSEFONTA {
    DWORD lStructSize; ///< sizeof(CHOOSEFONTA)
    HWND hwndOwner;
    LOGFONTA* lpLogFont; ///< in, and out when chosen
    int iPointSize;      ///< out: tenths of a point
    DWORD Flags;
    WORD nFontType; ///< out: SCREEN_FONTTYPE
};

/// @return FALSE when cancelled or refused.
BOOL ChooseFontA(CHOOSEFONTA* request);
