#include "framework/base/ProgressDisplay.h"

#include <utility>

namespace kelvo {
namespace {

class SilentProgress : public ProgressDisplay {
public:
    bool Update(std::int32_t /*current*/, std::int32_t /*total*/) override { return true; }
    void Close() override {}
};

ProgressDisplayFactory& InstalledFactory() {
    static ProgressDisplayFactory factory;
    return factory;
}

} // namespace

ProgressDisplay::~ProgressDisplay() = default;

std::unique_ptr<ProgressDisplay> ShowProgress(const CString& title) {
    std::unique_ptr<ProgressDisplay> display;
    if (InstalledFactory()) display = InstalledFactory()(title);
    return display ? std::move(display) : std::make_unique<SilentProgress>();
}

void SetProgressDisplayFactory(ProgressDisplayFactory factory) {
    InstalledFactory() = std::move(factory);
}

} // namespace kelvo
