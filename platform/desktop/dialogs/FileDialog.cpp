// The calls that let a file be chosen: what was asked is checked and handed to the plain or the
// templated form, and the answer is brought into the caller's buffers.

#include "platform/desktop/common_dialogs.h"
#include "platform/desktop/dialogs/DialogOwner.h"
#include "platform/desktop/dialogs/FileChooser.h"
#include "platform/desktop/dialogs/TemplatedFileWindow.h"

#include <algorithm>
#include <cstring>
#include <optional>

namespace kelvo::desktop {

namespace {

constexpr std::size_t kLongestPath = 0xFFFF; // offsets in it are 16 bits wide

DWORD last_failure = 0; // UI thread only

BOOL Fail(DWORD reason) {
    last_failure = reason;
    return FALSE;
}

bool IsSound(const OPENFILENAMEA& request) {
    const bool has_hook = (request.Flags & OFN_ENABLEHOOK) != 0;
    const bool has_template = (request.Flags & OFN_ENABLETEMPLATE) != 0;
    return request.lpstrFile != nullptr && request.nMaxFile > 0 &&
           request.lpstrCustomFilter == nullptr && request.lpstrDefExt == nullptr &&
           (!has_hook || (request.lpfnHook != nullptr && has_template)) &&
           (!has_template || request.lpTemplateName != nullptr);
}

FileChooser::Settings SettingsFor(const OPENFILENAMEA& request, QFileDialog::AcceptMode mode) {
    FileChooser::Settings settings;
    settings.mode = mode;
    if (request.lpstrTitle != nullptr) settings.title = QString::fromUtf8(request.lpstrTitle);
    settings.filters = ParseFilters(request.lpstrFilter);
    settings.filter = std::max<DWORD>(request.nFilterIndex, 1) - 1;
    if (request.lpstrInitialDir != nullptr) settings.folder = request.lpstrInitialDir;
    settings.file_name.assign(request.lpstrFile, ::strnlen(request.lpstrFile, request.nMaxFile));
    settings.folder_must_exist = (request.Flags & OFN_PATHMUSTEXIST) != 0;
    return settings;
}

void CopyCut(const std::string& text, LPSTR buffer, DWORD capacity) {
    if (buffer == nullptr || capacity == 0) return;
    const std::size_t length = std::min<std::size_t>(text.size(), capacity - 1);
    std::memcpy(buffer, text.data(), length);
    buffer[length] = '\0';
}

BOOL FailForWantOfRoom(OPENFILENAMEA& request, std::size_t needed) {
    const auto room = static_cast<WORD>(std::min<std::size_t>(needed, 0xFFFF));
    if (request.nMaxFile >= sizeof room) std::memcpy(request.lpstrFile, &room, sizeof room);
    return Fail(FNERR_BUFFERTOOSMALL);
}

BOOL GiveBack(OPENFILENAMEA& request, const FileChooser& chooser) {
    const std::string& path = chooser.Chosen();
    if (path.size() + 1 > request.nMaxFile || path.size() > kLongestPath) {
        return FailForWantOfRoom(request, path.size() + 1);
    }
    CopyCut(path, request.lpstrFile, request.nMaxFile);
    const std::size_t name = path.rfind('/') + 1; // 0 without a separator
    const std::size_t dot = path.rfind('.');
    const bool has_extension = dot != std::string::npos && dot > name;
    request.nFileOffset = static_cast<WORD>(name);
    request.nFileExtension = static_cast<WORD>(has_extension ? dot + 1 : path.size());
    CopyCut(path.substr(name), request.lpstrFileTitle, request.nMaxFileTitle);
    request.nFilterIndex = static_cast<DWORD>(chooser.SelectedFilter() + 1);
    return TRUE;
}

BOOL RunTemplated(OPENFILENAMEA& request, const FileChooser::Settings& settings) {
    TemplatedFileWindow window(request, settings);
    if (const DWORD failure = window.Create(); failure != 0) return Fail(failure);
    return window.Run() ? GiveBack(request, window.Chooser()) : FALSE;
}

BOOL RunPlain(OPENFILENAMEA& request, const FileChooser::Settings& settings) {
    FileChooser chooser(settings);
    MakeModalFor(chooser, request.hwndOwner);
    return chooser.exec() == QDialog::Accepted ? GiveBack(request, chooser) : FALSE;
}

BOOL Choose(OPENFILENAMEA* request, QFileDialog::AcceptMode mode) {
    if (!CanShowDialogs()) return FALSE;
    last_failure = 0;
    if (request == nullptr) return Fail(CDERR_INITIALIZATION);
    if (request->lStructSize != sizeof *request) return Fail(CDERR_STRUCTSIZE);
    if (!IsSound(*request)) return Fail(CDERR_INITIALIZATION);
    const FileChooser::Settings settings = SettingsFor(*request, mode);
    return (request->Flags & OFN_ENABLETEMPLATE) != 0 ? RunTemplated(*request, settings)
                                                      : RunPlain(*request, settings);
}

} // namespace

} // namespace kelvo::desktop

BOOL GetOpenFileNameA(OPENFILENAMEA* request) {
    return kelvo::desktop::Choose(request, QFileDialog::AcceptOpen);
}

BOOL GetSaveFileNameA(OPENFILENAMEA* request) {
    return kelvo::desktop::Choose(request, QFileDialog::AcceptSave);
}

DWORD CommDlgExtendedError() {
    return kelvo::desktop::last_failure;
}
