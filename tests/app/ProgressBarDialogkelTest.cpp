// The progress dialogs, and the player's behind the seam of long work.

#include "tests/playback/Films.h"
#include "tests/playback/PlayerWindow.h"

#include "app/ProgressBarDialogkel.h"
#include "container/ZFilekel.h"
#include "framework/base/ProgressDisplay.h"
#include "platform/base/clock.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/messages.h"

#include <QApplication>
#include <QWidget>

#include <chrono>
#include <thread>

namespace kelvo {
namespace {

using namespace test;
using namespace std::chrono_literals;

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new StartedFramework);

std::string Times(const CDialog& dialog) {
    std::string times;
    for (const int id : {101, 102, 103}) {
        times += dialog.ControlText(id).c_str();
        times += '|';
    }
    return times;
}

TEST(ProgressDialog, ShowsItsTimesFromTheSecondUpdateOn) {
    platform::ManualClock clock(7s);
    ProgressBarDialoglum dialog;
    ASSERT_EQ(dialog.Start(nullptr, "Copia in corso..."), 1);
    EXPECT_EQ(dialog.Start(nullptr, "Copia in corso..."), 0); // it is there already
    clock.Advance(3s);
    EXPECT_TRUE(dialog.Update(3, 90)); // the times begin here
    EXPECT_EQ(Times(dialog), "00:00|00:00|00:00|");
    clock.Advance(90s);
    EXPECT_TRUE(dialog.Update(30, 90));
    EXPECT_EQ(Times(dialog), "01:30 |04:30 |03:00 |");
    clock.Advance(100min);
    EXPECT_TRUE(dialog.Update(45, 90));
    EXPECT_EQ(Times(dialog), "101:30 |203:00 |101:30 |");
    dialog.SetTitle("E adesso..."); // begins anew
    clock.Advance(5s);
    EXPECT_TRUE(dialog.Update(50, 90));
    clock.Advance(2s);
    EXPECT_TRUE(dialog.Update(60, 90));
    EXPECT_EQ(Times(dialog), "00:02 |00:03 |00:01 |");
    EXPECT_TRUE(dialog.Update(0, 90));
    clock.Advance(1s);
    EXPECT_TRUE(dialog.Update(1, 2'000'000'000)); // no time wraps
    dialog.Close();
    EXPECT_FALSE(dialog.HasWindow());
    EXPECT_TRUE(dialog.Update(80, 90)); // nothing to show, nobody stopped
}

struct CancelCase {
    const char* name;
    void (*cancel)(const CDialog& dialog);
    bool goes_on;
};
class CancelledDialog : public testing::TestWithParam<CancelCase> {};
const CancelCase kCancelCases[] = {
    {"ByItsButton", [](const CDialog& dialog) { PostMessageA(dialog.Control(2), BM_CLICK, 0, 0); },
     false},
    {"ByEscape",
     [](const CDialog& dialog) { PostMessageA(dialog.Control(2), WM_KEYDOWN, VK_ESCAPE, 0); },
     false},
    {"ByItsCloseButton", [](const CDialog& dialog) { dialog.Post(WM_CLOSE, 0, 0); }, false},
    {"NotByTheWorksOwnEnd", [](const CDialog& dialog) { dialog.Post(WM_COMMAND, 45, 0); }, true},
};
TEST_P(CancelledDialog, SaysSoWithTheNextUpdateAndGoes) {
    ProgressBarDialogkel dialog;
    ASSERT_EQ(dialog.Start(nullptr, "Ricostruzione indici..."), 1);
    EXPECT_TRUE(dialog.Update(0, 10));
    GetParam().cancel(dialog);
    EXPECT_EQ(dialog.Update(1, 10), GetParam().goes_on);
    EXPECT_FALSE(dialog.HasWindow());
    EXPECT_EQ(dialog.Update(2, 10), GetParam().goes_on);
    ASSERT_EQ(dialog.Start(nullptr, "Ricostruzione indici..."), 1);
    EXPECT_TRUE(dialog.Update(0, 10)); // a new run knows nothing of the old one
    dialog.Close();
}
INSTANTIATE_TEST_SUITE_P(All, CancelledDialog, testing::ValuesIn(kCancelCases),
                         [](const auto& test) { return std::string(test.param.name); });

/// What stands on the screen with that title.
QWidget* Shown(const char* title) {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (widget->isVisible() && widget->windowTitle() == title) return widget;
    }
    return nullptr;
}

TEST(ProgressSeam, ShowsThePlayersDialogWhenAChangedFileIsClosed) {
    const FilmFolder folder;
    const CString name = folder.Name("film.kvf");
    MakeVideo(name, {.images = 35, .type = 9});
    PlayerWindow window;
    ASSERT_EQ(window.Create(), 1);
    const ProgressDialogs dialogs(window);
    platform::MessageBoxRecorder boxes;
    boxes.AnswerQuestions(IDYES);
    ZFilekel file;
    ASSERT_TRUE(file.OpenExisting(name));
    ASSERT_TRUE(file.DeleteRecords(0, 1));
    int seen = 0;
    window.on_notification = [&](int, INT_PTR, INT_PTR) {
        if (Shown("Ricompressione in chiusura...") != nullptr) ++seen;
    };
    // A message of the window's, which the dialog's first update dispatches.
    CProgressBar bar;
    bar.SetParent(&window);
    bar.SetStyle(WS_CHILD | WS_VISIBLE);
    ASSERT_EQ(bar.Create(), 1);
    PostMessageA(bar.Window(), WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(1, 1));
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(seen, 1);
    EXPECT_EQ(Shown("Ricompressione in chiusura..."), nullptr);
    ASSERT_TRUE(file.OpenForRead(name));
    EXPECT_EQ(file.RecordCount(), 34U);
    EXPECT_TRUE(file.Close());
}

TEST(ProgressSeam, ShowsNothingForAnotherThreadAndNothingOnceItIsGone) {
    PlayerWindow window;
    {
        const ProgressDialogs dialogs(window);
        std::thread([] {
            const auto display = ShowProgress("Altrove...");
            EXPECT_TRUE(display->Update(1, 2));
        }).join();
        EXPECT_EQ(Shown("Altrove..."), nullptr);
        const auto display = ShowProgress("Qui...");
        EXPECT_TRUE(display->Update(1, 2));
        EXPECT_NE(Shown("Qui..."), nullptr);
        display->Close();
        EXPECT_TRUE(display->Update(1, 2));
        EXPECT_EQ(Shown("Qui..."), nullptr);
    }
    EXPECT_TRUE(ShowProgress("Poi...")->Update(1, 2));
    EXPECT_EQ(Shown("Poi..."), nullptr);
}

} // namespace
} // namespace kelvo
