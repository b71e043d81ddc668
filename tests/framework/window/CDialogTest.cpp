#include "framework/window/CDialog.h"
#include "framework/window/WindowProcedures.h"
#include "platform/base/threads.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/menus.h"
#include "tests/framework/window/WindowFixture.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QMenuBar>
#include <QTest>

#include <functional>
#include <string>
#include <thread>

namespace kelvo {
namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new StartedFramework);

constexpr UINT kStep = WM_USER + 100; ///< posted by a test to itself, to go on inside of a loop

/// A dialog that notes what reaches its slots and does what a test tells it.
class NotingDialog : public CDialog {
public:
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        messages.push_back(message);
        if (CDialog::HandleMessage(message, wparam, lparam)) return true;
        return handler && handler(message, wparam, lparam);
    }
    bool HandleClassMessage(UINT message, WPARAM /*wparam*/, LPARAM /*lparam*/) override {
        if (message != class_message) return false;
        SetMessageResult(31);
        return true;
    }
    bool OnSelectionChanged(HWND, int id, int index) override {
        return Note("selection", id, index);
    }
    bool OnDoubleClick(HWND, int id, int index) override { return Note("double", id, index); }
    bool OnDropDown(HWND, int id) override { return Note("drop", id, 0); }
    bool OnCloseUp(HWND, int id) override { return Note("close", id, 0); }
    bool OnNotification3(HWND, int id) override { return Note("three", id, 0); }
    bool OnNotification4(HWND, int id) override { return Note("four", id, 0); }
    bool PreTranslate(MSG* message) override { return pre_translate && pre_translate(*message); }
    int Count(UINT message) const {
        return static_cast<int>(std::ranges::count(messages, message));
    }
    using CDialog::MessageResult;

    std::function<bool(UINT, WPARAM, LPARAM)> handler;
    std::function<bool(const MSG&)> pre_translate;
    UINT class_message = WM_USER + 77;
    std::vector<UINT> messages;
    std::vector<std::string> notes;

private:
    bool Note(const char* what, int id, int index) {
        notes.push_back(std::string(what) + " " + std::to_string(id) + " " + std::to_string(index));
        return true;
    }
};

/// Lets the dialog do this as soon as its loop runs.
void InLoop(NotingDialog& dialog, std::function<void()> step) {
    dialog.handler = [&dialog, step = std::move(step)](UINT message, WPARAM, LPARAM) {
        if (message == WM_INITDIALOG) dialog.Post(kStep, 0, 0);
        if (message == kStep) step();
        return message == kStep;
    };
}

LRESULT Notify(const CDialog& dialog, UINT code, int id, HWND control) {
    return dialog.Send(WM_COMMAND, MAKEWPARAM(static_cast<WORD>(id), code),
                       reinterpret_cast<LPARAM>(control));
}

COLORREF DrawnPixel(HWND window, int x, int y) {
    UpdateWindow(window);
    const HDC context = GetDC(window);
    const COLORREF colour = GetPixel(context, x, y);
    ReleaseDC(window, context);
    return colour;
}

TEST(DialogObject, SaysWhyItCannotBeMade) {
    MessageBoxRecorder boxes;
    CDialog dialog;
    EXPECT_EQ(dialog.CreateDlg(), 0);
    EXPECT_EQ(dialog.CreateDlg("NoSuchTemplate"), 0);
    EXPECT_EQ(dialog.CreateDlg("BROKEN"), 0);
    EXPECT_EQ(dialog.ModalRun(nullptr, "BROKEN"), 0);
    ASSERT_EQ(boxes.Boxes().size(), 4U);
    EXPECT_EQ(boxes.Boxes()[0].text,
              "CDialog::CreateDlg() è stata chiamata senza nome risorsa. CHIAMARE "
              "CDialog::CreateDlg() CON UN NOME RISORSA OPPURE IMPOSTARLA PRIMA DELLA CHIAMTA A "
              "CDialog::CreateDlg() TRAMITE LA FUNZIONE: CDialog::ResourceName()");
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
    EXPECT_EQ(boxes.Boxes()[1].text, "Risorsa: NoSuchTemplate");
    EXPECT_EQ(boxes.Boxes()[1].caption, "Risorsa non trovata!");
    EXPECT_EQ(boxes.Boxes()[2].text, "Classe : LUMBASECLS,  Titolo : ,  ");
    EXPECT_EQ(boxes.Boxes()[2].caption, "FINESTRA NON CREATA CDialog::Create(void)");
    EXPECT_FALSE(dialog.HasWindow());
    EXPECT_FALSE(dialog.RunsModally());
}

