#pragma once
// Choosing a file's name in a dialog: the framework's open and save dialogs, plain or with a
// template whose dialog object takes part, and what ChFile does with the answer. Free functions, so
// that ChFile stays usable where there is no window. UI thread only.

#include "framework/base/CString.h"
#include "platform/base/types.h"

namespace kelvo {

class CDialog;
class CWin;
class ChFile;

enum class FileDialogKind : bool { Save, Open };

/// What a file dialog shows.
struct FileDialogTexts {
    /// Pairs of a description and its patterns, each text closed by "|"; the pair for all files is
    /// added behind them.
    CString filter;
    CString title;
};

/// @param owner              inert meanwhile; may be null
/// @param initial_directory  empty for the program's
/// @return the full path that was chosen; empty when cancelled
CString ChooseFile(CWin* owner, FileDialogKind kind, const FileDialogTexts& texts,
                   const CString& initial_directory);

/// The same dialog beside the controls of a template, the dialog object's resource. The object
/// sees the messages of that part; the selection is reported to it by WM_NOTIFY (CDN_SELCHANGE and
/// its kind). One such dialog at a time in the whole program: a second gives the empty text.
/// @param default_extension  given to a saved name without one; may be empty
/// @param initial_path       a file to start with, or a directory (with its separator at the end);
///                           empty for the program's directory
CString ChooseFileWithTemplate(CWin* owner, FileDialogKind kind, const FileDialogTexts& texts,
                               const CString& default_extension, const CString& initial_path,
                               CDialog& dialog);
/// Whether the templated dialog that is open saves; false when none is open.
bool IsTemplatedDialogSaving();

/// Which files a dialog of ChFile offers, and how it is headed.
struct FileChoice {
    CString description;
    CString extension; ///< without the "."
    CString title;
    CString initial_directory; ///< empty for the program's
};

/// Lets a file be chosen and opens it for reading and writing, making it where it does not exist.
/// @return false when cancelled, when the file is open already or when it cannot be opened
[[nodiscard]] bool OpenWithDialog(ChFile& file, CWin* owner, const FileChoice& choice);

/// Lets a name be chosen, gives it the extension, asks before an existing file is overwritten, and
/// makes the file.
/// @return true when the file is open under its new name
[[nodiscard]] bool SaveAsWithDialog(ChFile& file, CWin* owner, const FileChoice& choice);

} // namespace kelvo
