// Measuring and writing text.

#include "platform/desktop/DeviceContext.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QString>
#include <QTextLayout>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>
#include <vector>

using namespace kelvo::desktop;

namespace {

struct DecodedText {
    QString text;
    std::vector<int> units; ///< for each byte, the text's length at the end of its character
};

// Bytes that belong to one character of UTF-8, as its first byte says, and at least one.
std::size_t CharacterLength(std::string_view bytes) {
    const auto first = static_cast<unsigned char>(bytes.front());
    std::size_t announced = 1;
    if (first >= 0xC0) announced = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    std::size_t length = 1;
    while (length < announced && length < bytes.size() &&
           (static_cast<unsigned char>(bytes[length]) & 0xC0U) == 0x80U) {
        ++length;
    }
    return length;
}

DecodedText Decode(std::string_view bytes) {
    DecodedText decoded;
    while (!bytes.empty()) {
        const std::size_t length = CharacterLength(bytes);
        QString character = QString::fromUtf8(bytes.data(), static_cast<qsizetype>(length));
        // A line of text has no tabs and no breaks; what would make one takes a space.
        if (character.size() == 1 && !character.front().isPrint()) character = QChar(u' ');
        decoded.text += character;
        decoded.units.insert(decoded.units.end(), length, static_cast<int>(decoded.text.size()));
        bytes.remove_prefix(length);
    }
    return decoded;
}

/// Widths in logical units, of one text in the font of one state.
class Measure {
public:
    Measure(const DrawState& state, std::string_view bytes) : decoded_(Decode(bytes)) {
        const Mapping& mapping = state.mapping;
        scale_x_ = std::abs(mapping.ScaleX());
        scale_y_ = std::abs(mapping.ScaleY());
        const std::lock_guard lock(TextMutex());
        font_ = state.font->Realise(scale_x_, scale_y_);
        QTextLayout layout(decoded_.text, font_.font);
        layout.beginLayout();
        const QTextLine line = layout.createLine();
        layout.endLayout();
        if (!line.isValid()) return;
        double widest = 0; // never smaller than before, also where a text runs leftwards
        for (const int units : decoded_.units) {
            widest = std::max(widest, line.cursorToX(units));
            widths_.push_back(widest * font_.stretch);
        }
    }

    const QString& Text() const { return decoded_.text; }
    const RealisedFont& Font() const { return font_; }
    std::size_t ByteCount() const { return decoded_.units.size(); }
    /// Of the text up to and with the character that the byte belongs to.
    int ExtentUpTo(std::size_t byte) const { return Logical(widths_[byte], scale_x_); }
    int Width() const { return widths_.empty() ? 0 : Logical(widths_.back(), scale_x_); }
    int Height() const { return Logical(font_.ascent + font_.descent, scale_y_); }
    /// In pixels.
    int DeviceWidth() const { return Logical(widths_.empty() ? 0 : widths_.back(), 1.0); }
    bool SameCharacter(std::size_t byte, std::size_t other) const {
        return decoded_.units[byte] == decoded_.units[other];
    }

private:
    static int Logical(double pixels, double scale) {
        return static_cast<int>(std::lround(pixels / scale));
    }

    DecodedText decoded_;
    RealisedFont font_;
    double scale_x_ = 1;
    double scale_y_ = 1;
    std::vector<double> widths_; ///< in pixels, for each byte
};

std::optional<Measure> MeasureText(const std::optional<DrawState>& state, LPCSTR text, int length) {
    if (!state || length < 0 || (text == nullptr && length > 0) || !HasFonts()) return std::nullopt;
    return Measure(*state, {text, static_cast<std::size_t>(length)});
}

/// Where a text's cell lies, in pixels.
struct Cell {
    int left;
    int baseline;
};

Cell PlaceCell(const DrawState& state, const Measure& text, POINT reference) {
    Cell cell{state.mapping.X(reference.x), state.mapping.Y(reference.y)};
    const UINT across = state.text_alignment & TA_CENTER;
    if (across == TA_CENTER) cell.left -= text.DeviceWidth() / 2;
    if (across == TA_RIGHT) cell.left -= text.DeviceWidth();
    const UINT down = state.text_alignment & TA_BASELINE;
    if (down == TA_TOP) cell.baseline += text.Font().ascent;
    if (down == TA_BOTTOM) cell.baseline -= text.Font().descent;
    return cell;
}

QRect PaintText(QImage& image, const QRect& clip, const DrawState& state, const Measure& text,
                Cell cell) {
    const RealisedFont& font = text.Font();
    const QRect area(cell.left, cell.baseline - font.ascent, text.DeviceWidth(),
                     font.ascent + font.descent);
    const std::lock_guard lock(TextMutex());
    QPainter painter(&image);
    painter.setClipRect(clip);
    if (state.background_mode == OPAQUE) {
        painter.fillRect(area, QColor(PixelFrom(state.background_colour)));
    }
    painter.setPen(QColor(PixelFrom(state.text_colour)));
    painter.setFont(font.font);
    painter.translate(cell.left, cell.baseline);
    painter.scale(font.stretch, 1.0);
    painter.drawText(QPointF(0, 0), text.Text());
    // Slanted and decorated characters may reach out of their cell.
    const int margin = area.height();
    return area.adjusted(-margin, -margin, margin, margin);
}

} // namespace