TEST(DialogObject, NeedsAStartedKernelWithAResourceModule) {
    MessageBoxRecorder boxes;
    const HMODULE module = lum.ResourceIst();
    lum.SetDllIst(nullptr);
    CDialog dialog;
    EXPECT_EQ(dialog.CreateDlg("ASKING"), 0);
    lum.SetDllIst(module);
    ASSERT_EQ(boxes.Boxes().size(), 1U);
    EXPECT_EQ(boxes.Boxes()[0].text, "CHIAMARE lum.SetDllIst() prima di creare oggetti CDialog!");
}

TEST(DialogObject, IsFoundInWhateverLanguageItsTemplateHas) {
    CDialog dialog;
    EXPECT_EQ(dialog.CreateDlg("GERMANONLY"), 1);
}

TEST(DialogObject, IsBoundAtItsBeginningAndFreeAfterItsEnd) {
    NotingDialog dialog;
    dialog.SetTitle("Titolo nuovo");
    ASSERT_EQ(dialog.CreateModeless(nullptr, "ASKING"), 1);
    EXPECT_EQ(dialog.CreateModeless(nullptr), 0);
    EXPECT_EQ(dialog.messages.front(), UINT{WM_INITDIALOG});
    EXPECT_EQ(GetWindowLongPtrA(dialog.Window(), kDialogObjectOffset),
              reinterpret_cast<LONG_PTR>(static_cast<CDialog*>(&dialog)));
    char title[64];
    GetWindowTextA(dialog.Window(), title, sizeof title);
    EXPECT_STREQ(title, "Titolo nuovo");
    EXPECT_EQ(dialog.Send(WM_USER + 77, 0, 0), 31); // its class's own handler
    dialog.EndDialog(0);
    EXPECT_FALSE(dialog.HasWindow());
    EXPECT_EQ(dialog.Count(WM_DESTROY), 1);
    ASSERT_EQ(dialog.CreateModeless(nullptr), 1); // again, under its stored name
    EXPECT_EQ(IsWindowVisible(dialog.Window()), TRUE);
}

TEST(DialogObject, RunsUntilItIsEndedWithAResult) {
    NotingDialog dialog;
    dialog.handler = [&](UINT message, WPARAM wparam, LPARAM) {
        if (message == WM_INITDIALOG) {
            PostMessageA(GetDlgItem(dialog.Window(), 1), BM_CLICK, 0, 0);
        }
        if (message == WM_COMMAND && LOWORD(wparam) == 1) dialog.EndDialog(5);
        return message == WM_COMMAND;
    };
    EXPECT_EQ(dialog.ModalRun(nullptr, "ASKING"), 5);
    EXPECT_FALSE(dialog.HasWindow());
    EXPECT_EQ(IsWindow(dialog.Window()), FALSE);
    EXPECT_EQ(dialog.ModalRun(nullptr), 5); // and again
}

TEST(DialogObject, EndsByAMessageOfAnotherThreadAndAsItBegins) {
    NotingDialog dialog;
    std::thread worker;
    InLoop(dialog, [&] {
        worker = std::thread(
            [window = dialog.Window()] { PostMessageA(window, kEndDialogMessage, 0, 44); });
    });
    EXPECT_EQ(dialog.ModalRun(nullptr, "ASKING"), 44);
    worker.join();
    dialog.handler = [&](UINT message, WPARAM, LPARAM) {
        if (message == WM_INITDIALOG) dialog.EndDialog(6);
        return false;
    };
    EXPECT_EQ(dialog.ModalRun(nullptr), 6);
}

TEST(DialogObject, LosesNoEndThatAnotherLoopTakes) {
    NotingDialog dialog;
    InLoop(dialog, [&] {
        dialog.EndDialog(9);
        lum.ProcessMessages();
    });
    EXPECT_EQ(dialog.ModalRun(nullptr, "ASKING"), 9);
    InLoop(dialog, [&] { DestroyWindow(dialog.Window()); });
    EXPECT_EQ(dialog.ModalRun(nullptr), 0); // nobody would ever end it
}

