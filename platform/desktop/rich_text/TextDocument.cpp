#include "platform/desktop/rich_text/TextDocument.h"

#include "platform/desktop/rich_text/Utf.h"

#include <QColor>
#include <QFont>
#include <QString>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>
#include <QTextFragment>

#include <algorithm>
#include <cmath>

namespace kelvo::desktop {
namespace {

/// The desktop measures in pixels of a screen of 96 to the inch.
constexpr double kTwipsPerPixel = 1440.0 / 96.0;

std::int32_t TwipsOf(double pixels) {
    return static_cast<std::int32_t>(std::lround(pixels * kTwipsPerPixel));
}

QColor ColourOf(RgbColour colour) {
    return QColor::fromRgb(static_cast<QRgb>(colour | 0xFF000000U));
}

std::optional<RgbColour> ColourOf(const QBrush& brush) {
    if (brush.style() == Qt::NoBrush) return std::nullopt;
    return brush.color().rgb() & 0xFFFFFFU;
}

QString StringOf(std::u16string_view text) {
    return QString::fromUtf16(text.data(), static_cast<qsizetype>(text.size()));
}

QTextCharFormat DesktopFormat(const CharacterFormat& format) {
    QTextCharFormat desktop;
    if (!format.family.empty()) {
        desktop.setFontFamilies({QString::fromStdString(format.family)});
    }
    desktop.setFontPointSize(format.half_points / 2.0);
    if (format.bold) desktop.setFontWeight(QFont::Bold);
    if (format.italic) desktop.setFontItalic(true);
    if (format.underline) desktop.setFontUnderline(true);
    if (format.strike) desktop.setFontStrikeOut(true);
    if (format.script == Script::Super) {
        desktop.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
    } else if (format.script == Script::Sub) {
        desktop.setVerticalAlignment(QTextCharFormat::AlignSubScript);
    }
    if (format.colour) desktop.setForeground(ColourOf(*format.colour));
    if (format.background) desktop.setBackground(ColourOf(*format.background));
    return desktop;
}

Qt::Alignment DesktopAlignment(Alignment alignment) {
    switch (alignment) {
    case Alignment::Left:
        return Qt::AlignLeft;
    case Alignment::Right:
        return Qt::AlignRight;
    case Alignment::Centre:
        return Qt::AlignHCenter;
    case Alignment::Justified:
        return Qt::AlignJustify;
    }
    return Qt::AlignLeft;
}

Alignment AlignmentOf(Qt::Alignment alignment) {
    if (alignment.testFlag(Qt::AlignRight)) return Alignment::Right;
    if (alignment.testFlag(Qt::AlignHCenter)) return Alignment::Centre;
    if (alignment.testFlag(Qt::AlignJustify)) return Alignment::Justified;
    return Alignment::Left;
}

constexpr QTextOption::TabType kDesktopTabs[] = {QTextOption::LeftTab, QTextOption::RightTab,
                                                 QTextOption::CenterTab, QTextOption::DelimiterTab};

QTextBlockFormat DesktopFormat(const ParagraphFormat& format) {
    QTextBlockFormat desktop;
    if (format.alignment != Alignment::Left) {
        desktop.setAlignment(DesktopAlignment(format.alignment));
    }
    desktop.setLeftMargin(format.left / kTwipsPerPixel);
    desktop.setRightMargin(format.right / kTwipsPerPixel);
    desktop.setTextIndent(format.first_line / kTwipsPerPixel);
    desktop.setTopMargin(format.space_before / kTwipsPerPixel);
    desktop.setBottomMargin(format.space_after / kTwipsPerPixel);
    QList<QTextOption::Tab> tabs;
    for (const TabStop& tab : format.tabs) {
        tabs.append(QTextOption::Tab(tab.position_twips / kTwipsPerPixel,
                                     kDesktopTabs[static_cast<std::size_t>(tab.kind)]));
    }
    if (!tabs.isEmpty()) desktop.setTabPositions(tabs);
    return desktop;
}

ParagraphFormat FormatOf(const QTextBlockFormat& desktop) {
    ParagraphFormat format;
    format.alignment = AlignmentOf(desktop.alignment());
    format.left = TwipsOf(desktop.leftMargin());
    format.right = TwipsOf(desktop.rightMargin());
    format.first_line = TwipsOf(desktop.textIndent());
    format.space_before = TwipsOf(desktop.topMargin());
    format.space_after = TwipsOf(desktop.bottomMargin());
    for (const QTextOption::Tab& tab : desktop.tabPositions()) {
        if (format.tabs.size() == kMaximumTabs) break;
        const auto* const kind = std::ranges::find(kDesktopTabs, tab.type);
        format.tabs.push_back(
            {TwipsOf(tab.position), static_cast<TabKind>(kind - std::begin(kDesktopTabs))});
    }
    return format;
}

std::int32_t HalfPointsOf(const QFont& font) {
    const double points =
        font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize() * 72.0 / 96.0;
    return std::clamp(static_cast<std::int32_t>(std::lround(points * 2)), 2, 3276);
}

CharacterFormat FormatOf(const QTextCharFormat& desktop, const QFont& standard) {
    CharacterFormat format;
    const QFont font = desktop.font().resolve(standard);
    format.family = font.family().toStdString();
    format.half_points = HalfPointsOf(font);
    format.bold = font.weight() > QFont::Medium;
    format.italic = font.italic();
    format.underline = font.underline();
    format.strike = font.strikeOut();
    if (desktop.verticalAlignment() == QTextCharFormat::AlignSuperScript) {
        format.script = Script::Super;
    } else if (desktop.verticalAlignment() == QTextCharFormat::AlignSubScript) {
        format.script = Script::Sub;
    }
    format.colour = ColourOf(desktop.foreground());
    format.background = ColourOf(desktop.background());
    return format;
}

/// What of the block lies in [begin, end) of the document.
Paragraph ParagraphOf(const QTextBlock& block, int begin, int end, const QFont& standard) {
    Paragraph paragraph;
    paragraph.format = FormatOf(block.blockFormat());
    for (auto part = block.begin(); part != block.end(); ++part) {
        const QTextFragment fragment = part.fragment();
        const int from = std::max(begin, fragment.position());
        const int to = std::min(end, fragment.position() + fragment.length());
        if (from >= to) continue;
        const QString text = fragment.text().mid(from - fragment.position(), to - from);
        paragraph.Append(WithoutStrayUnits(text.toStdU16String()),
                         FormatOf(fragment.charFormat(), standard));
    }
    if (paragraph.runs.empty()) paragraph.if_empty = FormatOf(block.charFormat(), standard);
    return paragraph;
}

RichText ReadRange(const QTextDocument& document, int begin, int end) {
    RichText text;
    for (QTextBlock block = document.findBlock(begin); block.isValid() && block.position() <= end;
         block = block.next()) {
        text.paragraphs.push_back(ParagraphOf(block, begin, end, document.defaultFont()));
    }
    if (text.paragraphs.empty()) text.paragraphs.emplace_back();
    return text;
}

} // namespace

void InsertAtCursor(QTextCursor& cursor, const RichText& text) {
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    bool first = true;
    for (const Paragraph& paragraph : text.paragraphs) {
        const QTextBlockFormat format = DesktopFormat(paragraph.format);
        if (!first) {
            cursor.insertBlock(format);
        } else if (text.paragraphs.size() > 1) {
            cursor.setBlockFormat(format);
        }
        first = false;
        for (const TextRun& run : paragraph.runs) {
            cursor.insertText(StringOf(run.text), DesktopFormat(run.format));
        }
        if (paragraph.runs.empty()) cursor.setBlockCharFormat(DesktopFormat(paragraph.if_empty));
    }
    cursor.endEditBlock();
}

void FillDocument(QTextDocument& document, const RichText& text) {
    const bool undo = document.isUndoRedoEnabled();
    document.setUndoRedoEnabled(false);
    document.clear();
    QTextCursor cursor(&document);
    if (!text.paragraphs.empty()) {
        cursor.setBlockFormat(DesktopFormat(text.paragraphs.front().format));
    }
    InsertAtCursor(cursor, text);
    document.setUndoRedoEnabled(undo);
    document.setModified(false);
}

RichText ReadDocument(const QTextDocument& document) {
    return ReadRange(document, 0, document.characterCount());
}

RichText ReadSelection(const QTextCursor& cursor) {
    return ReadRange(*cursor.document(), cursor.selectionStart(), cursor.selectionEnd());
}

} // namespace kelvo::desktop
