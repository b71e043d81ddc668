// The recent files: their order, their bytes, several Kelvos at once, damage, and the menu.

#include "tests/playback/Films.h"

#include "app/LastFileslum.h"
#include "platform/desktop/messages.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace kelvo {
namespace {

using namespace test;
using Paths = std::vector<std::string>;

Paths PathsOf(const LastFileslum& list) {
    Paths paths;
    for (const LastFileslum::xxdta& entry : list.Entries()) {
        paths.emplace_back(entry.path.View());
    }
    return paths;
}

class RecentList : public testing::Test {
protected:
    void SetUp() override {
        bar_ = CreateMenu();
        popup_ = CreatePopupMenu();
        AppendMenuA(bar_, MF_POPUP, reinterpret_cast<UINT_PTR>(popup_), "&File");
        AppendMenuA(popup_, MF_STRING, 101, "Apri...");
        AppendMenuA(popup_, MF_STRING, 102, "Chiudi");
        AppendMenuA(popup_, MF_SEPARATOR, 0, nullptr);
        AppendMenuA(popup_, MF_SEPARATOR, 0, nullptr);
        AppendMenuA(popup_, MF_STRING, 10005, "Esci");
        list_.RebuildMenu(bar_, nullptr);
    }
    void TearDown() override { DestroyMenu(bar_); }

    void Add(LastFileslum& list, const std::string& path) { list.AddFile(bar_, path.c_str(), 0); }
    Paths MenuTexts() const {
        Paths texts;
        for (int i = 0; i < GetMenuItemCount(popup_); ++i) {
            std::array<char, 200> text{};
            GetMenuStringA(popup_, static_cast<UINT>(i), text.data(), static_cast<int>(text.size()),
                           MF_BYPOSITION);
            texts.emplace_back(GetMenuItemID(popup_, i) == 0 ? "---" : text.data());
        }
        return texts;
    }
    std::string Bytes() const {
        std::ifstream stream{std::string(file_.Text()), std::ios::binary};
        return {std::istreambuf_iterator<char>(stream), {}};
    }
    void WriteBytes(const std::string& bytes) const {
        std::ofstream{std::string(file_.Text()), std::ios::binary} << bytes;
    }
    LastFileslum Loaded() const {
        LastFileslum list(20000, 0, 10005, 10);
        list.Load(file_);
        return list;
    }