TEST(DialogObject, LosesNoEndThatComesWhileAnotherDialogRunsAboveIt) {
    NotingDialog below;
    NotingDialog above;
    InLoop(above, [&] {
        std::thread([window = below.Window()] {
            PostMessageA(window, kEndDialogMessage, 0, 77);
        }).join();
        above.EndDialog(3);
    });
    LPARAM above_gave = 0;
    InLoop(below, [&] {
        above_gave = above.ModalRun(&below, "ASKING");
        below.EndDialog(1); // behind the worker's
    });
    EXPECT_EQ(below.ModalRun(nullptr, "ASKING"), 77);
    EXPECT_EQ(above_gave, 3);
}

TEST(DialogObject, MayBeDeletedByWhatItHandles) {
    for (const UINT at : {UINT{WM_COMMAND}, UINT{WM_DESTROY}}) {
        auto* const dialog = new NotingDialog;
        ASSERT_EQ(dialog->CreateModeless(nullptr, "ASKING"), 1);
        const HWND window = dialog->Window();
        dialog->handler = [dialog, at](UINT message, WPARAM, LPARAM) {
            if (message != at) return false;
            auto* const self = dialog; // the closure goes with it
            delete self;
            return true;
        };
        SendMessageA(GetDlgItem(window, 1), BM_CLICK, 0, 0);
        DestroyWindow(window);
        EXPECT_EQ(IsWindow(window), FALSE);
    }
}

TEST(DialogObject, DoesNotEndByAQuit) {
    NotingDialog dialog;
    int steps = 0;
    InLoop(dialog, [&] {
        if (steps++ == 0) {
            CWin::Quit();
            SetTimer(dialog.Window(), 5, 10, nullptr);
        }
    });
    dialog.pre_translate = [&](const MSG& message) {
        if (message.message == WM_TIMER) dialog.EndDialog(3);
        return false;
    };
    EXPECT_EQ(dialog.ModalRun(nullptr, "ASKING"), 3);
}

TEST(DialogObject, KeepsItsOwnersSideInertAndOthersAlive) {
    NotingWindow owner;
    NotingWindow other;
    ASSERT_EQ(owner.Create(), 1);
    ASSERT_EQ(other.Create(), 1);
    lum.ProcessMessages();
    owner.noted.clear();
    NotingDialog dialog;
    InLoop(dialog, [&] {
        owner.Post(WM_LBUTTONDOWN, 0, 0);
        owner.Post(WM_KEYDOWN, 'A', 0);
        owner.Post(WM_USER + 1, 0, 0);
        owner.Post(WM_SYSCOMMAND, 0, 0);
        InvalidateRect(owner.Window(), nullptr, TRUE);
        other.Post(WM_USER + 2, 0, 0);
        SetFocus(owner.Window());
        SetTimer(dialog.Window(), 5, 30, nullptr);
    });
    int keyboard_id = 0;
    dialog.pre_translate = [&](const MSG& message) {
        if (message.hwnd != dialog.Window() || message.message != WM_TIMER) return false;
        keyboard_id = GetDlgCtrlID(GetFocus());
        dialog.EndDialog(1);
        return false;
    };
    EXPECT_EQ(dialog.ModalRun(&owner, "ASKING"), 1);
    EXPECT_EQ(owner.Count(WM_LBUTTONDOWN), 0);
    EXPECT_EQ(owner.Count(WM_KEYDOWN), 0);
    EXPECT_EQ(owner.Count(WM_USER + 1), 0);
    EXPECT_EQ(owner.Count(WM_SYSCOMMAND), 1);
    EXPECT_GE(owner.Count(WM_PAINT), 1);
    EXPECT_EQ(other.Count(WM_USER + 2), 1);
    EXPECT_EQ(keyboard_id, 101); // it went back to the dialog's first control
}

