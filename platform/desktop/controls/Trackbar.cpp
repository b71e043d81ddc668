// msctls_trackbar32: a slider that reports by WM_HSCROLL or WM_VSCROLL.

#include "platform/desktop/controls/StandardControls.h"

#include <QMouseEvent>
#include <QSlider>
#include <QStyleOptionSlider>

#include <algorithm>
#include <utility>

namespace kelvo::desktop {

namespace {

/// A slider that can be pressed beside its narrow groove, too.
class WideSlider : public QSlider {
public:
    using QSlider::QSlider;

protected:
    void mousePressEvent(QMouseEvent* event) override {
        QStyleOptionSlider option;
        initStyleOption(&option);
        const QPoint middle =
            style()
                ->subControlRect(QStyle::CC_Slider, &option, QStyle::SC_SliderHandle, this)
                .center();
        QPointF position = event->position();
        if (orientation() == Qt::Horizontal) {
            position.setY(middle.y());
        } else {
            position.setX(middle.x());
        }
        QMouseEvent in_groove(event->type(), position, event->globalPosition(), event->button(),
                              event->buttons(), event->modifiers());
        QSlider::mousePressEvent(&in_groove);
        event->setAccepted(in_groove.isAccepted());
    }
};

class Trackbar final : public Control {
public:
    explicit Trackbar(const ControlSetup& setup)
        : Control(setup), vertical_((setup.style & TBS_VERT) != 0) {
        slider_ = MakeWidget<WideSlider>(vertical_ ? Qt::Vertical : Qt::Horizontal);
        slider_->setInvertedAppearance(vertical_);
        slider_->setInvertedControls(vertical_);
        slider_->setRange(0, 100);
        SetPageSize(-1);
        ShowTicks(setup.style);
        NameAfterLabel();
        QObject::connect(slider_, &QSlider::actionTriggered, Connections(),
                         [this](int action) { OnAction(action); });
        QObject::connect(slider_, &QSlider::sliderReleased, Connections(),
                         [this] { ReportJump(); });
        QObject::connect(slider_, &QSlider::valueChanged, Connections(), [this](int value) {
            // Neither the program nor a key or the mouse: an assistive program has set it.
            if (!quiet_ && value != reported_) ReportJump();
        });
    }

    void OnStyleChanged(DWORD /*before*/, DWORD now) override { ShowTicks(now); }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    UINT ColourMessage() const override { return WM_CTLCOLORSTATIC; }

private:
    void OnAction(int action);
    void ReportCode(int code);
    void ReportJump();
    void SetPosition(int position);
    void SetRange(int least, int greatest);
    LRESULT SetPageSize(LPARAM size);
    void ShowTicks(DWORD style);

    const bool vertical_;
    QPointer<QSlider> slider_;
    bool page_follows_range_ = true;
    bool quiet_ = false; ///< the program moves it
    int reported_ = 0;   ///< where the user's last action led to
};

void Trackbar::ReportCode(int code) {
    const bool with_position = code == TB_THUMBPOSITION || code == TB_THUMBTRACK;
    const int position = with_position && slider_ ? slider_->sliderPosition() : 0;
    Report(vertical_ ? WM_VSCROLL : WM_HSCROLL,
           MAKEWPARAM(static_cast<DWORD_PTR>(code),
                      static_cast<DWORD_PTR>(static_cast<UINT>(position))));
}

void Trackbar::ReportJump() {
    ReportCode(TB_THUMBPOSITION);
    ReportCode(TB_ENDTRACK);
}

void Trackbar::OnAction(int action) {
    reported_ = slider_->sliderPosition();
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
        if (slider_->isSliderDown()) return ReportCode(TB_THUMBTRACK);
        return ReportJump(); // the wheel
    default:
        return;
    }
}

void Trackbar::SetPosition(int position) {
    if (slider_->isSliderDown()) return; // it stays in the user's hand
    const bool before = std::exchange(quiet_, true);
    slider_->setValue(position);
    quiet_ = before;
}

void Trackbar::SetRange(int least, int greatest) {
    const bool before = std::exchange(quiet_, true);
    slider_->setRange(least, std::max(least, greatest));
    quiet_ = before;
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
        SetPosition(static_cast<int>(lparam));
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
