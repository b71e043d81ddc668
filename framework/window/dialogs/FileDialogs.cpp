#include "framework/window/dialogs/FileDialogs.h"

#include "framework/base/ChFile.h"
#include "framework/base/FilePaths.h"
#include "framework/base/XLanguageInfoClass.h"
#include "framework/window/CDialog.h"
#include "framework/window/LUM.h"
#include "platform/base/file_names.h"
#include "platform/base/files.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/common_dialogs.h"
#include "platform/desktop/dialogs.h"

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo {

/// The hook of the templated dialogs: binds the dialog object to the template's dialog and hands it
/// the messages.
UINT_PTR FileDialogHook(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

namespace {

struct NumberedText {
    std::int32_t id;
    const char* italian;
};
constexpr char kAllFilesFilter[] = "Tutti i file (*.*)|*.*|";
constexpr NumberedText kAllFiles{1069, kAllFilesFilter};
constexpr NumberedText kAllFilesBesideTemplate{1083, kAllFilesFilter};
constexpr NumberedText kOverwriteBegin{1066, "Sovrascrivere il file:\r\n\r\n["};
constexpr NumberedText kOverwriteEnd{1067, "]\r\n\r\nattualmente presente ?"};
constexpr NumberedText kOverwriteCaption{1068, "Nome file già presente!"};

constexpr DWORD kPlainFlags = OFN_PATHMUSTEXIST | OFN_NOTESTFILECREATE;
constexpr DWORD kTemplateFlags =
    OFN_EXPLORER | OFN_ENABLEHOOK | OFN_HIDEREADONLY | OFN_ENABLETEMPLATE;
/// Of a path in the file system, the closing zero included.
constexpr std::size_t kPathRoom = 4096;
constexpr std::size_t kTitleRoom = 256;

const char* Translated(const NumberedText& text) {
    return XLanguageInfoClass::Translate(text.id, text.italian);
}

// ---- what both forms ask ----

/// The request to the system with the texts and buffers that it points at.
class FileRequest {
public:
    FileRequest(const CWin* owner, const FileDialogTexts& texts, const NumberedText& all_files,
                const CString& directory)
        : filter_(texts.filter.View()), title_(texts.title.View()), directory_(directory.View()) {
        filter_ += Translated(all_files);
        std::ranges::replace(filter_, '|', '\0'); // std::string closes the list with one more
        request_.lStructSize = sizeof request_;
        request_.hwndOwner = owner != nullptr ? owner->Window() : nullptr;
        request_.hInstance = lum.Instance();
        request_.lpstrFilter = filter_.data();
        request_.nFilterIndex = 1;
        request_.lpstrFile = path_.data();
        request_.nMaxFile = static_cast<DWORD>(path_.size());
        request_.lpstrFileTitle = file_title_.data();
        request_.nMaxFileTitle = static_cast<DWORD>(file_title_.size());
        request_.lpstrInitialDir = directory_.c_str();
        request_.lpstrTitle = title_.c_str();
        request_.Flags = kPlainFlags;
    }
    FileRequest(const FileRequest&) = delete;
    FileRequest& operator=(const FileRequest&) = delete;

    OPENFILENAMEA& Request() { return request_; }
    void StartWith(const CString& file_name) {
        const std::size_t length = file_name.View().copy(path_.data(), path_.size() - 1);
        path_[length] = '\0';
    }
    CString Run(FileDialogKind kind) {
        const BOOL chosen = kind == FileDialogKind::Open ? GetOpenFileNameA(&request_)
                                                         : GetSaveFileNameA(&request_);
        return chosen != FALSE ? CString(path_.data()) : CString();
    }

private:
    std::string filter_;
    std::string title_;
    std::string directory_;
    std::vector<char> path_ = std::vector<char>(kPathRoom);
    std::vector<char> file_title_ = std::vector<char>(kTitleRoom);
    OPENFILENAMEA request_{};
};

CString DirectoryOrProgram(const CString& directory) {
    return directory.IsEmpty() ? ProgramDirectory() : directory;
}

CString WithExtension(const CString& title, const CString& extension) {
    CString name = title;
    name += CString(".");
    name += extension;
    return name;
}

/// A name that is saved has an extension, in the letters that the caller writes it in.
CString Completed(const CString& path, const CString& default_extension) {
    if (path.IsEmpty() || default_extension.IsEmpty()) return path;
    const CString extension = PathExtension(path);
    if (extension.IsEmpty()) return WithExtension(path, default_extension);
    const auto equal_letter = [](char a, char b) {
        const auto small = [](char letter) {
            return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
        };
        return small(a) == small(b);
    };
    if (!std::ranges::equal(extension.View(), default_extension.View(), equal_letter)) return path;
    CString completed(path.View().substr(0, path.View().size() - extension.View().size()));
    completed += default_extension;
    return completed;
}

// ---- the one templated dialog ----

struct TemplatedDialog {
    bool is_open = false;
    bool saves = false;
    CDialog* object = nullptr; ///< from its WM_INITDIALOG on
};
TemplatedDialog templated; // UI thread only

/// The hook, taken for one dialog; the next one finds it free again.
class HookInUse {
public:
    explicit HookInUse(FileDialogKind kind) {
        templated = {.is_open = true, .saves = kind == FileDialogKind::Save};
    }
    HookInUse(const HookInUse&) = delete;
    HookInUse& operator=(const HookInUse&) = delete;
    ~HookInUse() { templated = {}; }
};

CString FilterOf(const FileChoice& choice) {
    CString filter = choice.description;
    filter += CString("|*.");
    filter += choice.extension;
    filter += CString("|");
    return filter;
}

/// A file in other letters is found under that name, too, but another one will be made beside it.
bool WouldBeOverwritten(const CString& path) {
    const HFILE existing = _lopen(path.Text(), OF_READ);
    if (existing == HFILE_ERROR) return false;
    _lclose(existing);
    return platform::ExistingFileName(path.View()) == platform::NewFileName(path.View());
}

bool MayOverwrite(const CWin* owner, const CString& path, const CString& file_name) {
    if (!WouldBeOverwritten(path)) return true;
    CString question(Translated(kOverwriteBegin));
    question += file_name;
    question += CString(Translated(kOverwriteEnd));
    return MessageBoxA(owner != nullptr ? owner->Window() : nullptr, question.Text(),
                       Translated(kOverwriteCaption), MB_YESNO | MB_ICONEXCLAMATION) == IDYES;
}

} // namespace

UINT_PTR FileDialogHook(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        const auto& request = *reinterpret_cast<const OPENFILENAMEA*>(lparam);
        templated.object = reinterpret_cast<CDialog*>(request.lCustData);
        templated.object->SetWindow(dialog);
    }
    if (templated.object == nullptr) return 0;
    CWin& object = *templated.object;
    if (message == WM_INITDIALOG) object.no_window_ = 0;
    object.message_result_ = 1;
    if (!object.HandleMessage(message, wparam, lparam)) return 0;
    return static_cast<UINT_PTR>(object.message_result_);
}

CString ChooseFile(CWin* owner, FileDialogKind kind, const FileDialogTexts& texts,
                   const CString& initial_directory) {
    return FileRequest(owner, texts, kAllFiles, DirectoryOrProgram(initial_directory)).Run(kind);
}

CString ChooseFileWithTemplate(CWin* owner, FileDialogKind kind, const FileDialogTexts& texts,
                               const CString& default_extension, const CString& initial_path,
                               CDialog& dialog) {
    if (templated.is_open) return {};
    const HookInUse hook(kind);
    FileRequest asked(owner, texts, kAllFilesBesideTemplate,
                      DirectoryOrProgram(PathDirectory(initial_path)));
    asked.StartWith(PathFileName(initial_path));
    OPENFILENAMEA& request = asked.Request();
    request.Flags |= kTemplateFlags;
    request.lpTemplateName = dialog.ResourceName().Text();
    request.lpfnHook = &FileDialogHook;
    request.lCustData = reinterpret_cast<LPARAM>(&dialog);
    const CString path = asked.Run(kind);
    return kind == FileDialogKind::Save ? Completed(path, default_extension) : path;
}

bool IsTemplatedDialogSaving() {
    return templated.saves;
}

bool OpenWithDialog(ChFile& file, CWin* owner, const FileChoice& choice) {
    const CString path =
        ChooseFile(owner, FileDialogKind::Open, {.filter = FilterOf(choice), .title = choice.title},
                   choice.initial_directory);
    return !path.IsEmpty() && file.OpenReadWriteOrCreate(path);
}

bool SaveAsWithDialog(ChFile& file, CWin* owner, const FileChoice& choice) {
    const CString chosen =
        ChooseFile(owner, FileDialogKind::Save, {.filter = FilterOf(choice), .title = choice.title},
                   choice.initial_directory);
    if (chosen.IsEmpty()) return false;
    const CString file_name = WithExtension(PathTitle(chosen), choice.extension);
    CString path = PathDirectory(chosen);
    path += file_name;
    return MayOverwrite(owner, path, file_name) && file.CreateFresh(path);
}

} // namespace kelvo
