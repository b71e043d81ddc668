// SCROLLBAR: reports what the user wishes, and moves when the parent says so.

#include "platform/desktop/controls/StandardControls.h"

#include <QScrollBar>

#include <algorithm>
#include <climits>
#include <cstdint>
#include <optional>

namespace kelvo::desktop {

namespace {

// How far a page goes in a range of no pages.
constexpr int kPageWithoutOne = 10;

std::optional<int> CodeOfKey(WPARAM key) {
    switch (key) {
    case VK_LEFT:
    case VK_UP:
        return SB_LINEUP;
    case VK_RIGHT:
    case VK_DOWN:
        return SB_LINEDOWN;
    case VK_PRIOR:
        return SB_PAGEUP;
    case VK_NEXT:
        return SB_PAGEDOWN;
    case VK_HOME:
        return SB_TOP;
    case VK_END:
        return SB_BOTTOM;
    default:
        return std::nullopt;
    }
}

class ScrollBar final : public Control {
public:
    explicit ScrollBar(const ControlSetup& setup)
        : Control(setup), vertical_((setup.style & SBS_VERT) != 0) {
        bar_ = MakeWidget<QScrollBar>(vertical_ ? Qt::Vertical : Qt::Horizontal);
        Show();
        QObject::connect(bar_, &QScrollBar::actionTriggered, Connections(),
                         [this](int action) { OnAction(action); });
        QObject::connect(bar_, &QScrollBar::sliderReleased, Connections(), [this] {
            Tell(SB_THUMBPOSITION);
            End();
        });
    }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    UINT ColourMessage() const override { return WM_CTLCOLORSCROLLBAR; }

private:
    /// The last position: from there on the page shows the end.
    int Greatest() const {
        return static_cast<int>(
            std::max<std::int64_t>(least_, std::int64_t{most_} - std::max(0, page_ - 1)));
    }
    void OnAction(int action);
    void Tell(int code) {
        const bool with_position = code == SB_THUMBPOSITION || code == SB_THUMBTRACK;
        const int position = with_position ? tracked_ : 0;
        Report(vertical_ ? WM_VSCROLL : WM_HSCROLL,
               MAKEWPARAM(static_cast<DWORD_PTR>(code),
                          static_cast<DWORD_PTR>(static_cast<UINT>(position))));
    }
    /// The user has let go: the thumb goes where the parent wants it.
    void End() {
        Show();
        Tell(SB_ENDSCROLL);
    }
    void Show();
    LRESULT SetPosition(int position);
    LRESULT SetInfo(const SCROLLINFO& info);
    LRESULT GetInfo(SCROLLINFO& info) const;

    const bool vertical_;
    QPointer<QScrollBar> bar_;
    int least_ = 0;
    int most_ = 0;
    int page_ = 0;
    int position_ = 0;
    int tracked_ = 0; ///< where the user drags the thumb to
};

void ScrollBar::Show() {
    if (!bar_) return;
    bar_->setRange(least_, Greatest());
    bar_->setPageStep(page_ > 0 ? page_ : kPageWithoutOne);
    if (!bar_->isSliderDown()) bar_->setValue(position_);
}

void ScrollBar::OnAction(int action) {
    if (action == QAbstractSlider::SliderMove) {
        tracked_ = bar_->sliderPosition();
        if (bar_->isSliderDown()) return Tell(SB_THUMBTRACK);
        bar_->setSliderPosition(position_); // the wheel
        Tell(SB_THUMBPOSITION);
        return End();
    }
    // The bar itself would move once, and the parent once more.
    bar_->setSliderPosition(position_);
    switch (action) {
    case QAbstractSlider::SliderSingleStepAdd:
        Tell(SB_LINEDOWN);
        break;
    case QAbstractSlider::SliderSingleStepSub:
        Tell(SB_LINEUP);
        break;
    case QAbstractSlider::SliderPageStepAdd:
        Tell(SB_PAGEDOWN);
        break;
    case QAbstractSlider::SliderPageStepSub:
        Tell(SB_PAGEUP);
        break;
    case QAbstractSlider::SliderToMinimum:
        Tell(SB_TOP);
        break;
    case QAbstractSlider::SliderToMaximum:
        Tell(SB_BOTTOM);
        break;
    default:
        return;
    }
    End();
}

LRESULT ScrollBar::SetPosition(int position) {
    const int before = std::exchange(position_, std::clamp(position, least_, Greatest()));
    Show();
    return before;
}

LRESULT ScrollBar::SetInfo(const SCROLLINFO& info) {
    if ((info.fMask & SIF_RANGE) != 0) {
        least_ = info.nMin;
        most_ = std::max(info.nMin, info.nMax);
    }
    if ((info.fMask & SIF_PAGE) != 0) {
        const std::int64_t all = std::int64_t{most_} - least_ + 1;
        page_ = static_cast<int>(std::min({std::int64_t{info.nPage}, all, std::int64_t{INT_MAX}}));
    }
    SetPosition((info.fMask & SIF_POS) != 0 ? info.nPos : position_);
    return position_;
}

LRESULT ScrollBar::GetInfo(SCROLLINFO& info) const {
    if ((info.fMask & SIF_RANGE) != 0) {
        info.nMin = least_;
        info.nMax = most_;
    }
    if ((info.fMask & SIF_PAGE) != 0) info.nPage = static_cast<UINT>(page_);
    if ((info.fMask & SIF_POS) != 0) info.nPos = position_;
    if ((info.fMask & SIF_TRACKPOS) != 0) {
        info.nTrackPos = bar_ && bar_->isSliderDown() ? tracked_ : position_;
    }
    return TRUE;
}

std::optional<LRESULT> ScrollBar::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
    if (!bar_) return std::nullopt;
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS;
    case SBM_SETPOS:
        return SetPosition(static_cast<int>(wparam));
    case SBM_GETPOS:
        return position_;
    case SBM_SETRANGE: {
        const int before = position_;
        SetInfo({sizeof(SCROLLINFO), SIF_RANGE, static_cast<int>(wparam), static_cast<int>(lparam),
                 0, 0, 0});
        return before;
    }
    case SBM_GETRANGE:
        if (wparam != 0) *reinterpret_cast<int*>(wparam) = least_;
        if (lparam != 0) *reinterpret_cast<int*>(lparam) = most_;
        return 0;
    case SBM_SETSCROLLINFO:
        return lparam == 0 ? position_ : SetInfo(*reinterpret_cast<const SCROLLINFO*>(lparam));
    case SBM_GETSCROLLINFO:
        return lparam == 0 ? FALSE : GetInfo(*reinterpret_cast<SCROLLINFO*>(lparam));
    case WM_KEYDOWN:
        if (const auto code = CodeOfKey(wparam)) {
            Tell(*code);
            End();
        }
        return 0;
    case WM_CAPTURECHANGED:
        if (bar_->isSliderDown()) bar_->setSliderDown(false);
        return 0;
    default:
        return std::nullopt;
    }
}

} // namespace

std::unique_ptr<Control> MakeScrollBar(const ControlSetup& setup) {
    return std::make_unique<ScrollBar>(setup);
}

} // namespace kelvo::desktop