TEST(ModalWindows, KeepTheirOwnersMenusClosedWhileTheyRun) {
    NotingWindow owner;
    const HMENU menu = CreateMenu();
    const HMENU file = CreatePopupMenu();
    AppendMenuA(file, MF_STRING, 300, "Apri");
    AppendMenuA(menu, MF_POPUP, reinterpret_cast<UINT_PTR>(file), "File");
    owner.SetMenuHandle(menu);
    ASSERT_EQ(owner.Create(), 1);
    lum.ProcessMessages();
    QMenuBar* bar = nullptr;
    for (QWidget* window : QApplication::topLevelWidgets()) {
        if (auto* const found = window->findChild<QMenuBar*>()) bar = found;
    }
    ASSERT_NE(bar, nullptr);
    const auto press_opens = [bar] {
        QTest::mousePress(bar, Qt::LeftButton, {}, bar->actionGeometry(bar->actions()[0]).center());
        QWidget* const popup = QApplication::activePopupWidget();
        if (popup != nullptr) popup->close();
        return popup != nullptr;
    };
    NotingDialog dialog;
    bool has_opened = true;
    InLoop(dialog, [&] {
        has_opened = press_opens();
        dialog.EndDialog(1);
    });
    EXPECT_EQ(dialog.ModalRun(&owner, "ASKING"), 1);
    EXPECT_FALSE(has_opened);
    EXPECT_TRUE(press_opens());
    NotingWindow window;
    window.handler = [&](UINT message, WPARAM, LPARAM) {
        if (message == WM_CREATE) window.Post(kStep, 0, 0);
        if (message != kStep) return false;
        has_opened = press_opens();
        window.EndModal(2);
        return true;
    };
    EXPECT_EQ(window.ModalRun(&owner), 2);
    EXPECT_FALSE(has_opened);
    EXPECT_TRUE(press_opens());
}

TEST(DialogObject, MayLeaveItsOwnerUnpaintedUntilItEnds) {
    NotingWindow owner;
    ASSERT_EQ(owner.Create(), 1);
    lum.ProcessMessages();
    owner.noted.clear();
    NotingDialog dialog;
    dialog.SetOptions(1);
    InLoop(dialog, [&] {
        InvalidateRect(owner.Window(), nullptr, TRUE);
        SetTimer(dialog.Window(), 5, 30, nullptr);
    });
    dialog.pre_translate = [&](const MSG& message) {
        if (message.message == WM_TIMER) dialog.EndDialog(1);
        return false;
    };
    EXPECT_EQ(dialog.ModalRun(&owner, "ASKING"), 1);
    EXPECT_EQ(owner.Count(WM_PAINT), 0);
    lum.ProcessMessages();
    EXPECT_EQ(owner.Count(WM_PAINT), 1);
}

TEST(DialogObject, TakesAwayWhatItsPreTranslateTakes) {
    NotingDialog dialog;
    InLoop(dialog, [&] {
        dialog.Post(WM_USER + 1, 0, 0);
        dialog.EndDialog(1);
    });
    dialog.pre_translate = [](const MSG& message) { return message.message == WM_USER + 1; };
    dialog.ModalRun(nullptr, "ASKING");
    EXPECT_EQ(dialog.Count(WM_USER + 1), 0);
}

TEST(DialogObject, HidesAShownTipInsteadOfTakingAKey) {
    NotingDialog dialog;
    dialog.SetControlHelp(1, "Conferma");
    int cancelled_after = 0;
    int ticks = 0;
    dialog.handler = [&](UINT message, WPARAM wparam, LPARAM) {
        if (message == WM_INITDIALOG) dialog.Post(kStep, 0, 0);
        if (message == kStep) {
            HELPINFO help{sizeof help, HELPINFO_WINDOW, 1, dialog.Control(1), 0, {}};
            dialog.Send(WM_HELP, 0, reinterpret_cast<LPARAM>(&help));
            dialog.Post(WM_KEYDOWN, VK_ESCAPE, 0); // hides the tip only
            SetTimer(dialog.Window(), 5, 30, nullptr);
        }
        if (message == WM_TIMER && wparam == 5 && ++ticks == 1) {
            dialog.Post(WM_KEYDOWN, VK_ESCAPE, 0); // there is no tip any more
        }
        if (message == WM_COMMAND && wparam == IDCANCEL) {
            cancelled_after = ticks;
            dialog.EndDialog(1);
        }
        return message == WM_COMMAND;
    };
    EXPECT_EQ(dialog.ModalRun(nullptr, "ASKING"), 1);
    EXPECT_GE(cancelled_after, 1);
}

