// List boxes and combo boxes.

#include "tests/platform/desktop/ControlWindow.h"

#include <QComboBox>
#include <QListWidget>

using namespace kelvo::desktop;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

namespace {

using ListBoxes = ControlWindow;
using ComboBoxes = ControlWindow;
constexpr RECT kTall{10, 10, 160, 150};

void Add(HWND control, UINT message, std::initializer_list<const char*> texts) {
    for (const char* text : texts)
        ::SendMessageA(control, message, 0, reinterpret_cast<LPARAM>(text));
}

std::string ItemText(HWND control, UINT message, int index) {
    char text[64] = {};
    const LRESULT length = ::SendMessageA(control, message, static_cast<WPARAM>(index),
                                          reinterpret_cast<LPARAM>(text));
    return length < 0 ? "(none)" : std::string(text, static_cast<std::size_t>(length));
}

QPoint MiddleOf(QListWidget& list, int row) {
    return list.visualItemRect(list.item(row)).center();
}

} // namespace

TEST_F(ListBoxes, TellWhatTheUserSelectsAndNotWhatTheProgramDoes) {
    const HWND box = Make("LISTBOX", LBS_NOTIFY | WS_VSCROLL, 5, "", kTall);
    Add(box, LB_ADDSTRING, {"uno", "due", "tre"});
    EXPECT_EQ(::SendMessageA(box, LB_GETCOUNT, 0, 0), 3);
    EXPECT_EQ(::SendMessageA(box, LB_GETCURSEL, 0, 0), LB_ERR);
    EXPECT_EQ(::SendMessageA(box, LB_SETCURSEL, 2, 0), 2);
    EXPECT_THAT(Commands(), IsEmpty());

    auto* const list = Inner<QListWidget>(box);
    QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, MiddleOf(*list, 1));
    Pump();
    EXPECT_THAT(Commands(), ElementsAre(Pair(5, LBN_SETFOCUS), Pair(5, LBN_SELCHANGE)));
    EXPECT_EQ(::SendMessageA(box, LB_GETCURSEL, 0, 0), 1);
    QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, MiddleOf(*list, 1));
    Pump();
    EXPECT_THAT(Commands(), Contains(Pair(5, LBN_DBLCLK)));
    Press(box, Qt::Key_Down);
    EXPECT_THAT(Commands(), ElementsAre(Pair(5, LBN_SELCHANGE)));
    EXPECT_EQ(::SendMessageA(box, LB_GETCURSEL, 0, 0), 2);
}

TEST_F(ListBoxes, KeepTextsByteForByteWithNumbersAndInOrder) {
    const HWND box = Make("LISTBOX", LBS_SORT, 5, "", kTall);
    Add(box, LB_ADDSTRING, {"mare", "alba\xFF", "zero"});
    EXPECT_EQ(ItemText(box, LB_GETTEXT, 0), "alba\xFF");
    EXPECT_EQ(::SendMessageA(box, LB_GETTEXTLEN, 0, 0), 5);
    EXPECT_EQ(ItemText(box, LB_GETTEXT, 3), "(none)");
    ::SendMessageA(box, LB_SETITEMDATA, 1, 77);
    ::SendMessageA(box, LB_INSERTSTRING, 0, reinterpret_cast<LPARAM>("first"));
    EXPECT_EQ(::SendMessageA(box, LB_GETITEMDATA, 2, 0), 77);
    const auto find = [&](int after, const char* text) {
        return ::SendMessageA(box, LB_FINDSTRING, static_cast<WPARAM>(after),
                              reinterpret_cast<LPARAM>(text));
    };
    EXPECT_EQ(find(-1, "MA"), 2);
    EXPECT_EQ(find(2, "ma"), 2); // round and round
    EXPECT_EQ(find(-1, "no"), LB_ERR);
    EXPECT_EQ(::SendMessageA(box, LB_DELETESTRING, 0, 0), 3);
    EXPECT_EQ(::SendMessageA(box, LB_DELETESTRING, 3, 0), LB_ERR);
    ::SendMessageA(box, LB_RESETCONTENT, 0, 0);
    EXPECT_EQ(::SendMessageA(box, LB_GETCOUNT, 0, 0), 0);
}

TEST_F(ListBoxes, OfManySelectionsTellThemAll) {
    const HWND box = Make("LISTBOX", LBS_MULTIPLESEL, 5, "", kTall);
    Add(box, LB_ADDSTRING, {"uno", "due", "tre"});
    EXPECT_EQ(::SendMessageA(box, LB_SETCURSEL, 1, 0), LB_ERR);
    ::SendMessageA(box, LB_SETSEL, TRUE, 0);
    ::SendMessageA(box, LB_SETSEL, TRUE, 2);
    EXPECT_EQ(::SendMessageA(box, LB_GETSELCOUNT, 0, 0), 2);
    int selected[2] = {};
    EXPECT_EQ(::SendMessageA(box, LB_GETSELITEMS, 2, reinterpret_cast<LPARAM>(selected)), 2);
    EXPECT_THAT(selected, ElementsAre(0, 2));
}

TEST_F(ComboBoxes, AreAsHighAsTheirFieldAndOpenTheirList) {
    const HWND box = Make("COMBOBOX", CBS_DROPDOWNLIST, 4, "", kTall);
    Add(box, CB_ADDSTRING, {"uno", "due", "tre"});
    EXPECT_EQ(ClientSizeOf(box).cy, Inner(box)->sizeHint().height());
    EXPECT_EQ(::SendMessageA(box, CB_GETCURSEL, 0, 0), CB_ERR);
    EXPECT_EQ(::SendMessageA(box, CB_SETCURSEL, 1, 0), 1);
    EXPECT_EQ(TextOf(box), "due");
    EXPECT_THAT(Commands(), IsEmpty());
    Press(box, Qt::Key_Down);
    EXPECT_THAT(Commands(), Contains(Pair(4, CBN_SELCHANGE)));
    EXPECT_EQ(ItemText(box, CB_GETLBTEXT, 2), TextOf(box));

    Click(box);
    EXPECT_THAT(Commands(), Contains(Pair(4, CBN_DROPDOWN)));
    EXPECT_TRUE(::SendMessageA(box, CB_GETDROPPEDSTATE, 0, 0));
    EXPECT_EQ(::GetCapture(), nullptr); // the open list gets the mouse
    ::SendMessageA(box, CB_SHOWDROPDOWN, FALSE, 0);
    EXPECT_THAT(Commands(), Contains(Pair(4, CBN_CLOSEUP)));
}

TEST_F(ComboBoxes, TakeTypingWhereTheyHaveAField) {
    const HWND box = Make("COMBOBOX", CBS_DROPDOWN, 4, "", kTall);
    Add(box, CB_ADDSTRING, {"uno", "due"});
    EXPECT_EQ(TextOf(box), "");
    ::SetWindowTextA(box, "du");
    EXPECT_THAT(Commands(), IsEmpty());
    Type(box, "e!");
    EXPECT_EQ(TextOf(box), "due!");
    EXPECT_THAT(Commands(), Contains(Pair(4, CBN_EDITCHANGE)).Times(2));
    EXPECT_EQ(::SendMessageA(box, CB_SETCURSEL, 0, 0), 0);
    EXPECT_EQ(TextOf(box), "uno");
}
