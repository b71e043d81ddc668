#include "framework/base/XLanguageInfoClass.h"

#include "framework/base/CObj.h"
#include "framework/base/LanguageFile.h"
#include "platform/base/message_boxes.h"
#include "tests/framework/base/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace kelvo {
namespace {

using platform::MessageBoxRecorder;
using testing::ElementsAre;
using Language = XLanguageInfoClass;

class LanguageFiles : public testing::Test {
protected:
    LanguageFiles() { Language::SetLanguageDirectory(folder_.Directory()); }
    ~LanguageFiles() override { Language::Reset(); }

    void Add(const char* name, std::string_view content) {
        folder_.Write(name, content);
        Language::AddLanguageFile(name);
    }

    TemporaryFolder folder_;
};

TEST_F(LanguageFiles, SupplyTextsByNumber) {
    EXPECT_STREQ(Language::Translate(100, "Italiano"), "Italiano");
    Add("en.lng", "$100$199$\r\n@>100<Errore\r\n@>101<Avviso\\n2");
    EXPECT_STREQ(Language::Translate(100, "x"), "Errore");
    EXPECT_STREQ(Language::Translate(101, "x"), "Avviso\n2");
    EXPECT_STREQ(Language::Translate(150, "x"), "x");
    EXPECT_STREQ(Language::Translate(-1, "x"), "x");
    EXPECT_STREQ(Language::Translate(99, "x"), "x");
    const char* const fallback = "mine";
    EXPECT_EQ(Language::Translate(150, fallback), fallback);
}

TEST_F(LanguageFiles, TranslateTheCaptionsOfTheBoxes) {
    Add("en.lng", "$1249$1357$@>1249<ERROR@>1356<WARNING@>1357<PLEASE CONFIRM");
    const MessageBoxRecorder boxes;
    CObj::ErrorBox("text");
    CObj::ErrorBoxFormat("%s", "text");
    CObj::WarningBox("text");
    CObj::ConfirmBox("text");
    ASSERT_EQ(boxes.Boxes().size(), 4U);
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERROR");
    EXPECT_EQ(boxes.Boxes()[1].caption, "ERRORE");
    EXPECT_EQ(boxes.Boxes()[2].caption, "WARNING");
    EXPECT_EQ(boxes.Boxes()[3].caption, "PLEASE CONFIRM");
}

TEST_F(LanguageFiles, AreRefusedWhereTheirIntervalsMeet) {
    Add("a.lng", "$100$199$@>100<a");
    const MessageBoxRecorder boxes;
    for (const char* interval : {"$150$250$@>150<b", "$50$100$@>50<b", "$50$250$@>50<b",
                                 "$120$130$@>120<b", "$100$199$@>120<b"}) {
        Add("b.lng", interval);
    }
    EXPECT_EQ(Language::LanguageFileCount(), 1);
    ASSERT_EQ(boxes.Boxes().size(), 5U);
    EXPECT_EQ(boxes.Boxes()[0].text, "Codici lingua errati! (Intersezione fra intervalli codici)");
    EXPECT_EQ(boxes.Boxes()[0].caption, "ERRORE");
    Add("c.lng", "$200$299$@>200<c");
    Add("d.lng", "$0$99$@>99<d");
    EXPECT_EQ(boxes.Boxes().size(), 5U);
    EXPECT_STREQ(Language::Translate(200, "x"), "c");
    EXPECT_STREQ(Language::Translate(99, "x"), "d");
}

TEST_F(LanguageFiles, AreSkippedSilentlyWhenMissingDamagedOrKnown) {
    const MessageBoxRecorder boxes;
    Language::AddLanguageFile("missing.lng");
    Add("empty.lng", "");
    Add("bad.lng", "$100$199$@>1-0<x");
    EXPECT_EQ(Language::LanguageFileCount(), 0);
    Add("en.lng", "$100$199$@>100<first");
    Add("en.lng", "$200$299$@>200<second"); // the same name
    EXPECT_EQ(Language::LanguageFileCount(), 1);
    EXPECT_STREQ(Language::Translate(200, "x"), "x");
    EXPECT_TRUE(boxes.Boxes().empty());
}

TEST_F(LanguageFiles, AreFoundInTheDirectoryWithoutItsSeparator) {
    const CString directory = folder_.Directory();
    EXPECT_TRUE(Language::SetLanguageDirectory(directory.Substring(0, directory.Length() - 1)));
    Add("en.lng", "$1$9$@>1<one");
    EXPECT_STREQ(Language::Translate(1, "x"), "one");
    EXPECT_TRUE(Language::SetLanguageDirectory("x")); // none: the program's directory
    Add("fr.lng", "$10$19$@>10<dix");
    EXPECT_STREQ(Language::Translate(10, "x"), "x");
}

struct TextCase {
    const char* name;
    std::string_view content;
    std::vector<std::string> texts; ///< from id 5 on
};

const TextCase kTextCases[] = {
    {"NoEntryNoTexts", "$5$9$", {}},
    {"TextWithoutEntryIsNone", "$5$9$loose text", {}},
    {"PreambleIsTheFirstId", "$5$9$pre@>7<seven", {"pre", "", "seven"}},
    {"EntryReplacesPreamble", "$5$9$pre@>5<five", {"five"}},
    {"EmptyEntryKeepsTheText", "$5$9$@>6<six@>6<@>8<", {"", "six", "", ""}},
    {"LaterEntryReplaces", "$5$9$@>5<a@>5<b", {"b"}},
    {"LineEndsAndTabsAreDropped", "$5$9$@>5<a\r\n\tb", {"ab"}},
    {"Escapes", "$5$9$@>5<\\b\\n\\r\\t\\\\\\@>x\\<", {"\b\n\r\t\\@>x<"}},
    {"LastBackslashStays", "$5$9$@>5<a\\", {"a\\"}},
    {"MarkerNeedsBothBytes", "$5$9$@>5<a@b>c@", {"a@b>c@"}},
};

TEST(LanguageFormat, GivesTheseTexts) {
    for (const TextCase& each : kTextCases) {
        Language::LinguaFile file;
        ASSERT_TRUE(ParseLanguageFile(each.content, file)) << each.name;
        std::vector<std::string> texts;
        for (const CString& text : file.texts) {
            texts.emplace_back(text.c_str());
        }
        EXPECT_EQ(texts, each.texts) << each.name;
    }
    Language::LinguaFile file;
    ASSERT_TRUE(ParseLanguageFile("$$$@>-0<zero", file)); // no digits are 0
    EXPECT_EQ(file.first_id, 0);
    EXPECT_STREQ(file.texts[0].c_str(), "zero");
    ASSERT_TRUE(ParseLanguageFile("$1$10000$@>10000<last", file));
    EXPECT_EQ(file.texts.Count(), 10000);
}

TEST(LanguageFormat, RefusesTheseFiles) {
    for (const std::string_view content : {"",
                                           "x",
                                           "$",
                                           "$1",
                                           "$1$",
                                           "$1$2",
                                           "$1x$2$",
                                           "$-1$2$",
                                           "$1$2x$",
                                           "100$199$@>100<x",
                                           "$99999999999$2$",
                                           "$9$5$@>5<x",
                                           "$1$10001$@>1<x",
                                           "$5$9$@>4<x",
                                           "$5$9$@>10<x",
                                           "$5$9$@>-5<x",
                                           "$5$9$@>1-0<x",
                                           "$5$9$@>--5<x",
                                           "$5$9$@> 5<x",
                                           "$5$9$@>5",
                                           "$5$9$@>",
                                           "$5$9$@>5<ok@>6",
                                           "$0$9$@>4294967296<x",
                                           "$0$2147483647$@>2147483647<x"}) {
        Language::LinguaFile file;
        EXPECT_FALSE(ParseLanguageFile(content, file)) << content;
    }
}

} // namespace
} // namespace kelvo
