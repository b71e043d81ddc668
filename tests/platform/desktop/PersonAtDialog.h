#pragma once
// Somebody who works a dialog of the toolkit's: waits until it is there, then does what a test
// says, step by step. Driven by a timer of the layer, which thereby goes on behind the open dialog.

#include "platform/desktop/messages.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QTest>

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <utility>
#include <vector>

namespace kelvo::test {

class PersonAtDialog {
public:
    /// One step: returns whether it is done; until then it is tried again.
    using Step = std::function<bool(QWidget& dialog)>;

    explicit PersonAtDialog(std::vector<Step> steps) {
        steps_ = std::move(steps);
        next_ = 0;
        give_up_ = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        timer_ = ::SetTimer(nullptr, 0, 10, &PersonAtDialog::Look);
    }
    ~PersonAtDialog() {
        ::KillTimer(nullptr, timer_);
        EXPECT_EQ(next_, steps_.size()) << "steps that came to their end";
        steps_.clear();
    }
    PersonAtDialog(const PersonAtDialog&) = delete;
    PersonAtDialog& operator=(const PersonAtDialog&) = delete;

private:
    static void Look(HWND, UINT, UINT_PTR, DWORD) {
        QWidget* const dialog = QApplication::activeModalWidget();
        if (dialog == nullptr || !dialog->isVisible() || in_step_) return;
        if (std::chrono::steady_clock::now() > give_up_) { // or the test would never end
            for (QWidget* widget : QApplication::topLevelWidgets())
                widget->close();
            return;
        }
        if (next_ >= steps_.size()) return;
        in_step_ = true;
        const std::size_t step = next_++; // it may end the dialog, and the person with it
        const bool done = steps_[step](*dialog);
        in_step_ = false;
        if (!done) next_ = step;
    }
    static inline std::vector<Step> steps_;
    static inline std::size_t next_ = 0;
    static inline bool in_step_ = false;
    static inline std::chrono::steady_clock::time_point give_up_;
    UINT_PTR timer_ = 0;
};

inline QFileDialog* FileDialogIn(QWidget& window) {
    auto* const dialog = qobject_cast<QFileDialog*>(&window);
    return dialog != nullptr ? dialog : window.findChild<QFileDialog*>();
}
inline QLineEdit* NameEditIn(QWidget& window) {
    return window.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
}
/// Replaces the name that stands there.
inline void TypeName(QWidget& window, const QString& name) {
    QLineEdit* const edit = NameEditIn(window);
    edit->setFocus();
    edit->selectAll();
    QTest::keyClick(edit, Qt::Key_Delete);
    QTest::keyClicks(edit, name);
}
/// Keys go where a person's would: to the window in front.
inline bool HasFocus(QWidget& window, QWidget& widget) {
    window.activateWindow();
    widget.setFocus();
    return widget.hasFocus();
}
inline PersonAtDialog::Step TypeAndEnter(QString name) {
    return [name = std::move(name)](QWidget& window) {
        if (!HasFocus(window, *NameEditIn(window))) return false;
        TypeName(window, name);
        QTest::keyClick(NameEditIn(window), Qt::Key_Return);
        return true;
    };
}
inline bool Escape(QWidget& window) {
    QTest::keyClick(NameEditIn(window), Qt::Key_Escape);
    return true;
}
/// Clicks a file in the list, once the list shows it.
inline PersonAtDialog::Step ClickFile(QString name) {
    return [name = std::move(name)](QWidget& window) {
        auto* const list =
            FileDialogIn(window)->findChild<QAbstractItemView*>(QStringLiteral("listView"));
        const QModelIndex root = list->rootIndex();
        for (int row = 0; row < list->model()->rowCount(root); ++row) {
            const QModelIndex index = list->model()->index(row, 0, root);
            if (index.data().toString() != name) continue;
            list->scrollTo(index);
            QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier,
                              list->visualRect(index).center());
            return true;
        }
        return false;
    };
}

} // namespace kelvo::test
