#pragma once
// The rich-text control: its classes, which exist only while their library is loaded, and the
// messages that stream formatted documents in and out. It answers the plain messages of an edit
// control, too (WM_SETTEXT, WM_GETTEXT, EM_SETREADONLY ... in controls.h).

#include "platform/base/types.h"

/// Loads a library by its name, in any case. The only one is "RICHED32.DLL": from then on windows
/// of the classes "RICHEDIT" and "RichEdit20A" can be made. UI thread only.
/// @return 0 for any other name.
HMODULE LoadLibraryA(LPCSTR name);

/// Undoes one LoadLibraryA; with the last one the classes go, while controls that exist live on.
/// @return FALSE for a handle that LoadLibraryA did not give, or that was freed as often already.
BOOL FreeLibrary(HMODULE library);

/// wParam: how many characters a person may enter (32767 at first); 0: as many as there can be.
/// Texts that are set or streamed in are not cut.
inline constexpr UINT EM_EXLIMITTEXT = 0x00C5;
/// lParam: the background colour, where wParam is 0; else the desktop's own.
/// @return the colour before.
inline constexpr UINT EM_SETBKGNDCOLOR = 0x0443;
/// Replaces the content. wParam: SF_RTF or SF_TEXT; lParam: an EDITSTREAM. SF_TEXT is UTF-8.
/// @return the characters that were read.
inline constexpr UINT EM_STREAMIN = 0x0449;
/// Hands the whole content out. wParam and lParam as with EM_STREAMIN.
/// @return the characters that were written.
inline constexpr UINT EM_STREAMOUT = 0x044A;

inline constexpr WPARAM SF_TEXT = 0x0001;
inline constexpr WPARAM SF_RTF = 0x0002;

/// Gives or takes one piece of a stream.
/// @param cookie  EDITSTREAM::dwCookie
/// @param buffer  to fill (in) or to take from (out)
/// @param count   bytes of the buffer, at least 1
/// @param done    bytes given or taken; 0 ends the stream
/// @return 0; anything else ends the stream, goes to EDITSTREAM::dwError, and discards what this
///         very call gave.
using EDITSTREAMCALLBACK = DWORD (*)(DWORD_PTR cookie, BYTE* buffer, LONG count, LONG* done);

struct EDITSTREAM {
    DWORD_PTR dwCookie;
    /// Written by the control: 0, or what the callback returned when it stopped the stream;
    /// one of the numbers below when what came in is of no use, and the content stayed.
    DWORD dwError;
    EDITSTREAMCALLBACK pfnCallback;
};

inline constexpr DWORD kEditStreamBadFormat = 0xFFFFFFF0; ///< came as RTF and is none
inline constexpr DWORD kEditStreamTooLong = 0xFFFFFFF1;   ///< more than 64 MB
