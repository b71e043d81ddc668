// Message boxes as real windows: their texts, their answers, who may ask.

#include "platform/base/handles.h"
#include "platform/base/message_boxes.h"
#include "platform/base/threads.h"
#include "tests/platform/desktop/RecordingWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QTest>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

using namespace kelvo::desktop;
using testing::ElementsAre;

namespace {

/// Waits for the box, looks at it, and answers it as a person does; driven by a timer of the layer,
/// which thereby shows that timers go on behind an open box.
class Person {
public:
    explicit Person(std::function<void(QMessageBox&)> act) {
        acting_ = std::move(act);
        timer_ = ::SetTimer(nullptr, 0, 10, &Person::Look);
    }
    ~Person() { ::KillTimer(nullptr, timer_); }
    Person(const Person&) = delete;
    Person& operator=(const Person&) = delete;

private:
    static void Look(HWND, UINT, UINT_PTR, DWORD) {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box == nullptr || !box->isVisible() || !acting_) return;
        std::exchange(acting_, nullptr)(*box);
    }
    static inline std::function<void(QMessageBox&)> acting_;
    UINT_PTR timer_ = 0;
};

std::vector<std::string> ButtonsOf(const QMessageBox& box) {
    std::vector<std::string> texts;
    for (const QAbstractButton* button : box.buttons())
        texts.push_back(button->text().toStdString());
    std::ranges::sort(texts);
    return texts;
}

void Press(const QMessageBox& box, const char* text) {
    for (QAbstractButton* button : box.buttons()) {
        if (button->text() == QString::fromUtf8(text)) QTest::mouseClick(button, Qt::LeftButton);
    }
}

} // namespace

TEST(MessageBoxes, ShowTextCaptionAndIconToTheLetter) {
    struct Row {
        UINT type;
        QMessageBox::Icon icon;
        bool on_top;
    };
    const Row rows[] = {
        {MB_ICONHAND | MB_TASKMODAL | MB_TOPMOST, QMessageBox::Critical, true},
        {MB_ICONEXCLAMATION | MB_TOPMOST, QMessageBox::Warning, true},
        {MB_OK, QMessageBox::NoIcon, false},
    };
    for (const Row& row : rows) {
        const Person person([&](QMessageBox& box) {
            EXPECT_EQ(box.text().toStdString(), "è un <b>film</b> & basta");
            EXPECT_EQ(box.textFormat(), Qt::PlainText);
            EXPECT_EQ(box.windowTitle().toStdString(), "ERRORE");
            EXPECT_EQ(box.icon(), row.icon);
            EXPECT_EQ(box.windowFlags().testFlag(Qt::WindowStaysOnTopHint), row.on_top);
            EXPECT_THAT(ButtonsOf(box), ElementsAre("OK"));
            Press(box, "OK");
        });
        EXPECT_EQ(::MessageBoxA(nullptr, "è un <b>film</b> & basta", "ERRORE", row.type), IDOK);
    }
}

TEST(MessageBoxes, AnswerQuestionsAsThePersonDoes) {
    const UINT type = MB_YESNO | MB_ICONQUESTION;
    {
        const Person person([](QMessageBox& box) {
            EXPECT_EQ(box.icon(), QMessageBox::Question);
            EXPECT_THAT(ButtonsOf(box), ElementsAre("No", "Sì"));
            Press(box, "Sì");
        });
        EXPECT_EQ(::MessageBoxA(nullptr, "?", "NECESSARIA CONFERMA", type), IDYES);
    }
    {
        const Person person([](QMessageBox& box) { Press(box, "No"); });
        EXPECT_EQ(::MessageBoxA(nullptr, "?", "NECESSARIA CONFERMA", type), IDNO);
    }
    const Person person([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
    EXPECT_EQ(::MessageBoxA(nullptr, "?", "NECESSARIA CONFERMA", type), IDNO)
        << "to dismiss is no yes";
}

TEST(MessageBoxes, OfAThreadAreShownByTheUiThread) {
    std::atomic<int> result{0};
    std::thread asking(
        [&] { result = ::MessageBoxA(nullptr, "dal lavoro", "?", MB_YESNO | MB_ICONQUESTION); });
    const auto ui = std::this_thread::get_id();
    {
        const Person person([&](QMessageBox& box) {
            EXPECT_EQ(std::this_thread::get_id(), ui);
            Press(box, "Sì");
        });
        EXPECT_TRUE(PumpUntil([&] { return result != 0; }));
    }
    asking.join();
    EXPECT_EQ(result, IDYES);
}

TEST(MessageBoxes, OfAThreadAreAnsweredWhileTheUiThreadWaitsForIt) {
    std::atomic<int> result{0};
    std::thread asking([&] { result = ::MessageBoxA(nullptr, "dal lavoro", "?", MB_OK); });
    // The toolkit's timer: those of the layer rest while the thread waits.
    QTimer person;
    QObject::connect(&person, &QTimer::timeout, [] {
        auto* const box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        if (box != nullptr && box->isVisible()) Press(*box, "OK");
    });
    person.start(10);
    for (int round = 0; round < 5000 && result == 0; ++round)
        ::Sleep(1);
    EXPECT_EQ(result, IDOK);
    EXPECT_TRUE(PumpUntil([&] { return result != 0; })); // or the thread would never end
    asking.join();
}

TEST(MessageBoxes, OfAThreadGoWhenTheThreadIsEnded) {
    const HANDLE thread = ::CreateThread(
        nullptr, 0,
        [](LPVOID) -> DWORD {
            return static_cast<DWORD>(::MessageBoxA(nullptr, "dal lavoro", "?", MB_OK));
        },
        nullptr, 0, nullptr);
    const auto open = [] { return QApplication::activeModalWidget() != nullptr; };
    ASSERT_TRUE(PumpUntil(open));
    EXPECT_TRUE(::TerminateThread(thread, 77));
    DWORD exit_code = 0;
    EXPECT_TRUE(::GetExitCodeThread(thread, &exit_code));
    EXPECT_EQ(exit_code, 77U);
    EXPECT_TRUE(PumpUntil([&] { return !open(); }));
    ::CloseHandle(thread);
}

TEST(MessageBoxes, LetTheQueueRunAndSurviveTheirOwner) {
    RegisterTestClass();
    answer = nullptr;
    const HWND owner = MakeTopLevel(WS_OVERLAPPEDWINDOW | WS_VISIBLE);
    Pump();
    seen.clear();
    ::PostMessageA(owner, WM_USER, 0, 0);
    const Person person([&](QMessageBox& box) {
        EXPECT_EQ(SeenOf(owner, WM_USER).size(), 1U);
        ::DestroyWindow(owner);
        Press(box, "OK");
    });
    EXPECT_EQ(::MessageBoxA(owner, "testo", "titolo", MB_OK), IDOK);
    EXPECT_FALSE(::IsWindow(owner));
    ::UnregisterClassA(kTestClass, nullptr);
}
