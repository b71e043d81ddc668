// The dialog for opening a film, worked as a person does: its preview, the note, what it gives.

#include "app/OpenKLVFileDlg.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/drawing.h"
#include "tests/platform/desktop/PersonAtDialog.h"
#include "tests/playback/Films.h"
#include "tests/playback/PlayerWindow.h"

#include <gtest/gtest.h>

#include <atomic>
#include <fstream>

namespace kelvo::test {
namespace {

constexpr char kFilter[] =
    "Multimediali ZUVA|*.kva;*.kvf|Audio Video ZUVA *.kva|*.kva|ZUVA/Filmati "
    "*.kvf|*.kvf|ZUVA/Audio *.kaf|*.kaf|";
constexpr char kTitle[] = "Apertura Filmato";
constexpr COLORREF kBlack = 0;

/// Knows its window, so that a test can look into it.
class SeenDialog : public OpenKLVFileDlg {
public:
    using OpenKLVFileDlg::OpenKLVFileDlg;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        const bool handled = OpenKLVFileDlg::HandleMessage(message, wparam, lparam);
        if (message == WM_DESTROY) ++destroyed;
        return handled;
    }
    /// A place in the preview, in its pixels.
    COLORREF PreviewPixel(LONG x, LONG y) const {
        const HWND view = Preview();
        const HDC context = GetDC(view);
        const COLORREF colour = GetPixel(context, x, y);
        ReleaseDC(view, context);
        return colour;
    }
    SIZE PreviewSize() const {
        RECT client{};
        GetClientRect(Preview(), &client);
        return {client.right, client.bottom};
    }
    /// Empty when it is not there.
    std::string Note() const {
        return IsWindowVisible(Control(104)) ? ControlText(104).Text() : std::string();
    }
    bool ShowsPlaceholder() const {
        const SIZE size = PreviewSize();
        return PreviewPixel(10, 10) == kBlack && PreviewPixel(size.cx - 20, 15) == kBlack &&
               PreviewPixel(15, size.cy - 20) == kBlack && PreviewPixel(5, 5) != kBlack;
    }
    bool ShowsImage(COLORREF colour) const {
        return PreviewPixel(0, 0) == colour && PreviewPixel(PreviewSize().cx / 2, 20) == colour;
    }
    HWND Preview() const { return PreviewArea().Window(); }
    int destroyed = 0;
};

class OpenDialog : public testing::Test {
protected:
    OpenDialog() {
        MakeVideo(folder_.Name("film.kvf"), {.images = 5});
        MakeVideo(folder_.Name("one.kvf"), {.images = 1});
        MakeAudio(folder_.Name("sound.kaf"), {});
        std::ofstream(folder_.Name("bad.kvf").Text()) << "no film";
    }
    CString Run(SeenDialog& dialog, const char* start = "") const {
        return dialog.Run(nullptr, folder_.Name(start), kFilter, kTitle);
    }

    FilmFolder folder_;
    platform::MessageBoxRecorder boxes_;
};

bool PressReturn(QWidget& window) {
    if (!HasFocus(window, *NameEditIn(window))) return false;
    QTest::keyClick(NameEditIn(window), Qt::Key_Return);
    return true;
}
bool WaitForWorkers(QWidget&) {
    return PreviewDecoder::WorkingThreads() == 0;
}

} // namespace

TEST_F(OpenDialog, ShowsTheSelectedFilmAndGivesItsName) {
    SeenDialog dialog;
    const PersonAtDialog person(
        {[&](QWidget& window) {
             EXPECT_EQ(window.windowTitle(), kTitle);
             return dialog.ShowsPlaceholder();
         },
         ClickFile("film.kvf"), [&](QWidget&) { return dialog.ShowsImage(ColourOfImage(0)); },
         [&](QWidget&) {
             EXPECT_EQ(dialog.PreviewSize().cx, dialog.HorizontalPixels(196));
             EXPECT_EQ(dialog.PreviewSize().cy, dialog.VerticalPixels(148));
             EXPECT_EQ(dialog.Note(), "");
             return true;
         },
         ClickFile("bad.kvf"),
         [&](QWidget&) { return dialog.Note() == "File danneggiato o non riconosciuto!"; },
         [&](QWidget&) { return dialog.ShowsPlaceholder(); }, ClickFile("one.kvf"), WaitForWorkers,
         [&](QWidget&) { return dialog.Note().empty() && dialog.ShowsPlaceholder(); },
         ClickFile("film.kvf"), [&](QWidget&) { return dialog.ShowsImage(ColourOfImage(0)); },
         PressReturn});
    EXPECT_EQ(Run(dialog).View(), folder_.Name("film.kvf").View());
    EXPECT_TRUE(boxes_.Texts().empty());
    EXPECT_GE(dialog.destroyed, 1);
}

TEST_F(OpenDialog, BeginsWithTheFilmThatItIsGiven) {
    SeenDialog dialog;
    const PersonAtDialog person({[&](QWidget& window) {
                                     EXPECT_EQ(NameEditIn(window)->text(), "film.kvf");
                                     return dialog.ShowsImage(ColourOfImage(0));
                                 },
                                 Escape});
    EXPECT_TRUE(Run(dialog, "film.kvf").IsEmpty());
}

TEST_F(OpenDialog, NeitherWaitsForASlowFilmNorForItsOwnEnd) {
    const auto release = std::make_shared<std::atomic<bool>>(false);
    const auto slow = [release](const CString& path) {
        while (path.View().ends_with("one.kvf") && !*release)
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        return DecodePreview(path);
    };
    {
        SeenDialog dialog(slow);
        const PersonAtDialog person(
            {ClickFile("one.kvf"), [&](QWidget&) { return dialog.ShowsPlaceholder(); },
             ClickFile("film.kvf"), [&](QWidget&) { return dialog.ShowsImage(ColourOfImage(0)); },
             ClickFile("one.kvf"), PressReturn});
        EXPECT_EQ(Run(dialog).View(), folder_.Name("one.kvf").View());
    }
    EXPECT_EQ(PreviewDecoder::WorkingThreads(), 2) << "both are still held up";
    *release = true;
    EXPECT_TRUE(PumpUntil([] { return PreviewDecoder::WorkingThreads() == 0; }));
}

} // namespace kelvo::test
