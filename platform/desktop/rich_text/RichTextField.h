#pragma once
// The toolkit's rich-text editor as the control shows it: rich text is what it copies and pastes,
// and everything a person enters passes a limit.

#include <QString>
#include <QTextEdit>

namespace kelvo::desktop {

class RichTextField : public QTextEdit {
public:
    RichTextField();

    /// Line ends of either kind are '\n'; positions in it are positions of the document.
    QString PlainText() const;
    /// Undoable; in the format at the caret, in place of what is selected. What passes the limit
    /// is left out.
    void Enter(const QString& text);
    void SetLimit(int characters) { limit_ = characters; }
    int Limit() const { return limit_; }

protected:
    bool canInsertFromMimeData(const QMimeData* source) const override;
    void insertFromMimeData(const QMimeData* source) override;
    QMimeData* createMimeDataFromSelection() const override;

private:
    int Room() const;

    int limit_ = 32767;
};

} // namespace kelvo::desktop
