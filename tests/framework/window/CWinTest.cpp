#include "tests/framework/window/WindowFixture.h"

#include "framework/base/ChFile.h"

#include <filesystem>

namespace kelvo {
namespace {

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new StartedFramework);

using platform::MessageBoxRecorder;

TEST(Kernel, StartsWithoutItsDefaultPicturesAsLongAsClassesRegister) {
    EXPECT_EQ(StartedFramework::StartResult(), 3);
    EXPECT_EQ(lum.DefaultBitmap(0), nullptr);
    EXPECT_EQ(lum.ResourceIst(), GetModuleHandleA(nullptr));
    EXPECT_EQ(lum.Desktop().Window(), GetDesktopWindow());
}

TEST(Kernel, RefusesClassesWithoutAName) {
    MessageBoxRecorder boxes;
    EXPECT_EQ(lum.RegisterNewClass(lum.Instance(), nullptr, nullptr, nullptr, 0, nullptr, nullptr),
              0);
    EXPECT_EQ(lum.RegisterNewDialogClass(lum.Instance(), nullptr, nullptr, nullptr, 0), 0);
    ASSERT_EQ(boxes.Boxes().size(), 2U);
    EXPECT_EQ(boxes.Boxes()[0].text,
              "LUM::RegisterNewClass() - Tentativo di registrare una classe senza nome");
    EXPECT_EQ(boxes.Boxes()[1].text,
              "LUM::RegisterNewDialogClass() - Tentativo di registrare una classe senza nome");
    EXPECT_EQ(boxes.Boxes()[1].type, MB_OK);
}

TEST(Kernel, KnowsSixteenColours) {
    EXPECT_EQ(LUM::IndexColor(1), 0xFF0000U);
    EXPECT_EQ(LUM::IndexColor(7), 0xC0C0C0U);
    EXPECT_EQ(LUM::IndexColor(13), 0xC080FFU);
    EXPECT_EQ(LUM::IndexColor(15), 0xFFFFFFU);
    EXPECT_EQ(LUM::IndexColor(16), 0U);
    EXPECT_EQ(LUM::IndexColor(-1), 0U);
}

TEST(Kernel, MessageLoopEndsWithTheQuitCode) {
    NotingWindow window;
    window.handler = [](UINT message, WPARAM wparam, LPARAM) {
        if (message == WM_COMMAND) PostQuitMessage(static_cast<int>(wparam));
        return message == WM_COMMAND;
    };
    ASSERT_EQ(window.Create(), 1);
    window.Post(WM_COMMAND, 7, 0);
    EXPECT_EQ(lum.MessageLoop(), 7U);
}

TEST(WindowObject, IsBoundBeforeItsFirstMessageAndUnboundByItsLast) {
    NotingWindow window;
    window.SetPlacement(10, 20, 300, 200);
    window.SetTitle("prova");
    ASSERT_EQ(window.Create(), 1);
    EXPECT_EQ(window.noted.front().message, WM_NCCREATE);
    EXPECT_TRUE(window.HasWindow());
    EXPECT_TRUE(window.WasCreated());
    EXPECT_EQ(window.Left(), 10);
    EXPECT_EQ(window.Top(), 20);
    RECT client{};
    GetClientRect(window.Window(), &client);
    EXPECT_EQ(window.Width(), client.right); // the size that WM_SIZE reported
    EXPECT_EQ(window.Height(), client.bottom);
    EXPECT_EQ(window.ClientSize(),
              static_cast<DWORD>(MAKELONG(static_cast<DWORD_PTR>(client.right),
                                          static_cast<DWORD_PTR>(client.bottom))));
    DestroyWindow(window.Window());
    EXPECT_FALSE(window.HasWindow());
    EXPECT_EQ(window.Count(WM_DESTROY), 1);
    EXPECT_EQ(window.Create(), 1); // again
}

TEST(WindowObject, MayBeDeletedByWhatItHandles) {
    for (const UINT at : {UINT{WM_COMMAND}, UINT{WM_DESTROY}, UINT{WM_NCDESTROY}}) {
        auto* const object = new NotingWindow;
        ASSERT_EQ(object->Create(), 1);
        const HWND window = object->Window();
        object->handler = [object, at](UINT message, WPARAM, LPARAM) {
            if (message != at) return false;
            auto* const self = object; // the closure goes with it
            delete self;
            return true;
        };
        SendMessageA(window, WM_COMMAND, 1, 0);
        DestroyWindow(window);
        EXPECT_EQ(IsWindow(window), FALSE);
    }
}

TEST(WindowObject, ReturnsTheMessageResultOnlyForWhatItHandled) {
    NotingWindow window;
    ASSERT_EQ(window.Create(), 1);
    window.handler = [&window](UINT message, WPARAM, LPARAM) {
        if (message == WM_USER) window.SetMessageResult(42);
        return message >= WM_USER && message < WM_USER + 2;
    };
    EXPECT_EQ(window.Send(WM_USER, 0, 0), 42);
    EXPECT_EQ(window.Send(WM_USER + 1, 0, 0), 1);
    EXPECT_EQ(window.Send(WM_USER + 2, 0, 0), 0);
}

TEST(WindowObject, SaysWhyItCouldNotBeCreated) {
    NotingWindow window;
    window.SetWindowClass("NOSUCHCLASS");
    window.SetTitle("titolo");
    MessageBoxRecorder boxes;
    EXPECT_EQ(window.Create(), 0);
    EXPECT_EQ(window.Create(GetDesktopWindow()), 0);
    ASSERT_EQ(boxes.Boxes().size(), 2U);
    EXPECT_EQ(boxes.Boxes()[0].caption, "FINESTRA NON CREATA CWin::Create(void)");
    EXPECT_EQ(boxes.Boxes()[0].text.find("Classe : <NOSUCHCLASS>, Titolo <titolo>, Istanza <"), 0U);
    EXPECT_EQ(boxes.Boxes()[1].caption, "FINESTRA NON CREATA CWin::Create(HWND)");
    EXPECT_EQ(boxes.Boxes()[1].text, "Classe : NOSUCHCLASS,  Titolo : titolo,  ");
    EXPECT_FALSE(window.HasWindow());
}

TEST(WindowObject, SavesTwentyFiveBytesAndReadsThemBack) {
    const std::string path =
        (std::filesystem::temp_directory_path() / ("kelvo-window-" + std::to_string(getpid())))
            .string();
    CWin window;
    window.SetBackgroundColour(0x00112233);
    window.SetExtendedStyle(0x44);
    window.SetPlacement(-5, 6, 700, 80);
    window.SetPaintBackground(true);
    {
        ChFile file;
        ASSERT_TRUE(file.CreateFresh(path.c_str()));
        EXPECT_TRUE(window.Save(file));
        EXPECT_EQ(file.Position(), 25);
        file.CloseFile();
    }
    CWin loaded;
    ChFile file;
    ASSERT_TRUE(file.OpenReadOnly(path.c_str()));
    std::array<std::uint8_t, 25> bytes{};
    ASSERT_TRUE(file.ReadAll(bytes));
    const std::array<std::uint8_t, 25> expected = {0x33, 0x22, 0x11, 0, 0x44, 0, 0, 0,  0xFB,
                                                   0xFF, 0xFF, 0xFF, 6, 0,    0, 0, 80, 0,
                                                   0,    0,    0xBC, 2, 0,    0, 1};
    EXPECT_EQ(bytes, expected);
    ASSERT_TRUE(file.Seek(0));
    EXPECT_TRUE(loaded.Load(file));
    EXPECT_EQ(loaded.BackgroundColour(), 0x00112233U);
    EXPECT_EQ(loaded.ExtendedStyle(), 0x44U);
    EXPECT_EQ(loaded.Left(), -5);
    EXPECT_EQ(loaded.Height(), 80);
    EXPECT_EQ(loaded.Width(), 700);
    EXPECT_TRUE(loaded.PaintsBackground());
    EXPECT_FALSE(loaded.Load(file)); // nothing is left
    file.CloseFile();
    std::filesystem::remove(path);
}

TEST(WindowObject, PaintsItsBackgroundColourWhenAsked) {
    CWin window;
    window.SetBackgroundColour(RGB(10, 20, 200));
    window.SetPaintBackground(true);
    ASSERT_EQ(window.Create(), 1);
    lum.ProcessMessages();
    EXPECT_EQ(PixelOf(window, 5, 5), RGB(10, 20, 200));
}

struct AnchorCase {
    const char* name;
    AnchorMargins margins;
    LONG left, top, width, height;
};
class Anchors : public testing::TestWithParam<AnchorCase> {};

// The child is 50 x 40 at (3, 4) before; the client area 400 x 300.
const AnchorCase kAnchorCases[] = {
    {"StretchAcrossAndStickToTheBottom", {10, 10, -1, 5}, 10, 300 - 40 - 5, 380, 40},
    {"FillEverythingBelowAStrip", {0, 0, 24, 0}, 0, 24, 400, 276},
    {"StickToTheRight", {-1, 7, 2, -1}, 400 - 50 - 7, 2, 50, 40},
    {"LeaveEverythingFree", {-1, -1, -1, -1}, 3, 4, 50, 40},
};

TEST_P(Anchors, PlaceTheChild) {
    CWin parent;
    parent.SetStyle(WS_POPUP | WS_VISIBLE);
    parent.SetPlacement(0, 0, 400, 300);
    ASSERT_EQ(parent.Create(), 1);
    CWin child;
    EXPECT_EQ(child.ApplyAnchors(GetParam().margins), 0); // neither parent nor window
    child.SetParent(&parent);
    child.SetStyle(WS_CHILD | WS_VISIBLE);
    child.SetPlacement(3, 4, 50, 40);
    ASSERT_EQ(child.Create(), 1);
    child.SetAnchors(GetParam().margins);
    EXPECT_EQ(child.ReapplyAnchors(), 1);
    EXPECT_EQ(child.Left(), GetParam().left);
    EXPECT_EQ(child.Top(), GetParam().top);
    EXPECT_EQ(child.Width(), GetParam().width);
    EXPECT_EQ(child.Height(), GetParam().height);
    RECT client{};
    GetClientRect(child.Window(), &client);
    EXPECT_EQ(client.right, GetParam().width);
    EXPECT_EQ(client.bottom, GetParam().height);
}
INSTANTIATE_TEST_SUITE_P(All, Anchors, testing::ValuesIn(kAnchorCases),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(WindowObject, IsCentredOnTheScreenAndCutToIt) {
    CWin window;
    ASSERT_EQ(window.Create(), 1);
    EXPECT_EQ(window.CentreOnScreen(200, 100), 1);
    RECT place{};
    GetWindowRect(window.Window(), &place); // the screen is 800 x 800
    EXPECT_EQ(place.left, 300);
    EXPECT_EQ(place.top, 350);
    window.CentreOnScreen(2000, 0);
    GetWindowRect(window.Window(), &place);
    EXPECT_EQ(place.left, 0);
    EXPECT_EQ(place.right, 800);
    EXPECT_EQ(place.bottom - place.top, 100); // below 1: the window's own
}

// --- the modal loop ----------------------------------------------------------------------------

TEST(ModalLoop, EndsWithTheResultAndDestroysTheWindow) {
    NotingWindow window;
    window.handler = [&window](UINT message, WPARAM, LPARAM) {
        if (message == WM_CREATE) window.EndModal(7);
        return false;
    };
    EXPECT_EQ(window.ModalRun(nullptr), 7);
    EXPECT_FALSE(window.HasWindow());
}

TEST(ModalLoop, EndsAlsoWhenAnotherLoopTakesItsEnd) {
    NotingWindow window;
    window.handler = [&window](UINT message, WPARAM, LPARAM) {
        if (message == WM_CREATE) window.Post(WM_COMMAND, 0, 0);
        if (message == WM_COMMAND) {
            window.EndModal(7);
            lum.ProcessMessages(); // as long work does between its steps
        }
        return false;
    };
    EXPECT_EQ(window.ModalRun(nullptr), 7);
    EXPECT_FALSE(window.HasWindow());
}

TEST(ModalLoop, EndsWithZeroWhenTheWindowIsClosed) {
    NotingWindow window;
    window.handler = [&window](UINT message, WPARAM, LPARAM) {
        if (message == WM_CREATE) window.Post(WM_CLOSE, 0, 0);
        return false;
    };
    EXPECT_EQ(window.ModalRun(nullptr), 0);
    EXPECT_FALSE(window.HasWindow());
    EXPECT_EQ(window.Count(WM_DESTROY), 1);
}

TEST(ModalLoop, OutlivesAQuitAndEndsWithItsWindow) {
    NotingWindow window;
    bool survived = false;
    window.handler = [&](UINT message, WPARAM wparam, LPARAM) {
        if (message == WM_CREATE) {
            CWin::Quit();
            SetTimer(window.Window(), 1, 10, nullptr);
        }
        if (message == WM_TIMER && wparam == 1) {
            survived = true;
            DestroyWindow(window.Window()); // by somebody else than the loop
        }
        return message == WM_TIMER;
    };
    EXPECT_EQ(window.ModalRun(nullptr), 0);
    EXPECT_TRUE(survived);
}

TEST(ModalLoop, LeavesTheOwnerOnlyItsPaintingAndOthersAlive) {
    NotingWindow owner;
    ASSERT_EQ(owner.Create(), 1);
    NotingWindow stranger;
    ASSERT_EQ(stranger.Create(), 1);
    lum.ProcessMessages();
    NotingWindow modal;
    modal.handler = [&](UINT message, WPARAM, LPARAM) {
        if (message == WM_CREATE) {
            owner.Post(WM_LBUTTONDOWN, 0, 0);
            owner.Post(WM_USER, 0, 0);
            InvalidateRect(owner.Window(), nullptr, TRUE);
            stranger.Post(WM_USER, 0, 0);
            SetTimer(modal.Window(), 1, 50, nullptr);
        }
        if (message == WM_TIMER) modal.EndModal(1);
        return message == WM_TIMER;
    };
    owner.noted.clear();
    EXPECT_EQ(modal.ModalRun(&owner), 1);
    EXPECT_EQ(owner.Count(WM_LBUTTONDOWN), 0);
    EXPECT_EQ(owner.Count(WM_USER), 0);
    EXPECT_EQ(owner.Count(WM_PAINT), 1);
    EXPECT_EQ(stranger.Count(WM_USER), 1);
}

} // namespace
} // namespace kelvo
