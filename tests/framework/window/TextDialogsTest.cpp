// Rich text in dialogs, and the about dialog with the file that it shows.

#include "framework/window/CDc.h"
#include "framework/window/CDialog.h"
#include "framework/window/dialogs/EditedTextFile.h"
#include "framework/window/dialogs/LumAboutDlg.h"
#include "platform/base/file_calls.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/rich_text.h"
#include "tests/framework/window/WindowFixture.h"

#include <QApplication>
#include <QFontDialog>
#include <QImage>
#include <QWidget>

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>

namespace kelvo {
namespace {

const auto* const kFramework = testing::AddGlobalTestEnvironment(new StartedFramework);

class TextDialogs : public testing::Test {
protected:
    TextDialogs() {
        std::string pattern = (std::filesystem::temp_directory_path() / "texts-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
    }
    ~TextDialogs() override { std::filesystem::remove_all(folder_); }

    CString Write(const std::string& bytes, const char* name = "testo.txt") const {
        std::ofstream(folder_ + '/' + name, std::ios::binary) << bytes;
        return (folder_ + '/' + name).c_str();
    }
    std::string Read(const char* name = "testo.txt") const {
        std::ifstream file(folder_ + '/' + name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    /// Names in the folder.
    std::size_t Files() const {
        return static_cast<std::size_t>(
            std::distance(std::filesystem::directory_iterator(folder_), {}));
    }

    std::string folder_;
};

/// What the running about dialog lets a test reach.
class AboutDialog : public LumAboutDlg {
public:
    /// Runs, and does the work as soon as the dialog is there.
    LPARAM Run(const CString& file_name, Mode mode, std::function<void(AboutDialog&)> work) {
        work_ = std::move(work);
        return Show(nullptr, "Un titolo", file_name, mode);
    }
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == kWork) {
            work_(*this);
            return true;
        }
        const bool handled = LumAboutDlg::HandleMessage(message, wparam, lparam);
        if (message == WM_INITDIALOG) Post(kWork, 0, 0);
        return handled;
    }

    HWND Editor() const { return GetDlgItem(Window(), 0); }
    std::string EditorText() const {
        std::string text(
            static_cast<std::size_t>(SendMessageA(Editor(), WM_GETTEXTLENGTH, 0, 0)) + 1, '#');
        SendMessageA(Editor(), WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()));
        text.pop_back();
        return text;
    }
    void SetEditorText(const char* text) const {
        SendMessageA(Editor(), WM_SETTEXT, 0, reinterpret_cast<LPARAM>(text));
    }
    void Press(int button) const { SendMessageA(Control(button), BM_CLICK, 0, 0); }

private:
    static constexpr UINT kWork = 0x0400 + 77;
    std::function<void(AboutDialog&)> work_;
};

TEST_F(TextDialogs, RichTextGoesIntoAControlAndComesBack) {
    const CString name =
        Write("{\\rtf1\\ansi Caff\\'e8 {\\b forte}" + std::string(5000, 'x') + "}");
    CDialog::LoadRichEditSupport();
    CDialog dialog;
    ASSERT_EQ(dialog.CreateModeless(nullptr, "RICHDLG"), 1);
    EXPECT_EQ(dialog.LoadRichText(7, name.Text()), 1);
    EXPECT_EQ(dialog.ControlText(7).View(), "Caffè forte" + std::string(5000, 'x'));
    CString text{"before"};
    EXPECT_EQ(dialog.ReadRichText(7, text), 1);
    EXPECT_GE(text.Capacity(), 10000);
    EXPECT_EQ(text.View().substr(0, 6), "{\\rtf1");
    const CString again = Write(std::string(text.View()), "again.rtf");
    EXPECT_EQ(dialog.LoadRichText(7, again.Text()), 1);
    CString second;
    EXPECT_EQ(dialog.ReadRichText(7, second), 1);
    EXPECT_EQ(second.View(), text.View());
}

TEST_F(TextDialogs, ADocumentIsNotSelectedWhenItsDialogOpens) {
    class Dialog : public CDialog {
    public:
        bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
            if (CDialog::HandleMessage(message, wparam, lparam)) return true;
            if (message == WM_INITDIALOG) SetControlText(7, "testo");
            return message == WM_INITDIALOG; // and the first control gets the focus
        }
    };
    CDialog::LoadRichEditSupport();
    Dialog dialog;
    ASSERT_EQ(dialog.CreateModeless(nullptr, "RICHDLG"), 1);
    EXPECT_EQ(GetFocus(), dialog.Control(7));
    EXPECT_EQ(SendDlgItemMessageA(dialog.Window(), 7, EM_GETSEL, 0, 0), 0);
}

TEST_F(TextDialogs, ADocumentThatCannotBeReadChangesNothing) {
    CDialog::LoadRichEditSupport();
    CDialog dialog;
    ASSERT_EQ(dialog.CreateModeless(nullptr, "RICHDLG"), 1);
    dialog.SetControlText(7, "stays");
    EXPECT_EQ(dialog.LoadRichText(7, (folder_ + "/missing.rtf").c_str()), 0);
    EXPECT_EQ(dialog.LoadRichText(7, Write("").Text()), 0);
    EXPECT_EQ(dialog.LoadRichText(7, Write("no rich text").Text()), 0);
    EXPECT_EQ(dialog.LoadRichText(99, Write("{\\rtf1 x}").Text()), 0);
    EXPECT_EQ(dialog.ControlText(7).View(), "stays");
}

TEST(RichTextCallback, MovesWhatFitsAndStopsWhenNothingWasMoved) {
    CString taken{"a"};
    CDialog::RTFEditInfoStruct record;
    record.target = &taken;
    BYTE bytes[] = {'b', 0, 'c'};
    LONG moved = -1;
    const auto cookie = reinterpret_cast<DWORD_PTR>(&record);
    EXPECT_EQ(CDialog::EditStreamCallback(cookie, bytes, 3, &moved), 0U);
    EXPECT_EQ(moved, 3);
    EXPECT_EQ(taken.View(), std::string_view("ab\0c", 4));
    EXPECT_NE(CDialog::EditStreamCallback(cookie, bytes, 0, &moved), 0U);
    EXPECT_EQ(moved, 0);
}

TEST_F(TextDialogs, TheAboutDialogShowsItsFileToBeRead) {
    const CString name = Write("prima è\nseconda");
    AboutDialog dialog;
    const LPARAM result = dialog.Run(name, LumAboutDlg::Mode::ReadOnly, [&](AboutDialog& about) {
        char title[32] = {};
        GetWindowTextA(about.Window(), title, sizeof title);
        EXPECT_STREQ(title, "Un titolo");
        EXPECT_EQ(about.EditorText(), "prima è\r\nseconda");
        EXPECT_NE(GetWindowLongPtrA(about.Editor(), GWL_STYLE) & ES_READONLY, 0);
        EXPECT_FALSE(IsWindowEnabled(about.Control(3)));
        RECT place{};
        GetWindowRect(about.Editor(), &place);
        EXPECT_EQ(place.right - place.left, about.HorizontalPixels(454));
        EXPECT_EQ(place.bottom - place.top, about.VerticalPixels(322));
        about.SetEditorText("changed");
        SendMessageA(about.Window(), WM_COMMAND, MAKEWPARAM(3, BN_CLICKED), 0);
        about.Press(1);
    });
    EXPECT_EQ(result, 1);
    EXPECT_EQ(Read(), "prima è\nseconda");
}

TEST_F(TextDialogs, TheAboutDialogLooksAsItShould) {
    const CString name = Write("testo");
    AboutDialog dialog;
    dialog.Run(name, LumAboutDlg::Mode::Edit, [&](AboutDialog& about) {
        lum.ProcessMessages();
        const QImage editor = desktop::WidgetOf(about.Editor())->grab().toImage();
        EXPECT_EQ(editor.pixelColor(editor.width() / 2, editor.height() / 2),
                  QColor(0xFF, 0xFF, 0xF9));
        const QImage picture = desktop::WidgetOf(about.Control(200))->grab().toImage();
        const QRgb corner = picture.pixel(0, 0);
        bool is_drawn = false;
        for (int x = 0; x < picture.width(); ++x) {
            is_drawn = is_drawn || picture.pixel(x, picture.height() / 2) != corner;
        }
        EXPECT_TRUE(is_drawn);
        about.Press(2);
    });
}

/// A person at the font dialog: takes a size of 24 points, or nothing.
void TakeGreatFont(HWND, UINT, UINT_PTR timer, DWORD) {
    auto* const fonts = qobject_cast<QFontDialog*>(QApplication::activeModalWidget());
    if (fonts == nullptr || !fonts->isVisible()) return;
    KillTimer(nullptr, timer);
    QFont font = fonts->currentFont();
    font.setPointSize(24);
    fonts->setCurrentFont(font);
    fonts->accept();
}
void TakeNoFont(HWND, UINT, UINT_PTR timer, DWORD) {
    auto* const fonts = qobject_cast<QFontDialog*>(QApplication::activeModalWidget());
    if (fonts == nullptr || !fonts->isVisible()) return;
    KillTimer(nullptr, timer);
    fonts->reject();
}

TEST_F(TextDialogs, TheAboutDialogsFontIsChosen) {
    const CString name = Write("testo");
    AboutDialog dialog;
    dialog.Run(name, LumAboutDlg::Mode::ReadOnly, [&](AboutDialog& about) {
        const auto height_of_editor = [&about] {
            LOGFONTA font{};
            const auto handle = SendMessageA(about.Editor(), WM_GETFONT, 0, 0);
            GetObjectA(reinterpret_cast<HGDIOBJ>(handle), sizeof font, &font);
            return font.lfHeight;
        };
        SetTimer(nullptr, 0, 10, &TakeGreatFont);
        about.Press(4);
        EXPECT_EQ(height_of_editor(), -32); // 24 points, 96 an inch
        SetTimer(nullptr, 0, 10, &TakeNoFont);
        about.Press(4);
        EXPECT_EQ(height_of_editor(), -32);
        about.Press(2);
    });
}

TEST_F(TextDialogs, TheAboutDialogSavesWithTheFilesOwnLineEnds) {
    struct Case {
        const char* before;
        const char* after;
    };
    for (const Case& each :
         {Case{"a\nb\n", "x\ny è\n"}, Case{"a\r\nb", "x\r\ny è\r\n"}, Case{"", "x\r\ny è\r\n"}}) {
        const CString name = Write(each.before);
        AboutDialog dialog;
        const LPARAM result = dialog.Run(name, LumAboutDlg::Mode::Edit, [](AboutDialog& about) {
            about.SetEditorText("x\r\ny è\r\n");
            about.Press(3);
            about.Press(2);
        });
        EXPECT_EQ(result, 0);
        EXPECT_EQ(Read(), each.after);
        EXPECT_EQ(Files(), 1U);
    }
}

TEST_F(TextDialogs, ASaveOnAFullDiskSaysSoAndLosesNothing) {
    const CString name = Write("the old text");
    platform::FileCalls calls = platform::SystemFileCalls();
    calls.pwrite = [](int, const void*, std::size_t, off_t) -> ssize_t {
        errno = ENOSPC;
        return -1;
    };
    const platform::MessageBoxRecorder boxes;
    AboutDialog dialog;
    dialog.Run(name, LumAboutDlg::Mode::Edit, [&](AboutDialog& about) {
        about.SetEditorText("new");
        {
            const platform::ScopedFileCalls scope(calls);
            about.Press(3);
        }
        EXPECT_EQ(about.EditorText(), "new"); // nor does the person's work go
        about.Press(2);
    });
    EXPECT_EQ(boxes.Boxes().size(), 1U);
    EXPECT_EQ(Read(), "the old text");
    EXPECT_EQ(Files(), 1U);
}

TEST_F(TextDialogs, EscapeInTheEditorCancels) {
    const CString name = Write("testo");
    AboutDialog dialog;
    HWND focused = nullptr;
    HWND cancel = nullptr;
    const LPARAM result = dialog.Run(name, LumAboutDlg::Mode::Edit, [&](AboutDialog& about) {
        SetFocus(about.Editor());
        cancel = about.Control(2);
        SendMessageA(about.Editor(), WM_KEYDOWN, VK_ESCAPE, 0);
        focused = GetFocus();
    });
    EXPECT_EQ(result, 0);
    EXPECT_EQ(focused, cancel);

    // The same key on its way through the dialog's own loop.
    const LPARAM second = dialog.Run(name, LumAboutDlg::Mode::Edit, [&](AboutDialog& about) {
        SetFocus(about.Editor());
        PostMessageA(about.Editor(), WM_KEYDOWN, VK_ESCAPE, 0);
    });
    EXPECT_EQ(second, 0);
}

TEST_F(TextDialogs, EachPieceOfAFileEndsAtItsFirstZeroByte) {
    std::string bytes = std::string(500, 'a') + '\0' + std::string(499, 'b');
    bytes += std::string(1000, 'c') + "d";
    bytes += std::string(1, '\0') + "e";
    EditedTextFile file;
    file.Load(Write(bytes));
    EXPECT_EQ(file.Text(), std::string(500, 'a') + std::string(1000, 'c') + "d");
    EXPECT_FALSE(file.MaySave()); // what is not shown would be lost
}

TEST_F(TextDialogs, OnlyWhatAnEditorCanShowMayBeSaved) {
    struct Case {
        std::string bytes;
        bool may_save;
    };
    for (const Case& each :
         {Case{"", true}, Case{"caffè 😀", true}, Case{"caff\xE8", false}, Case{"\xC3", false},
          Case{"\xED\xA0\x80", false}, Case{"\xC0\x80", false}, Case{"\xF4\x90\x80\x80", false}}) {
        EditedTextFile file;
        file.Load(Write(each.bytes));
        EXPECT_EQ(file.MaySave(), each.may_save) << each.bytes;
        EXPECT_EQ(file.Text(), each.bytes);
    }
    EditedTextFile missing;
    missing.Load((folder_ + "/missing.txt").c_str());
    EXPECT_TRUE(missing.MaySave());
    EXPECT_TRUE(missing.Save("now it is there"));
    EXPECT_EQ(Read("missing.txt"), "now it is there");
}

} // namespace
} // namespace kelvo
