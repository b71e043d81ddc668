#pragma once
// The text field in an EDIT control: one line, or several. Positions are in UTF-16 units of Text(),
// whose lines end with '\n'. UI thread only.

#include <QString>
#include <QWidget>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

class QLineEdit;
class QPlainTextEdit;

namespace kelvo::desktop {

/// What the user changes passes here first: it may change the text, or cut it.
using EditFilter = std::function<QString(const QString& inserted)>;
/// Whether the user may leave this as the whole text; may change the case of its letters.
using EditCheck = std::function<bool(QString& whole)>;

class EditField {
public:
    virtual ~EditField() = default;

    virtual QString Text() const = 0;
    /// Not undoable, and checked by nobody.
    virtual void SetText(const QString& text) = 0;
    /// Start and end; the end is where the caret is unless the start is.
    virtual std::pair<int, int> Selection() const = 0;
    virtual void Select(int anchor, int caret) = 0;
    virtual void Insert(const QString& text) = 0;
    virtual void SetReadOnly(bool read_only) = 0;
    virtual void SetAlignment(Qt::Alignment alignment) = 0;
    virtual void SetModified(bool modified) = 0;
    virtual bool IsModified() const = 0;
    virtual bool CanUndo() const = 0;
    virtual void Undo() = 0;
    virtual void ForgetUndo() = 0;
    virtual void Copy() = 0;
    virtual void ShowCaret() {}
    virtual int FirstVisibleLine() const { return 0; }
};

/// Of a QLineEdit; the check is asked for all that the user does.
std::unique_ptr<EditField> SingleLineField(QLineEdit& widget, EditCheck check);

/// Of a QPlainTextEdit that was made with PasteFiltered.
std::unique_ptr<EditField> MultiLineField(QPlainTextEdit& widget);

} // namespace kelvo::desktop
