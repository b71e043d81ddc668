#include "platform/desktop/rich_text/RichTextField.h"

#include "platform/desktop/rich_text/RtfReader.h"
#include "platform/desktop/rich_text/RtfWriter.h"
#include "platform/desktop/rich_text/TextDocument.h"

#include <QApplication>
#include <QMimeData>
#include <QTextDocument>
#include <QTextDocumentFragment>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <optional>

namespace kelvo::desktop {
namespace {

/// Under which names rich text lies on clipboards.
constexpr const char* kRichTextNames[] = {"text/rtf", "application/rtf", "text/richtext"};

std::optional<RichText> RichTextOf(const QMimeData& source) {
    for (const char* name : kRichTextNames) {
        const QByteArray bytes = source.data(QLatin1String(name));
        if (bytes.isEmpty()) continue;
        return ReadRtf(std::span(reinterpret_cast<const std::uint8_t*>(bytes.constData()),
                                 static_cast<std::size_t>(bytes.size())));
    }
    return std::nullopt;
}

qsizetype LengthOf(const RichText& text) {
    std::size_t length = text.paragraphs.size() - 1;
    for (const Paragraph& paragraph : text.paragraphs) {
        for (const TextRun& run : paragraph.runs)
            length += run.text.size();
    }
    return static_cast<qsizetype>(length);
}

} // namespace

RichTextField::RichTextField() {
    setAcceptRichText(false); // what the toolkit would take holds frames and pictures, too
}

QString RichTextField::PlainText() const {
    QString text = document()->toRawText();
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    text.replace(QChar::LineSeparator, QLatin1Char('\n'));
    return text;
}

int RichTextField::Room() const {
    const QTextCursor cursor = textCursor();
    const int selected = cursor.selectionEnd() - cursor.selectionStart();
    return std::max(0, limit_ - (document()->characterCount() - 1 - selected));
}

void RichTextField::Enter(const QString& text) {
    QString fitting = text.left(Room());
    if (!fitting.isEmpty() && fitting.back().isHighSurrogate()) fitting.chop(1);
    if (fitting.size() < text.size()) QApplication::beep();
    if (!fitting.isEmpty()) textCursor().insertText(fitting);
    ensureCursorVisible();
}

bool RichTextField::canInsertFromMimeData(const QMimeData* source) const {
    return source->hasText() || std::ranges::any_of(kRichTextNames, [source](const char* name) {
               return source->hasFormat(QLatin1String(name));
           });
}

void RichTextField::insertFromMimeData(const QMimeData* source) {
    const std::optional<RichText> text = RichTextOf(*source);
    if (!text || LengthOf(*text) > Room()) {
        Enter(source->text());
        return;
    }
    QTextCursor cursor = textCursor();
    InsertAtCursor(cursor, *text);
    setTextCursor(cursor);
    ensureCursorVisible();
}

QMimeData* RichTextField::createMimeDataFromSelection() const {
    const QTextCursor cursor = textCursor();
    auto given = std::make_unique<QMimeData>();
    given->setText(cursor.selection().toPlainText());
    given->setData(QLatin1String(kRichTextNames[0]),
                   QByteArray::fromStdString(WriteRtf(ReadSelection(cursor))));
    return given.release(); // the clipboard's
}

} // namespace kelvo::desktop
