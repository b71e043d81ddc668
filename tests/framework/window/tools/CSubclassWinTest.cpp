// Standard controls under framework objects.

#include "framework/window/tools/CEdit.h"
#include "platform/desktop/controls.h"
#include "tests/framework/window/tools/ToolWindowFixture.h"

namespace kelvo {
namespace {

class NotingEdit : public CEdit {
public:
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (handler && handler(message, wparam)) return true;
        return CEdit::HandleMessage(message, wparam, lparam);
    }
    std::function<bool(UINT, WPARAM)> handler;
};

class SubclassedControl : public testing::Test {
protected:
    void SetUp() override {
        owner_.SetStyle(WS_POPUP | WS_VISIBLE);
        owner_.SetPlacement(0, 0, 300, 200);
        ASSERT_EQ(owner_.Create(), 1);
        edit_.SetParent(&owner_);
        edit_.SetPlacement(10, 10, 150, 24);
    }
    std::string Text() const {
        char text[100] = "";
        GetWindowTextA(edit_.Window(), text, sizeof text);
        return text;
    }

    NotingWindow owner_;
    NotingEdit edit_;
};

TEST_F(SubclassedControl, LetsItsObjectHaveEachMessageFirst) {
    ASSERT_EQ(edit_.Create(), 1);
    EXPECT_NE(edit_.Style() & WS_CHILD, 0U);
    EXPECT_EQ(GetParent(edit_.Window()), owner_.Window());
    EXPECT_EQ(GetPropA(edit_.Window(), "LUMSUBCLASSWNDPROC"), &edit_);
    edit_.TypeText("a1b");
    EXPECT_EQ(Text(), "a1b");
    EXPECT_EQ(edit_.LastMessage(), WM_GETTEXT);
    edit_.handler = [](UINT message, WPARAM wparam) { return message == WM_CHAR && wparam == '1'; };
    EXPECT_EQ(edit_.Send(WM_CHAR, '1', 1), 1);
    edit_.TypeText("c1");
    EXPECT_EQ(Text(), "a1bc");
    edit_.Send(WM_NULL, 5, 6);
    EXPECT_EQ(edit_.LastMessage(), WM_NULL);
    EXPECT_EQ(edit_.LastWParam(), 5U);
    EXPECT_EQ(edit_.LastLParam(), 6);
}

TEST_F(SubclassedControl, TakesTheKeyboardWhenItIsClicked) {
    ASSERT_EQ(edit_.Create(), 1);
    SetFocus(owner_.Window());
    edit_.Send(WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(4, 4));
    EXPECT_EQ(GetFocus(), edit_.Window());
    edit_.Send(WM_LBUTTONUP, 0, MAKELPARAM(4, 4));
}

TEST_F(SubclassedControl, KeepsItsOuterSizeAndGivesTheControlBackAtItsEnd) {
    ASSERT_EQ(edit_.Create(), 1);
    edit_.SetSize(120, 30);
    EXPECT_EQ(edit_.Width(), 120);
    EXPECT_EQ(edit_.Height(), 30);
    const HWND window = edit_.Window();
    LONG_PTR at_the_end = 0;
    edit_.handler = [&](UINT message, WPARAM) {
        if (message == WM_DESTROY) at_the_end = GetWindowLongPtrA(window, GWLP_WNDPROC);
        return false;
    };
    DestroyWindow(owner_.Window());
    EXPECT_EQ(at_the_end, reinterpret_cast<LONG_PTR>(&SubclassWndProc));
    EXPECT_FALSE(edit_.HasWindow());
    EXPECT_EQ(IsWindow(window), FALSE);
}

TEST_F(SubclassedControl, IsNoChildWithoutAParent) {
    edit_.SetParent(nullptr);
    edit_.SetStyle(WS_CHILD | WS_VISIBLE);
    ASSERT_EQ(edit_.Create(), 1);
    EXPECT_EQ(edit_.Style() & WS_CHILD, 0U);
    EXPECT_EQ(GetParent(edit_.Window()), nullptr);
}

TEST_F(SubclassedControl, SaysWhenThereIsNoSuchControl) {
    CSubclassWin nothing("NESSUNO");
    nothing.SetParent(&owner_);
    platform::MessageBoxRecorder boxes;
    EXPECT_EQ(nothing.Create(), 0);
    ASSERT_EQ(boxes.Boxes().size(), 1U);
    EXPECT_EQ(boxes.Boxes()[0].text, "CSubclassWin::Create() FALLITA!");
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
    EXPECT_FALSE(nothing.HasWindow());
}

TEST_F(SubclassedControl, LeavesAControlWithoutObjectToTheSystem) {
    EXPECT_EQ(SubclassWndProc(owner_.Window(), WM_NCCREATE, 0, 0), TRUE);
}

TEST_F(SubclassedControl, TurnsOptionsIntoStyles) {
    constexpr DWORD kAll = ES_UPPERCASE | ES_LOWERCASE | ES_PASSWORD | ES_READONLY | ES_NUMBER;
    edit_.SetStyle(WS_VISIBLE | ES_AUTOHSCROLL | ES_LOWERCASE | ES_PASSWORD | ES_READONLY);
    edit_.SetOptions(0x11);
    EXPECT_EQ(edit_.Style(), WS_VISIBLE | ES_AUTOHSCROLL | ES_UPPERCASE | ES_NUMBER);
    edit_.SetOptions(0x0E);
    EXPECT_EQ(edit_.Style() & kAll, ES_LOWERCASE | ES_PASSWORD | ES_READONLY);
    edit_.SetOptions(CEdit::kUpperCase);
    ASSERT_EQ(edit_.Create(), 1);
    edit_.TypeText("abc");
    EXPECT_EQ(Text(), "ABC");
}

} // namespace
} // namespace kelvo
