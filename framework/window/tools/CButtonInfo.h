#pragma once
// What a tool window keeps of one of its buttons.

#include "framework/base/CObj.h"
#include "framework/window/tools/BitmapButton.h"

#include <cstdint>
#include <memory>

namespace kelvo {

/// Owns the button's window, and its images unless they are the caller's; images go after the
/// window that shows them.
class CButtonInfo final : public CObj {
public:
    CButtonInfo();
    CButtonInfo(const CButtonInfo&) = delete;
    CButtonInfo& operator=(const CButtonInfo&) = delete;
    ~CButtonInfo() override;

    std::unique_ptr<BitmapButton> button;
    HBITMAP normal_image = nullptr;
    HBITMAP pressed_image = nullptr;
    HBITMAP disabled_image = nullptr;
    std::int32_t group = 0;
    BYTE not_owned = 0; ///< 1: the images belong to the caller
};

} // namespace kelvo