TEST(DialogObject, TellsListsFromOtherControlsByTheirClass) {
    NotingDialog dialog;
    ASSERT_EQ(dialog.CreateModeless(nullptr, "ASKING"), 1);
    const HWND list = dialog.Control(102);
    const HWND combo = dialog.Control(103);
    for (const char* const item : {"a", "b", "c"}) {
        SendMessageA(list, LB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item));
        SendMessageA(combo, CB_ADDSTRING, 0, reinterpret_cast<LPARAM>(item));
    }
    SendMessageA(list, LB_SETCURSEL, 2, 0);
    SendMessageA(combo, CB_SETCURSEL, 1, 0);
    dialog.notes.clear();
    Notify(dialog, LBN_SELCHANGE, 102, list);
    Notify(dialog, CBN_SELCHANGE, 103, combo);
    Notify(dialog, LBN_DBLCLK, 102, list);
    Notify(dialog, 1, 101, dialog.Control(101)); // an edit control: nobody is called
    Notify(dialog, 1, 0, nullptr);               // an accelerator
    Notify(dialog, 3, 103, combo);
    Notify(dialog, 4, 103, combo);
    Notify(dialog, 7, 103, combo);
    Notify(dialog, 8, 103, combo);
    EXPECT_THAT(dialog.notes,
                ElementsAre("selection 102 2", "selection 103 1", "double 102 2", "three 103 0",
                            "four 103 0", "drop 103 0", "close 103 0"));
}

TEST(DialogObject, ReadsAndWritesItsControls) {
    CDialog dialog;
    ASSERT_EQ(dialog.CreateModeless(nullptr, "ASKING"), 1);
    const auto text_after = [&](const auto& set) {
        set();
        return std::string(dialog.ControlText(101).Text());
    };
    EXPECT_EQ(text_after([&] { dialog.SetControlText(101, CString("perché")); }), "perché");
    EXPECT_EQ(text_after([&] { dialog.SetControlText(101, CString()); }), "");
    EXPECT_EQ(text_after([&] { dialog.SetControlInteger(101, -7); }), "-7");
    EXPECT_EQ(dialog.ControlInt(101), -7);
    EXPECT_EQ(text_after([&] { dialog.SetControlUnsigned(101, 4000000000U); }), "4000000000");
    EXPECT_EQ(dialog.ControlLong(101), 4000000000L);
    EXPECT_EQ(text_after([&] { dialog.SetControlDouble(101, 2.0 / 3, 3); }), "0.667");
    EXPECT_DOUBLE_EQ(dialog.ControlDouble(101), 0.667);
    EXPECT_EQ(text_after([&] { dialog.SetControlFixed(101, -0.25); }), "-.25");
    EXPECT_EQ(text_after([&] { dialog.SetControlDoubleFrom(101, 0.01, 3, 0.1); }), "0.0");
    EXPECT_EQ(text_after([&] { dialog.SetControlDoubleFrom(101, -0.1, 3, 0.1); }), "-0.1");
    dialog.SetCheckedBoxes(110, 112, 5);
    EXPECT_EQ(IsDlgButtonChecked(dialog.Window(), 112), BST_CHECKED);
    EXPECT_EQ(dialog.CheckedBoxes(110, 112), 5U);
    EXPECT_EQ(dialog.CheckedBoxes(111, 112), 2U);
    RECT rect{0, 0, 30, 40};
    MapDialogRect(dialog.Window(), &rect);
    EXPECT_EQ(dialog.HorizontalPixels(30), rect.right);
    EXPECT_EQ(dialog.VerticalPixels(40), rect.bottom);
}

