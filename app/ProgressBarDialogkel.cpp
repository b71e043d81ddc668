#include "app/ProgressBarDialogkel.h"

#include "framework/base/ProgressDisplay.h"

#include <memory>
#include <thread>

namespace kelvo {
namespace {

constexpr char kTemplate[] = "PROGRESSBARDIALOGKEL";

class ShownProgress : public ProgressDisplay {
public:
    ShownProgress(CWin* owner, const CString& title) { dialog_.Start(owner, title); }
    bool Update(std::int32_t current, std::int32_t total) override {
        return dialog_.Update(current, total);
    }
    void Close() override {
        if (dialog_.HasWindow()) dialog_.Close();
    }

private:
    ProgressBarDialogkel dialog_;
};

} // namespace

ProgressBarDialogkel::ProgressBarDialogkel() : ProgressBarDialoglum(kTemplate) {}

ProgressDialogs::ProgressDialogs(CWin& owner) {
    SetProgressDisplayFactory([&owner, ui_thread = std::this_thread::get_id()](
                                  const CString& title) -> std::unique_ptr<ProgressDisplay> {
        if (std::this_thread::get_id() != ui_thread) return nullptr;
        return std::make_unique<ShownProgress>(owner.HasWindow() ? &owner : nullptr, title);
    });
}

ProgressDialogs::~ProgressDialogs() {
    SetProgressDisplayFactory({});
}

} // namespace kelvo
