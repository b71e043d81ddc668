// Loading the library of the rich-text control: its classes exist while it is loaded.

#include "platform/base/errors.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/rich_text.h"
#include "platform/desktop/rich_text/RichEdit.h"
#include "platform/desktop/windows.h"

#include <QByteArray>

namespace {

constexpr const char* kLibrary = "RICHED32.DLL";
constexpr const char* kClasses[] = {"RICHEDIT", "RichEdit20A"};

/// Stands for the library; only its address counts.
int library_object = 0;
int times_loaded = 0; // UI thread only

HMODULE Library() {
    return reinterpret_cast<HMODULE>(&library_object);
}

} // namespace

HMODULE LoadLibraryA(LPCSTR name) {
    if (name == nullptr || qstricmp(name, kLibrary) != 0 || !kelvo::desktop::OnUiThread()) {
        ::SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    if (times_loaded++ == 0) {
        for (const char* each : kClasses) {
            kelvo::desktop::RegisterControlClass(each, CS_DBLCLKS, &kelvo::desktop::MakeRichEdit);
        }
    }
    return Library();
}

BOOL FreeLibrary(HMODULE library) {
    if (library != Library() || times_loaded == 0 || !kelvo::desktop::OnUiThread()) {
        ::SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (--times_loaded == 0) {
        // A class of which a window lives stays.
        for (const char* each : kClasses)
            ::UnregisterClassA(each, nullptr);
    }
    return TRUE;
}
