#include "platform/base/message_boxes.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using namespace kelvo::platform;

namespace {

constexpr UINT kQuestion = MB_YESNO | MB_ICONQUESTION | MB_TOPMOST;
constexpr UINT kError = MB_OK | MB_ICONHAND | MB_TASKMODAL | MB_TOPMOST;

std::string ConsoleLineOf(LPCSTR text, LPCSTR caption, UINT type, int* answer = nullptr) {
    testing::internal::CaptureStderr();
    const int given = MessageBoxA(nullptr, text, caption, type);
    if (answer != nullptr) *answer = given;
    return testing::internal::GetCapturedStderr();
}

TEST(MessageBoxes, AreOneSafeLineOnAConsole) {
    int answer = 0;
    EXPECT_EQ(ConsoleLineOf("FILE CORROTTO!", "ERRORE", kError, &answer),
              "ERRORE: FILE CORROTTO!\n");
    EXPECT_EQ(answer, IDOK);
    EXPECT_EQ(ConsoleLineOf("Prima riga.\r\n\r\nSECONDA?", "ZFilekel", kQuestion, &answer),
              "ZFilekel: Prima riga. SECONDA?\n");
    EXPECT_EQ(answer, IDNO);
    EXPECT_EQ(ConsoleLineOf("\x1B[2J\x07 è \x7F", "ERRORE", MB_OK), "ERRORE: ?[2J? è ?\n");
    EXPECT_EQ(ConsoleLineOf("\xC2\x9B[2J \xC2\xA0", "ERRORE", MB_OK), "ERRORE: ?[2J \xC2\xA0\n");
    EXPECT_EQ(ConsoleLineOf(nullptr, nullptr, MB_OK), "Errore:\n");
}

TEST(MessageBoxes, GoToTheHandlerWithAllThatWasAsked) {
    MessageBoxRequest seen;
    auto before = SetMessageBoxHandler([&](const MessageBoxRequest& request) {
        seen = request;
        return IDYES;
    });
    auto* const owner = reinterpret_cast<HWND>(&seen);
    EXPECT_EQ(MessageBoxA(owner, "testo", "titolo", kQuestion), IDYES);
    EXPECT_EQ(seen.owner, owner);
    EXPECT_EQ(seen.text, "testo");
    EXPECT_EQ(seen.caption, "titolo");
    EXPECT_EQ(seen.type, kQuestion);
    EXPECT_TRUE(SetMessageBoxHandler(std::move(before)));
}

TEST(MessageBoxes, ARecorderKeepsThemAndAnswersAsTold) {
    MessageBoxRecorder outer;
    {
        MessageBoxRecorder inner;
        inner.AnswerNext({IDYES, 0});
        EXPECT_EQ(MessageBoxA(nullptr, "a", "A", MB_YESNO), IDYES);
        EXPECT_EQ(MessageBoxA(nullptr, "b", "B", MB_OK), 0);
        EXPECT_EQ(MessageBoxA(nullptr, "c", "C", MB_YESNO), IDNO);
        inner.AnswerQuestions(IDYES);
        EXPECT_EQ(MessageBoxA(nullptr, "d", "D", MB_YESNO), IDYES);
        EXPECT_EQ(MessageBoxA(nullptr, "e", "E", MB_OK), IDOK);
        EXPECT_EQ(inner.Texts(), (std::vector<std::string>{"a", "b", "c", "d", "e"}));
        EXPECT_EQ(inner.Boxes()[3].caption, "D");
        inner.Clear();
        EXPECT_TRUE(inner.Boxes().empty());
    }
    EXPECT_TRUE(outer.Boxes().empty());
    MessageBoxA(nullptr, "f", "F", MB_OK);
    EXPECT_EQ(outer.Texts(), std::vector<std::string>{"f"});
}

TEST(MessageBoxes, OfManyThreadsReachTheHandlerOfTheirMoment) {
    std::atomic<int> old_count{0};
    std::atomic<int> new_count{0};
    constexpr int kThreads = 4;
    constexpr int kBoxes = 200;
    auto before = SetMessageBoxHandler([&](const MessageBoxRequest&) {
        ++old_count;
        return IDOK;
    });
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back([] {
            for (int box = 0; box < kBoxes; ++box) {
                EXPECT_EQ(MessageBoxA(nullptr, "x", "X", MB_OK), IDOK);
            }
        });
    }
    SetMessageBoxHandler([&](const MessageBoxRequest&) {
        ++new_count;
        return IDOK;
    });
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(old_count + new_count, kThreads * kBoxes);
    SetMessageBoxHandler(std::move(before));
}

TEST(MessageBoxes, OfACollectingThreadAloneAreKept) {
    MessageBoxRecorder shown;
    std::thread([] {
        const ThreadBoxCollector outer;
        {
            const ThreadBoxCollector inner;
            EXPECT_EQ(MessageBoxA(nullptr, "a", "A", MB_YESNO), IDNO);
            std::thread([] { MessageBoxA(nullptr, "other", "B", MB_OK); }).join();
            ASSERT_EQ(inner.Boxes().size(), 1U);
            EXPECT_EQ(inner.Boxes().front().text, "a");
        }
        EXPECT_EQ(MessageBoxA(nullptr, "c", nullptr, MB_OK), IDOK);
        EXPECT_EQ(outer.Boxes().size(), 1U);
    }).join();
    EXPECT_EQ(shown.Texts(), std::vector<std::string>{"other"});
}

} // namespace
