#pragma once
// The dialog that runs a rewrite and shows how far it is: a bar, elapsed, total and remaining time,
// the size that the file will have, and a button that stops it. The rewrite itself, and that a
// stopped one leaves the file as it was, is the container's affair.

#include "container/ZFilekel.h"
#include "framework/base/BKOperation.h"
#include "framework/base/CString.h"
#include "framework/window/CDialog.h"
#include "framework/window/CProgressBar.h"

#include <cstdint>

namespace kelvo {

class RecompressDlgkel : public CDialog, public ProgressOwner {
public:
    /// For a file that is not open, which is closed again afterwards.
    /// @param parameters  its user header's bytes outlive the dialog
    /// @param selector    which track of a film (.kva): 'A' the sound, 'V' the picture
    RecompressDlgkel(const CString& file_name, const RewriteParameters& parameters,
                     char selector = 'A');
    /// For an open container, which outlives the dialog and is open again afterwards.
    RecompressDlgkel(ZFilekel& container, const RewriteParameters& parameters);

    /// Runs the rewrite in front of the owner.
    /// @return true when the file was rewritten; false when it was stopped or failed, after a box
    bool Run(CWin* owner);

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    int ProgressNotify(int code, int done, const RewriteInformation& info) override;

protected:
    /// Work of a derived dialog beside the rewrite; the dialog does not end while it runs.
    BKOperation<RecompressDlgkel>& Background() { return background_; }
    /// Set once the person has asked to stop, or the dialog went.
    bool IsStopped() const { return stopped_; }

private:
    bool OnInitialise();
    bool OnCommand(int command);
    void OnRecompress();
    void OnStop();
    bool Rewrite();
    void BeginTimes(int done, const RewriteInformation& info);
    void ShowFigures(int done, DWORD elapsed, const RewriteInformation& info) const;
    void LetWindowsAnswer(DWORD now);

    CString file_name_;
    char selector_ = 'A';
    ZFilekel* container_ = nullptr; ///< none: the file of that name
    const RewriteParameters parameters_;

    CProgressBar bar_;
    bool stopped_ = false;
    bool rewriting_ = false;
    bool is_first_ = true; ///< no notification has come yet
    DWORD start_ms_ = 0;
    DWORD shown_ms_ = 0;    ///< when the figures were set last
    DWORD answered_ms_ = 0; ///< when messages were dispatched last
    BKOperation<RecompressDlgkel> background_{this};
};

} // namespace kelvo