    FilmFolder folder_;
    CString file_ = folder_.Name("lstfls.dat");
    HMENU bar_ = nullptr;
    HMENU popup_ = nullptr;
    LastFileslum list_{20000, 0, 10005, 10};
};

TEST_F(RecentList, KeepsEachFileOnceUnderItsLatestSpellingAndTenInAll) {
    Add(list_, "C:\\a\\x.kvf");
    Add(list_, "C:\\a\\y.kvf");
    Add(list_, "c:\\A\\X.KVF");
    EXPECT_EQ(PathsOf(list_), (Paths{"c:\\A\\X.KVF", "C:\\a\\y.kvf"}));
    for (int i = 0; i < 9; ++i) {
        Add(list_, "/film/" + std::to_string(i) + ".kva");
    }
    EXPECT_EQ(list_.Entries().Count(), 10);
    EXPECT_EQ(PathsOf(list_).front(), "/film/8.kva");
    EXPECT_EQ(PathsOf(list_).back(), "c:\\A\\X.KVF"); // y was the oldest
    Add(list_, list_.PathOf(20009).Text());
    EXPECT_EQ(PathsOf(list_).front(), "c:\\A\\X.KVF");
    EXPECT_EQ(PathsOf(list_).back(), "/film/0.kva");
}

TEST_F(RecentList, StandsInTheMenuBetweenTwoSeparators) {
    EXPECT_EQ(MenuTexts(), (Paths{"Apri...", "Chiudi", "---", "Esci"}));
    Add(list_, "C:\\dir\\clip.kvf");
    EXPECT_EQ(MenuTexts(), (Paths{"Apri...", "Chiudi", "---", "clip", "---", "Esci"}));
    Add(list_, "/film/Tom & Jerry.2.kva");
    EXPECT_EQ(MenuTexts(),
              (Paths{"Apri...", "Chiudi", "---", "Tom && Jerry.2", "clip", "---", "Esci"}));
    list_.RebuildMenu(bar_, "> ");
    EXPECT_EQ(MenuTexts(),
              (Paths{"Apri...", "Chiudi", "---", "> Tom && Jerry.2", "> clip", "---", "Esci"}));
    EXPECT_EQ(GetMenuItemID(popup_, 4), 20001U);

    EXPECT_TRUE(list_.IsRecentCommand(WM_COMMAND, 20001));
    EXPECT_FALSE(list_.IsRecentCommand(WM_COMMAND, 20002));
    EXPECT_FALSE(list_.IsRecentCommand(WM_COMMAND, 19999));
    EXPECT_FALSE(list_.IsRecentCommand(WM_COMMAND, 20000 + (1 << 16)));
    EXPECT_FALSE(list_.IsRecentCommand(WM_TIMER, 20000));
    EXPECT_EQ(list_.PathOf(20001), "C:\\dir\\clip.kvf");
    EXPECT_TRUE(list_.PathOf(20002).IsEmpty());
}

TEST_F(RecentList, IsWrittenByteByByteAndReadBack) {
    list_.Save(file_);
    EXPECT_EQ(Bytes(), std::string(4, '\0'));
    std::remove(file_.Text());
    list_.AddFile(bar_, "/a.kva", 7);
    list_.AddFile(bar_, "/b\xC3\xA8.kvf", 0);
    list_.Save(file_);
    const std::string expected = std::string("\2\0\0\0", 4) +
                                 std::string("\10\0\0\0/b\xC3\xA8.kvf\0\0\0\0", 16) +
                                 std::string("\6\0\0\0/a.kva\7\0\0\0", 14);
    EXPECT_EQ(Bytes(), expected);
    const LastFileslum again = Loaded();
    EXPECT_EQ(PathsOf(again), PathsOf(list_));
    EXPECT_EQ(again.Entries()[1].value, 7U);
}

TEST_F(RecentList, ShowsAndKeepsALongerListThanItsMaximum) {
    RecentFiles twelve;
    for (int i = 0; i < 12; ++i) {
        twelve.Add({("/" + std::to_string(i) + ".kva").c_str(), 0});
    }
    const auto bytes = RecentFilesBytes(twelve);
    WriteBytes({bytes.begin(), bytes.end()});
    list_.Load(file_);
    list_.RebuildMenu(bar_, nullptr);
    EXPECT_EQ(MenuTexts().size(), 3U + 12 + 2 - 1); // the set-up took a separator for an empty list
    Add(list_, "/new.kva");
    EXPECT_EQ(list_.Entries().Count(), 12);
    EXPECT_EQ(MenuTexts().size(), 16U);
    EXPECT_EQ(PathsOf(list_).back(), "/10.kva");
}

struct Damage {
    const char* name;
    std::string bytes;
};

TEST_F(RecentList, RefusesADamagedFileAndLeavesItAloneUntilThereIsAGoodList) {
    const std::string entry("\6\0\0\0/a.kva\0\0\0\0", 14);
    for (const Damage& one : {
             Damage{"empty", ""},
             Damage{"cut count", std::string("\1\0", 2)},
             Damage{"more entries than bytes", std::string("\2\0\0\0", 4) + entry},
             Damage{"absurd count", std::string("\xFF\xFF\xFF\xFF", 4) + entry},
             Damage{"length beyond the end", std::string("\1\0\0\0\7\0\0\0/a.kva\0\0\0\0", 18)},
             Damage{"absurd length", std::string("\1\0\0\0\xFF\xFF\xFF\xFF/a.kva\0\0\0\0", 18)},
             Damage{"no name", std::string("\1\0\0\0\0\0\0\0\0\0\0\0", 12)},
             Damage{"a zero in a name", std::string("\1\0\0\0\3\0\0\0/\0a\0\0\0\0", 15)},
         }) {
        WriteBytes(one.bytes);
        LastFileslum list = Loaded();
        EXPECT_TRUE(list.Entries().IsEmpty()) << one.name;
        list.Save(file_);
        EXPECT_EQ(Bytes(), one.bytes) << one.name;
        list.AddFile(bar_, "/good.kva", 0);
        list.Save(file_);
        EXPECT_EQ(PathsOf(Loaded()), (Paths{"/good.kva"})) << one.name;
    }
}

TEST_F(RecentList, KeepsWhatAnotherKelvoHasAddedMeanwhile) {
    Add(list_, "/old.kva");
    list_.Save(file_);
    LastFileslum first = Loaded();
    LastFileslum second = Loaded();
    Add(first, "/one.kva");
    Add(second, "/two.kva");
    Add(second, "/OLD.kva");
    first.Save(file_);
    second.Save(file_);
    EXPECT_EQ(PathsOf(Loaded()), (Paths{"/OLD.kva", "/two.kva", "/one.kva"}));
    first.Save(file_); // nothing new: the order stays
    EXPECT_EQ(PathsOf(Loaded()), (Paths{"/OLD.kva", "/two.kva", "/one.kva"}));
}

TEST_F(RecentList, LosesNoEntryWhenManySaveAtOnce) {
    constexpr int kSavers = 4;
    constexpr int kFilesEach = 5;
    std::vector<std::thread> savers;
    for (int saver = 0; saver < kSavers; ++saver) {
        savers.emplace_back([&, saver] {
            for (int i = 0; i < kFilesEach; ++i) {
                RecentFiles added;
                added.Add({("/" + std::to_string(saver) + "/" + std::to_string(i)).c_str(), 0});
                EXPECT_TRUE(SaveRecentFiles(file_, added, added, kSavers * kFilesEach));
            }
        });
    }
    for (std::thread& saver : savers) {
        saver.join();
    }
    const Paths paths = PathsOf(Loaded());
    EXPECT_EQ(std::set<std::string>(paths.begin(), paths.end()).size(),
              static_cast<std::size_t>(kSavers * kFilesEach));
}

TEST_F(RecentList, IsNotWrittenWhereItCannotBe) {
    Add(list_, "/a.kva");
    list_.Save(folder_.Name("no/such/folder/lstfls.dat"));
    // A user's own file is in the way of the new one; the list keeps what it has to save.
    const std::string in_the_way = folder_.Name("lstfls.tmp").Text();
    std::ofstream{in_the_way} << "mine";
    list_.Save(file_);
    EXPECT_TRUE(Bytes().empty());
    std::remove(in_the_way.c_str());
    list_.Save(file_);
    EXPECT_EQ(PathsOf(Loaded()), (Paths{"/a.kva"}));
}

} // namespace
} // namespace kelvo