TEST(DialogObject, ColoursItselfAndItsControlsAsAsked) {
    NotingDialog dialog;
    EXPECT_EQ(dialog.DialogBackground(), 0U); // nothing is active
    COLORREF colour = 0;
    EXPECT_EQ(dialog.RemoveControlBackground(120), 0);
    EXPECT_EQ(dialog.ControlBackground(120, colour), 0);
    dialog.SetDialogBackgroundIndex(9);
    dialog.SetTextColour(RGB(1, 2, 3));
    dialog.SetControlBackground(101, RGB(250, 240, 10));
    ASSERT_EQ(dialog.CreateModeless(nullptr, "ASKING"), 1);
    lum.ProcessMessages();
    EXPECT_EQ(DrawnPixel(dialog.Window(), 1, 1), LUM::IndexColor(9));
    EXPECT_EQ(dialog.ControlsBackground(), LUM::IndexColor(9));

    const HDC context = CreateCompatibleDC(nullptr);
    const auto brush_for = [&](UINT message, int id) {
        return dialog.Send(message, reinterpret_cast<WPARAM>(context),
                           reinterpret_cast<LPARAM>(dialog.Control(id)));
    };
    EXPECT_NE(brush_for(WM_CTLCOLORSTATIC, 120), 0);
    EXPECT_EQ(SetBkColor(context, 0), LUM::IndexColor(9));
    EXPECT_EQ(SetTextColor(context, 0), RGB(1, 2, 3));
    EXPECT_EQ(brush_for(WM_CTLCOLORLISTBOX, 102), 0); // its bit is not in the mask
    dialog.SetBackgroundMask(5 | 16);
    EXPECT_NE(brush_for(WM_CTLCOLORLISTBOX, 102), 0);
    EXPECT_NE(brush_for(WM_CTLCOLOREDIT, 101), 0); // its own
    EXPECT_EQ(SetBkColor(context, 0), RGB(250, 240, 10));
    EXPECT_EQ(dialog.ControlBackground(101, colour), 1);
    EXPECT_EQ(colour, RGB(250, 240, 10));
    EXPECT_EQ(dialog.RemoveControlBackground(101), 1);
    EXPECT_EQ(brush_for(WM_CTLCOLOREDIT, 101), 0);
    dialog.SetControlsBackground(RGB(9, 9, 9)); // while it is there
    brush_for(WM_CTLCOLORSTATIC, 120);
    EXPECT_EQ(SetBkColor(context, 0), RGB(9, 9, 9));
    dialog.SetControlColours(120, RGB(7, 0, 0), RGB(0, 7, 0));
    brush_for(WM_CTLCOLORSTATIC, 120);
    EXPECT_EQ(SetTextColor(context, 0), RGB(7, 0, 0));
    DeleteDC(context);
}

TEST(DialogObject, DrawsSunkenFrames) {
    CDialog dialog;
    ASSERT_EQ(dialog.CreateModeless(nullptr, "ASKING"), 1);
    lum.ProcessMessages();
    const HWND frame = dialog.Control(10001);
    EXPECT_EQ(DrawnPixel(frame, 5, 0), RGB(0x7F, 0x7F, 0x7F));
    EXPECT_EQ(DrawnPixel(frame, 5, 5), RGB(0xC0, 0xC0, 0xC0));
}

TEST(Kernel, RunsWithAcceleratorsAndSaysWhenThereAreNone) {
    MessageBoxRecorder boxes;
    NotingWindow window;
    window.handler = [](UINT message, WPARAM wparam, LPARAM) {
        if (message == WM_COMMAND) PostQuitMessage(LOWORD(wparam));
        return message == WM_COMMAND;
    };
    ASSERT_EQ(window.Create(), 1);
    window.Post(WM_KEYDOWN, VK_F1 + 4, 0);
    EXPECT_EQ(lum.AcceleratorLoop(window, "KEYS"), 502U);
    EXPECT_TRUE(boxes.Boxes().empty());
    window.Post(WM_KEYDOWN, VK_F1 + 4, 0);
    window.Post(WM_COMMAND, 8, 0);
    EXPECT_EQ(lum.AcceleratorLoop(window, "NoKeys"), 8U);
    ASSERT_EQ(boxes.Boxes().size(), 1U);
    EXPECT_EQ(boxes.Boxes()[0].text, "Risorsa Accellerator: <NoKeys> non trovata!");
}

TEST(Kernel, ShowsInformationInOneWindow) {
    lum.ShowInformation("primo");
    const HWND window = lum.InformationWindow();
    ASSERT_NE(IsWindow(window), FALSE);
    char text[32];
    GetWindowTextA(window, text, sizeof text);
    EXPECT_STREQ(text, "primo");
    RECT rect{};
    GetWindowRect(window, &rect);
    EXPECT_EQ(rect.right - rect.left, 300);
    EXPECT_EQ(rect.bottom - rect.top, 100);
    lum.ShowInformation("secondo");
    EXPECT_EQ(lum.InformationWindow(), window);
    GetWindowTextA(window, text, sizeof text);
    EXPECT_STREQ(text, "secondo");
    lum.HideInformation();
    EXPECT_EQ(lum.InformationWindow(), nullptr);
    EXPECT_EQ(IsWindow(window), FALSE);
}

} // namespace
} // namespace kelvo
