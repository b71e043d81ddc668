// STATIC: texts, pictures, rectangles and frames, and what the owner draws.

#include "platform/base/resources.h"
#include "platform/desktop/Icons.h"
#include "platform/desktop/controls/OwnerDraw.h"
#include "platform/desktop/controls/StandardControls.h"
#include "platform/desktop/drawing.h"

#include <QLabel>
#include <QPainter>

#include <optional>

namespace kelvo::desktop {

namespace {

/// A rectangle, full or empty, or an etched line or frame.
class Shape : public QFrame {
public:
    explicit Shape(DWORD kind) : kind_(kind) {
        switch (kind) {
        case SS_ETCHEDHORZ:
            setFrameStyle(QFrame::HLine | QFrame::Sunken);
            break;
        case SS_ETCHEDVERT:
            setFrameStyle(QFrame::VLine | QFrame::Sunken);
            break;
        case SS_ETCHEDFRAME:
            setFrameStyle(QFrame::Box | QFrame::Sunken);
            break;
        default:
            break;
        }
    }

protected:
    void paintEvent(QPaintEvent* event) override {
        const auto role = Role();
        if (!role) return QFrame::paintEvent(event);
        QPainter painter(this);
        const QColor colour = palette().color(*role);
        if (kind_ <= SS_WHITERECT) {
            painter.fillRect(rect(), colour);
        } else {
            painter.setPen(colour);
            painter.drawRect(rect().adjusted(0, 0, -1, -1));
        }
    }

private:
    std::optional<QPalette::ColorRole> Role() const {
        switch (kind_) {
        case SS_BLACKRECT:
        case SS_BLACKFRAME:
            return QPalette::Shadow;
        case SS_GRAYRECT:
        case SS_GRAYFRAME:
            return QPalette::Dark;
        case SS_WHITERECT:
        case SS_WHITEFRAME:
            return QPalette::Base;
        default:
            return std::nullopt;
        }
    }

    const DWORD kind_;
};

bool IsShape(DWORD kind) {
    return (kind >= SS_BLACKRECT && kind <= SS_WHITEFRAME) ||
           (kind >= SS_ETCHEDHORZ && kind <= SS_ETCHEDFRAME);
}

class Static final : public Control {
public:
    explicit Static(const ControlSetup& setup) : Control(setup), kind_(setup.style & SS_TYPEMASK) {
        if (IsShape(kind_)) {
            MakeWidget<Shape>(kind_);
        } else {
            MakeLabel(setup);
        }
        OnStyleChanged(setup.style, setup.style);
    }
    ~Static() override {
        if (own_bitmap_ != nullptr) ::DeleteObject(own_bitmap_);
    }
    Static(const Static&) = delete;
    Static& operator=(const Static&) = delete;

    void OnStyleChanged(DWORD /*before*/, DWORD now) override {
        // Without a wish to be clicked, the mouse is the parent's.
        Host()->setAttribute(Qt::WA_TransparentForMouseEvents, (now & SS_NOTIFY) == 0);
    }

protected:
    std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam) override;
    void ShowText(const std::string& text) override;
    UINT ColourMessage() const override { return WM_CTLCOLORSTATIC; }
    bool DrawItself(HDC dc) override {
        if (kind_ != SS_OWNERDRAW) return false;
        SendDrawItem(Window(), Parent(), ODT_STATIC, 0, dc);
        return true;
    }

private:
    void MakeLabel(const ControlSetup& setup);
    void Align(DWORD style);
    void LoadOwnPicture(const ControlSetup& setup);
    LRESULT SetImage(UINT type, LPARAM handle);