BOOL TextOutA(HDC dc, int x, int y, LPCSTR text, int length) {
    const auto state = StateOf(dc);
    const auto measure = MeasureText(state, text, length);
    if (!measure) return FALSE;
    const bool moves = (state->text_alignment & TA_UPDATECP) != 0;
    const POINT reference = moves ? state->position : POINT{x, y};
    const Cell cell = PlaceCell(*state, *measure, reference);
    const bool is_drawn = DrawOn(*state, [&](QImage& image, const QRect& clip) {
        if (measure->Text().isEmpty()) return QRect();
        return PaintText(image, clip, *state, *measure, cell);
    });
    if (!is_drawn) return FALSE;
    const UINT across = state->text_alignment & TA_CENTER;
    if (!moves || across == TA_CENTER) return TRUE;
    const int step = across == TA_RIGHT ? -measure->Width() : measure->Width();
    return MoveToEx(dc, reference.x + step, reference.y, nullptr);
}

BOOL GetTextExtentPoint32A(HDC dc, LPCSTR text, int length, SIZE* size) {
    return GetTextExtentExPointA(dc, text, length, 0, nullptr, nullptr, size);
}

BOOL GetTextExtentExPointA(HDC dc, LPCSTR text, int length, int max_extent, int* fit, int* extents,
                           SIZE* size) {
    const auto measure = MeasureText(StateOf(dc), text, length);
    if (!measure || size == nullptr) return FALSE;
    std::size_t fitting = 0;
    for (std::size_t i = 0; i < measure->ByteCount(); ++i) {
        const int extent = measure->ExtentUpTo(i);
        const bool fits = fit == nullptr || extent <= max_extent;
        if (fits) fitting = i + 1;
        if (fits && extents != nullptr) extents[i] = extent;
        if (!fits) break;
    }
    if (fit != nullptr) *fit = static_cast<int>(fitting);
    *size = {measure->Width(), measure->Height()};
    return TRUE;
}

BOOL GetTextMetricsA(HDC dc, TEXTMETRICA* metrics) {
    const auto state = StateOf(dc);
    if (!state || metrics == nullptr || !HasFonts()) return FALSE;
    const double scale_x = std::abs(state->mapping.ScaleX());
    const double scale_y = std::abs(state->mapping.ScaleY());
    RealisedFont font;
    {
        const std::lock_guard lock(TextMutex());
        font = state->font->Realise(scale_x, scale_y);
    }
    const auto across = [scale_x](int pixels) {
        return static_cast<LONG>(std::lround(pixels / scale_x));
    };
    const auto down = [scale_y](int pixels) {
        return static_cast<LONG>(std::lround(pixels / scale_y));
    };
    const LOGFONTA& description = state->font->Description();
    *metrics = {};
    metrics->tmAscent = down(font.ascent);
    metrics->tmDescent = down(font.descent);
    metrics->tmHeight = metrics->tmAscent + metrics->tmDescent;
    metrics->tmInternalLeading = down(font.internal_leading);
    metrics->tmExternalLeading = down(font.external_leading);
    metrics->tmAveCharWidth = across(font.average_width);
    metrics->tmMaxCharWidth = across(font.maximum_width);
    metrics->tmWeight = description.lfWeight == 0 ? FW_NORMAL : description.lfWeight;
    metrics->tmDigitizedAspectX = 96;
    metrics->tmDigitizedAspectY = 96;
    metrics->tmFirstChar = 0x20;
    metrics->tmLastChar = 0xFF;
    metrics->tmDefaultChar = '?';
    metrics->tmBreakChar = ' ';
    metrics->tmItalic = description.lfItalic;
    metrics->tmUnderlined = description.lfUnderline;
    metrics->tmStruckOut = description.lfStrikeOut;
    metrics->tmPitchAndFamily =
        static_cast<BYTE>((description.lfPitchAndFamily & 0xF0U) | (font.is_fixed_pitch ? 0U : 1U));
    metrics->tmCharSet = description.lfCharSet;
    return TRUE;
}

int GetTextFaceA(HDC dc, int size, LPSTR face) {
    const auto state = StateOf(dc);
    if (!state || !HasFonts()) return 0;
    std::string name;
    {
        const std::lock_guard lock(TextMutex());
        name = state->font->Realise(state->mapping.ScaleX(), state->mapping.ScaleY()).face;
    }
    if (face == nullptr) return static_cast<int>(name.size() + 1);
    if (size <= 0) return 0;
    const std::size_t copied = std::min(name.size(), static_cast<std::size_t>(size) - 1);
    std::memcpy(face, name.data(), copied);
    face[copied] = '\0';
    return static_cast<int>(copied + 1);
}
