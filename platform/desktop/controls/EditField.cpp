#include "platform/desktop/controls/EditField.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextBlock>
#include <QTextDocument>
#include <QValidator>

#include <algorithm>

namespace kelvo::desktop {

namespace {

class CheckValidator final : public QValidator {
public:
    CheckValidator(QObject* parent, EditCheck check)
        : QValidator(parent), check_(std::move(check)) {}

    State validate(QString& text, int& /*caret*/) const override {
        return check_(text) ? Acceptable : Invalid;
    }

private:
    const EditCheck check_;
};

class SingleLine final : public EditField {
public:
    SingleLine(QLineEdit& widget, EditCheck check) : edit_(widget) {
        edit_.setValidator(new CheckValidator(&edit_, std::move(check)));
        edit_.setMaxLength(kLongest);
    }

    QString Text() const override { return edit_.text(); }
    void SetText(const QString& text) override { edit_.setText(text); }
    std::pair<int, int> Selection() const override {
        const int start = edit_.selectionStart();
        if (start < 0) return {edit_.cursorPosition(), edit_.cursorPosition()};
        return {start, edit_.selectionEnd()};
    }
    void Select(int anchor, int caret) override {
        if (anchor == caret) {
            edit_.deselect();
            edit_.setCursorPosition(caret);
        } else {
            edit_.setSelection(anchor, caret - anchor);
        }
    }
    void Insert(const QString& text) override { edit_.insert(text); }
    void SetReadOnly(bool read_only) override { edit_.setReadOnly(read_only); }
    void SetAlignment(Qt::Alignment alignment) override {
        edit_.setAlignment(alignment | Qt::AlignVCenter);
    }
    void SetModified(bool modified) override { edit_.setModified(modified); }
    bool IsModified() const override { return edit_.isModified(); }
    bool CanUndo() const override { return edit_.isUndoAvailable(); }
    void Undo() override { edit_.undo(); }
    void ForgetUndo() override {
        const auto [start, end] = Selection();
        const bool modified = IsModified();
        const QSignalBlocker blocker(edit_);
        edit_.setText(edit_.text()); // which forgets what was before
        Select(start, end);
        SetModified(modified);
    }
    void Copy() override { edit_.copy(); }

private:
    static constexpr int kLongest = 1 << 20; // its own default is 32767

    QLineEdit& edit_;
};

class MultiLine final : public EditField {
public:
    explicit MultiLine(QPlainTextEdit& widget) : edit_(widget) {}

    QString Text() const override { return edit_.toPlainText(); }
    void SetText(const QString& text) override { edit_.setPlainText(text); }
    std::pair<int, int> Selection() const override {
        const QTextCursor cursor = edit_.textCursor();
        return {cursor.selectionStart(), cursor.selectionEnd()};
    }
    void Select(int anchor, int caret) override {
        QTextCursor cursor = edit_.textCursor();
        cursor.setPosition(anchor);
        cursor.setPosition(caret, QTextCursor::KeepAnchor);
        edit_.setTextCursor(cursor);
    }
    void Insert(const QString& text) override {
        edit_.textCursor().insertText(text);
        edit_.ensureCursorVisible();
    }
    void SetReadOnly(bool read_only) override { edit_.setReadOnly(read_only); }
    void SetAlignment(Qt::Alignment alignment) override {
        QTextOption option = edit_.document()->defaultTextOption();
        option.setAlignment(alignment);
        edit_.document()->setDefaultTextOption(option);
    }
    void SetModified(bool modified) override { edit_.document()->setModified(modified); }
    bool IsModified() const override { return edit_.document()->isModified(); }
    bool CanUndo() const override { return edit_.document()->isUndoAvailable(); }
    void Undo() override { edit_.undo(); }
    void ForgetUndo() override { edit_.document()->clearUndoRedoStacks(); }
    void Copy() override { edit_.copy(); }
    void ShowCaret() override { edit_.ensureCursorVisible(); }
    int FirstVisibleLine() const override {
        return edit_.cursorForPosition(QPoint(0, 0)).blockNumber();
    }

private:
    QPlainTextEdit& edit_;
};

} // namespace

std::unique_ptr<EditField> SingleLineField(QLineEdit& widget, EditCheck check) {
    return std::make_unique<SingleLine>(widget, std::move(check));
}

std::unique_ptr<EditField> MultiLineField(QPlainTextEdit& widget) {
    return std::make_unique<MultiLine>(widget);
}

} // namespace kelvo::desktop
