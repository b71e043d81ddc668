#pragma once
// Between a formatted text and the desktop's document, which holds it while it is shown and edited.

#include "platform/desktop/rich_text/RichText.h"

class QTextCursor;
class QTextDocument;

namespace kelvo::desktop {

/// Replaces the document's content, undo history included.
void FillDocument(QTextDocument& document, const RichText& text);

/// Puts the text at the cursor, in place of what is selected. The first paragraph's format counts
/// only where there is more than one.
void InsertAtCursor(QTextCursor& cursor, const RichText& text);

/// The document's content; fonts and sizes that it does not state are those of its default font.
[[nodiscard]] RichText ReadDocument(const QTextDocument& document);

/// What is selected.
[[nodiscard]] RichText ReadSelection(const QTextCursor& cursor);

} // namespace kelvo::desktop
