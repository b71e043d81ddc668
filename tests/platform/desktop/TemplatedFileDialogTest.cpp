// The file dialog beside a template's controls: what the hook is told, when, and where things lie.

#include "platform/base/resources.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/common_dialogs.h"
#include "platform/desktop/dialogs.h"
#include "tests/platform/desktop/PersonAtDialog.h"

#include <QListWidget>
#include <QToolButton>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

using namespace kelvo::test;
using testing::ElementsAre;

namespace {

struct Told {
    UINT code;
    std::string path; ///< what is selected then
    bool operator==(const Told&) const = default;
};
std::vector<Told> told;
std::vector<UINT> messages;
HWND part = nullptr;
UINT refusals = 0; ///< names that the hook does not take

std::string SelectedPath(HWND dialog) {
    std::array<char, 512> path{};
    const LRESULT room = SendMessageA(GetParent(dialog), CDM_GETFILEPATH, path.size(),
                                      reinterpret_cast<LPARAM>(path.data()));
    const std::string text = path.data();
    EXPECT_EQ(room, text.empty() ? -1 : static_cast<LRESULT>(text.size() + 1));
    return text;
}

UINT_PTR Hook(HWND dialog, UINT message, WPARAM, LPARAM lparam) {
    messages.push_back(message);
    if (message == WM_INITDIALOG) {
        part = dialog;
        EXPECT_EQ(reinterpret_cast<const OPENFILENAMEA*>(lparam)->lCustData, 77);
    }
    if (message != WM_NOTIFY) return 0;
    const auto& report = *reinterpret_cast<const OFNOTIFYA*>(lparam);
    EXPECT_EQ(report.hdr.hwndFrom, GetParent(dialog));
    told.push_back({report.hdr.code, SelectedPath(dialog)});
    if (report.hdr.code != CDN_FILEOK || refusals == 0) return 0;
    --refusals;
    return 1;
}

class TemplatedFileDialog : public testing::Test {
protected:
    TemplatedFileDialog() {
        std::string pattern = (std::filesystem::temp_directory_path() / "part-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        for (const char* name : {"a.kvf", "b.kvf"})
            std::ofstream(folder_ + '/' + name) << "film";
        told.clear();
        messages.clear();
        request_.lStructSize = sizeof request_;
        request_.lpstrFilter = "Film\0*.kvf\0";
        request_.lpstrFile = path_.data();
        request_.nMaxFile = static_cast<DWORD>(path_.size());
        request_.lpstrInitialDir = folder_.c_str();
        request_.lpstrTitle = "Apertura Filmato";
        request_.Flags = OFN_EXPLORER | OFN_ENABLEHOOK | OFN_ENABLETEMPLATE | OFN_PATHMUSTEXIST;
        request_.lpfnHook = &Hook;
        request_.lpTemplateName = "PARTDLG";
        request_.lCustData = 77;
    }
    ~TemplatedFileDialog() override { std::filesystem::remove_all(folder_); }

    std::string folder_;
    std::array<char, 512> path_{};
    OPENFILENAMEA request_{};
};

bool PressReturn(QWidget& window) {
    if (!HasFocus(window, *NameEditIn(window))) return false;
    QTest::keyClick(NameEditIn(window), Qt::Key_Return);
    return true;
}

} // namespace

TEST_F(TemplatedFileDialog, TellsTheHookWhatIsSelectedAndChosen) {
    refusals = 1;
    const auto windows = kelvo::desktop::CountLiveObjects();
    const PersonAtDialog person({ClickFile("b.kvf"), ClickFile("a.kvf"), PressReturn, PressReturn});
    ASSERT_TRUE(GetOpenFileNameA(&request_));
    EXPECT_EQ(std::string(path_.data()), folder_ + "/a.kvf");
    EXPECT_THAT(told, ElementsAre(Told{CDN_INITDONE, ""}, Told{CDN_SELCHANGE, folder_ + "/b.kvf"},
                                  Told{CDN_SELCHANGE, folder_ + "/a.kvf"},
                                  Told{CDN_FILEOK, folder_ + "/a.kvf"},
                                  Told{CDN_FILEOK, folder_ + "/a.kvf"}))
        << "the first choice was refused";
    EXPECT_EQ(messages.front(), WM_INITDIALOG);
    EXPECT_THAT(messages, testing::Contains(WM_DESTROY));
    EXPECT_FALSE(IsWindow(part));
    EXPECT_EQ(kelvo::desktop::CountLiveObjects().windows, windows.windows);
}

TEST_F(TemplatedFileDialog, PutsTheStandardPartInThePlaceOfItsPlaceholder) {
    const PersonAtDialog person(
        {[](QWidget& window) {
             EXPECT_EQ(window.windowTitle(), "Apertura Filmato");
             const HWND text = GetDlgItem(part, 104);
             EXPECT_TRUE(IsWindowVisible(text));
             const QFileDialog& standard = *FileDialogIn(window);
             const QRect area(standard.mapToGlobal(QPoint(0, 0)), standard.size());
             RECT beside{};
             GetWindowRect(text, &beside);
             RECT units{0, 0, 20, 0};
             MapDialogRect(part, &units);
             EXPECT_NEAR(beside.left, area.right() + 1 + units.right, 2)
                 << "as far from the standard part as from the placeholder";
             EXPECT_GE(area.width(), standard.minimumSizeHint().width());
             RECT client{};
             GetClientRect(GetParent(part), &client);
             EXPECT_LT(beside.right - window.x(), client.right + 20);
             // A larger window has room for more files; the part keeps its distance.
             SetWindowPos(GetParent(part), nullptr, 0, 0, client.right + 108, client.bottom + 60,
                          SWP_NOMOVE | SWP_NOZORDER);
             return true;
         },
         [](QWidget& window) {
             const QFileDialog& standard = *FileDialogIn(window);
             RECT beside{};
             GetWindowRect(GetDlgItem(part, 104), &beside);
             RECT units{0, 0, 20, 0};
             MapDialogRect(part, &units);
             EXPECT_NEAR(beside.left,
                         standard.mapToGlobal(QPoint(standard.width(), 0)).x() + units.right, 2);
             PostMessageA(GetParent(part), WM_CLOSE, 0, 0); // the close button
             return true;
         }});
    EXPECT_FALSE(GetOpenFileNameA(&request_));
    EXPECT_EQ(CommDlgExtendedError(), 0U);
}

TEST_F(TemplatedFileDialog, TellsTheHookOfEveryWayIntoAFolder) {
    const std::string odd = folder_ + "/et\xE0";
    std::filesystem::create_directory(odd);
    const auto entered = [](std::ptrdiff_t times) {
        return [times](QWidget&) {
            return std::ranges::count(told, CDN_FOLDERCHANGE, &Told::code) == times;
        };
    };
    const PersonAtDialog person(
        {[](QWidget& window) {
             auto* const names = window.findChild<QListWidget*>();
             EXPECT_TRUE(names->isVisible());
             if (!HasFocus(window, *names)) return false;
             names->setCurrentRow(0);
             QTest::keyClick(names, Qt::Key_Return);
             return true;
         },
         entered(1),
         [](QWidget& window) {
             EXPECT_FALSE(window.findChild<QListWidget*>()->isVisible()) << "nothing odd in there";
             QTest::mouseClick(window.findChild<QToolButton*>(QStringLiteral("backButton")),
                               Qt::LeftButton);
             return true;
         },
         entered(2), [](QWidget& window) { return window.findChild<QListWidget*>()->isVisible(); },
         Escape});
    EXPECT_FALSE(GetOpenFileNameA(&request_));
}

TEST_F(TemplatedFileDialog, GoesWithItsOwner) {
    const HWND owner = CreateWindowExA(0, "STATIC", "", WS_POPUP | WS_VISIBLE, 0, 0, 50, 50,
                                       nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(owner, nullptr);
    request_.hwndOwner = owner;
    const PersonAtDialog person({ClickFile("a.kvf"), [&](QWidget&) {
                                     EXPECT_EQ(GetParent(GetParent(part)), owner);
                                     DestroyWindow(owner);
                                     return true;
                                 }});
    EXPECT_FALSE(GetOpenFileNameA(&request_));
    EXPECT_FALSE(IsWindow(part));
}