    const DWORD kind_;
    QPointer<QLabel> label_; ///< none: a shape
    LPARAM image_ = 0;
    HBITMAP own_bitmap_ = nullptr; ///< the one that the title names
};

void Static::MakeLabel(const ControlSetup& setup) {
    label_ = MakeWidget<QLabel>();
    label_->setTextFormat(Qt::PlainText);
    label_->setMargin(0);
    if ((setup.style & SS_SUNKEN) != 0) label_->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    Align(setup.style);
    switch (kind_) {
    case SS_OWNERDRAW:
        Face().ShowSurface();
        if (!IS_INTRESOURCE(setup.title)) ShowText(setup.title);
        break;
    case SS_BITMAP:
    case SS_ICON:
        if (setup.title != nullptr) LoadOwnPicture(setup);
        break;
    default:
        if (!IS_INTRESOURCE(setup.title)) ShowText(setup.title);
        break;
    }
}

void Static::Align(DWORD style) {
    Qt::Alignment alignment = Qt::AlignLeft;
    if (kind_ == SS_CENTER) alignment = Qt::AlignHCenter;
    if (kind_ == SS_RIGHT) alignment = Qt::AlignRight;
    const bool in_the_middle = (style & SS_CENTERIMAGE) != 0;
    alignment |= in_the_middle ? Qt::AlignVCenter : Qt::AlignTop;
    if (in_the_middle && (kind_ == SS_BITMAP || kind_ == SS_ICON)) alignment = Qt::AlignCenter;
    label_->setAlignment(alignment);
    const bool wraps = kind_ == SS_LEFT || kind_ == SS_CENTER || kind_ == SS_RIGHT;
    label_->setWordWrap(wraps && !in_the_middle);
}

void Static::LoadOwnPicture(const ControlSetup& setup) {
    if (kind_ == SS_ICON) {
        SetImage(IMAGE_ICON, reinterpret_cast<LPARAM>(::LoadIconA(setup.instance, setup.title)));
        return;
    }
    own_bitmap_ = ::LoadBitmapA(setup.instance, setup.title);
    SetImage(IMAGE_BITMAP, reinterpret_cast<LPARAM>(own_bitmap_));
}

LRESULT Static::SetImage(UINT type, LPARAM handle) {
    if (!label_ || type != (kind_ == SS_ICON ? IMAGE_ICON : IMAGE_BITMAP)) return 0;
    QPixmap picture;
    if (type == IMAGE_ICON) {
        const QIcon icon = IconBehind(reinterpret_cast<HICON>(handle));
        picture = icon.pixmap(QSize(32, 32));
    } else {
        picture = QPixmap::fromImage(PictureOf(reinterpret_cast<HBITMAP>(handle)));
    }
    label_->setPixmap(picture);
    if (!picture.isNull() && (Style() & SS_CENTERIMAGE) == 0) {
        const QSize size = (QSizeF(picture.size()) / picture.devicePixelRatio()).toSize();
        ::SetWindowPos(Window(), nullptr, 0, 0, size.width(), size.height(),
                       SWP_NOMOVE | SWP_NOZORDER);
    }
    return std::exchange(image_, handle);
}

void Static::ShowText(const std::string& text) {
    if (!label_) return;
    const QString shown = QString::fromStdString(text);
    const QString plain = (Style() & SS_NOPREFIX) != 0 ? shown : WithoutPrefix(shown);
    if (kind_ == SS_OWNERDRAW) {
        label_->setAccessibleName(plain);
        Repaint();
    } else if (kind_ != SS_BITMAP && kind_ != SS_ICON) {
        label_->setText(plain);
    }
}

std::optional<LRESULT> Static::Handle(UINT message, WPARAM wparam, LPARAM lparam) {
    const bool notifies = (Style() & SS_NOTIFY) != 0;
    switch (message) {
    case WM_CREATE:
        if (kind_ == SS_OWNERDRAW) SendMeasureItem(Window(), Parent(), ODT_STATIC);
        return std::nullopt;
    case WM_GETDLGCODE:
        return DLGC_STATIC;
    case STM_SETIMAGE:
        return SetImage(static_cast<UINT>(wparam), lparam);
    case STM_GETIMAGE:
        return image_;
    case WM_LBUTTONDOWN:
        if (notifies) Notify(STN_CLICKED);
        return 0;
    case WM_LBUTTONDBLCLK:
        if (notifies) Notify(STN_DBLCLK);
        return 0;
    case WM_MOUSEMOVE:
    case WM_LBUTTONUP:
        return 0; // there is nothing that could be pressed
    default:
        return std::nullopt;
    }
}

} // namespace

std::unique_ptr<Control> MakeStatic(const ControlSetup& setup) {
    return std::make_unique<Static>(setup);
}

} // namespace kelvo::desktop
