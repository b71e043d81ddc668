// msctls_trackbar32: a slider that reports by WM_HSCROLL or WM_VSCROLL.

#include "platform/desktop/controls/StandardControls.h"

#include <QKeyEvent>
#include <QSlider>

#include <algorithm>

namespace kelvo::desktop {

namespace {

class Trackbar final : public Control {
public:
    explicit Trackbar(const ControlSetup& setup)
        : Control(setup), vertical_((setup.style & TBS_VERT) != 0) {
        slider_ = MakeWidget<QSlider>(vertical_ ? Qt::Vertical : Qt::Horizontal);
        slider_->setInvertedAppearance(vertical_);
        slider_->setRange(0, 100);
        SetPageSize(-1);
        ShowTicks(setup.style);
        NameAfterLabel();
        QObject::connect(slider_, &QSlider::actionTriggered, Connections(),
                         [this](int action) { OnAction(action); });
        QObject::connect(slider_, &QSlider::sliderReleased, Connections(), [this] {
            ReportCode(TB_THUMBPOSITION);
            ReportCode(TB_ENDTRACK);
        });
    }

    void OnStyleChanged(DWORD /*before*/, DWORD now) override { ShowTicks(now); }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    UINT ColourMessage() const override { return WM_CTLCOLORSTATIC; }

private:
    void OnAction(int action);
    void ReportCode(int code);
    void SetRange(int least, int greatest);
    LRESULT SetPageSize(LPARAM size);
    void ShowTicks(DWORD style);

    const bool vertical_;
    QPointer<QSlider> slider_;
    bool page_follows_range_ = true;
};

void Trackbar::ReportCode(int code) {
    const bool with_position = code == TB_THUMBPOSITION || code == TB_THUMBTRACK;
    const int position = with_position && slider_ ? slider_->sliderPosition() : 0;
    Report(vertical_ ? WM_VSCROLL : WM_HSCROLL,
           MAKEWPARAM(static_cast<DWORD_PTR>(code),
                      static_cast<DWORD_PTR>(static_cast<UINT>(position))));
}

void Trackbar::OnAction(int action) {
    switch (action) {
    case QAbstractSlider::SliderSingleStepAdd:
        return ReportCode(TB_LINEDOWN);
    case QAbstractSlider::SliderSingleStepSub:
        return ReportCode(TB_LINEUP);
    case QAbstractSlider::SliderPageStepAdd:
        return ReportCode(TB_PAGEDOWN);
    case QAbstractSlider::SliderPageStepSub:
        return ReportCode(TB_PAGEUP);
    case QAbstractSlider::SliderToMinimum:
        return ReportCode(TB_TOP);
    case QAbstractSlider::SliderToMaximum:
        return ReportCode(TB_BOTTOM);
    case QAbstractSlider::SliderMove:
        // Without a held thumb it was the wheel.
        return ReportCode(slider_->isSliderDown() ? TB_THUMBTRACK : TB_THUMBPOSITION);
    default:
        return;
    }
}

void Trackbar::SetRange(int least, int greatest) {
    slider_->setRange(least, std::max(least, greatest));
    if (page_follows_range_) SetPageSize(-1);
    ShowTicks(Style());
}

LRESULT Trackbar::SetPageSize(LPARAM size) {
    const int before = slider_->pageStep();
    page_follows_range_ = size < 0;
    const int fifth = (slider_->maximum() - slider_->minimum()) / 5;
    slider_->setPageStep(page_follows_range_ ? std::max(1, fifth) : static_cast<int>(size));
    return before;
}

void Trackbar::ShowTicks(DWORD style) {
    const bool both = (style & TBS_BOTH) != 0;
    if ((style & TBS_NOTICKS) != 0) {
        slider_->setTickPosition(QSlider::NoTicks);
    } else if (both) {
        slider_->setTickPosition(QSlider::TicksBothSides);
    } else {
        const bool before = (style & TBS_TOP) != 0;
        slider_->setTickPosition(before ? QSlider::TicksAbove : QSlider::TicksBelow);
    }
    // Without TBS_AUTOTICKS only the ends are marked.
    if ((style & TBS_AUTOTICKS) == 0) {
        slider_->setTickInterval(std::max(1, slider_->maximum() - slider_->minimum()));
    } else if (slider_->tickInterval() == 0) {
        slider_->setTickInterval(1);
    }
}

std::optional<LRESULT> Trackbar::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
    if (!slider_) return std::nullopt;
    switch (message) {
    case WM_GETDLGCODE:
        return DLGC_WANTARROWS;
    case TBM_GETPOS:
        return slider_->sliderPosition();
    case TBM_SETPOS:
        if (!slider_->isSliderDown()) slider_->setValue(static_cast<int>(lparam));
        return 0;
    case TBM_GETRANGEMIN:
        return slider_->minimum();
    case TBM_GETRANGEMAX:
        return slider_->maximum();
    case TBM_SETRANGE: {
        const auto range = static_cast<DWORD_PTR>(lparam);
        SetRange(static_cast<std::int16_t>(LOWORD(range)),
                 static_cast<std::int16_t>(HIWORD(range)));
        return 0;
    }
    case TBM_SETRANGEMIN:
        SetRange(static_cast<int>(lparam), slider_->maximum());
        return 0;
    case TBM_SETRANGEMAX:
        SetRange(std::min(slider_->minimum(), static_cast<int>(lparam)), static_cast<int>(lparam));
        return 0;
    case TBM_SETTICFREQ:
        slider_->setTickInterval(std::max(1, static_cast<int>(wparam)));
        return 0;
    case TBM_SETPAGESIZE:
        return SetPageSize(lparam);
    case TBM_GETPAGESIZE:
        return slider_->pageStep();
    case TBM_SETLINESIZE: {
        const int before = slider_->singleStep();
        slider_->setSingleStep(std::max(0, static_cast<int>(lparam)));
        return before;
    }
    case TBM_GETLINESIZE:
        return slider_->singleStep();
    case WM_CAPTURECHANGED:
        if (slider_->isSliderDown()) slider_->setSliderDown(false);
        return 0;
    case WM_KEYUP:
        if (wparam >= VK_PRIOR && wparam <= VK_DOWN) ReportCode(TB_ENDTRACK);
        return std::nullopt;
    default:
        return std::nullopt;
    }
}

} // namespace

std::unique_ptr<Control> MakeTrackbar(const ControlSetup& setup) {
    return std::make_unique<Trackbar>(setup);
}

} // namespace kelvo::desktop
