#pragma once
// The file dialog beside a template's controls: a window that holds the toolkit's dialog and the
// template's, and reports to the hook. UI thread only.

#include "platform/desktop/common_dialogs.h"
#include "platform/desktop/dialogs/FileChooser.h"

#include <QEventLoop>
#include <QPointer>

namespace kelvo::desktop {

class TemplatedFileWindow {
public:
    TemplatedFileWindow(OPENFILENAMEA& request, const FileChooser::Settings& settings);
    TemplatedFileWindow(const TemplatedFileWindow&) = delete;
    TemplatedFileWindow& operator=(const TemplatedFileWindow&) = delete;
    ~TemplatedFileWindow();

    /// Makes the window and what is in it. @return 0, or a CDERR_ number
    DWORD Create();
    /// Shows it until it is answered. @return whether a name was chosen
    bool Run();
    const FileChooser& Chooser() const { return *chooser_; }

private:
    static LRESULT WindowProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    static INT_PTR TemplateProcedure(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

    LRESULT OnMessage(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT OnGetFilePath(WPARAM capacity, LPARAM buffer) const;
    bool CreateWindowFor(const QString& title);
    bool CreateTemplate(const void* dialog_template);
    void CreateChooser(const FileChooser::Settings& settings);
    void TakeMeasures();
    void SizeAndPlace();
    void LayOut();
    UINT_PTR Notify(UINT code);
    void End(bool chosen);

    OPENFILENAMEA& request_;
    const FileChooser::Settings settings_;
    HWND window_ = nullptr;
    HWND dialog_ = nullptr; ///< the template's
    QPointer<FileChooser> chooser_;
    QEventLoop loop_;
    bool chosen_ = false;
    // In the template, in pixels.
    SIZE template_size_{};
    SIZE placeholder_end_{}; ///< where the standard part ends
};

} // namespace kelvo::desktop
