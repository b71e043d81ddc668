// Choosing a file in the plain dialog: by typing, in the list, under names of any kind.

#include "platform/desktop/common_dialogs.h"
#include "tests/platform/desktop/PersonAtDialog.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QCompleter>
#include <QListWidget>
#include <QMessageBox>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>

using namespace kelvo::test;
using namespace std::string_literals;
using namespace std::string_view_literals;

namespace {

class FileDialog : public testing::Test {
protected:
    FileDialog() {
        std::string pattern = (std::filesystem::temp_directory_path() / "dialog-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        request_.lStructSize = sizeof request_;
        request_.lpstrFilter = filter_.c_str();
        request_.nFilterIndex = 1;
        request_.lpstrFile = path_.data();
        request_.nMaxFile = static_cast<DWORD>(path_.size());
        request_.lpstrFileTitle = title_.data();
        request_.nMaxFileTitle = static_cast<DWORD>(title_.size());
        request_.lpstrInitialDir = folder_.c_str();
        request_.lpstrTitle = "Apertura Filmato";
        request_.Flags = OFN_PATHMUSTEXIST | OFN_NOTESTFILECREATE;
    }
    ~FileDialog() override { std::filesystem::remove_all(folder_); }

    void Make(const std::string& name) const { std::ofstream(folder_ + '/' + name) << "film"; }
    std::string Path() const { return path_.data(); }

    std::string folder_;
    std::string filter_ = "Multimediali ZUVA\0*.kva;*.kvf\0Tutti i file (*.*)\0*.*\0"s;
    std::array<char, 512> path_{};
    std::array<char, 64> title_{};
    OPENFILENAMEA request_{};
};

std::vector<std::string> NamesIn(const QWidget& window) {
    const auto* const list = window.findChild<QAbstractItemView*>(QStringLiteral("listView"));
    std::vector<std::string> names;
    for (int row = 0; row < list->model()->rowCount(list->rootIndex()); ++row) {
        names.push_back(
            list->model()->index(row, 0, list->rootIndex()).data().toString().toStdString());
    }
    std::ranges::sort(names);
    return names;
}

} // namespace

TEST_F(FileDialog, GivesTheTypedNameAndItsParts) {
    const PersonAtDialog person({[](QWidget& window) {
                                     EXPECT_EQ(window.windowTitle(), "Apertura Filmato");
                                     return true;
                                 },
                                 TypeAndEnter("nuovo film.kvf")});
    ASSERT_TRUE(GetOpenFileNameA(&request_)) << "no file of that name need exist";
    EXPECT_EQ(Path(), folder_ + "/nuovo film.kvf");
    EXPECT_STREQ(title_.data(), "nuovo film.kvf");
    EXPECT_EQ(Path().substr(request_.nFileOffset), "nuovo film.kvf");
    EXPECT_EQ(Path().substr(request_.nFileExtension), "kvf");
    EXPECT_EQ(request_.nFilterIndex, 1U);
    EXPECT_EQ(CommDlgExtendedError(), 0U);
}

TEST_F(FileDialog, LeavesAllAsItWasWhenCancelled) {
    std::ranges::copy("vecchio.kvf"sv, path_.begin());
    const PersonAtDialog person({[](QWidget& window) {
                                     EXPECT_EQ(NameEditIn(window)->text(), "vecchio.kvf");
                                     return true;
                                 },
                                 Escape});
    EXPECT_FALSE(GetSaveFileNameA(&request_));
    EXPECT_EQ(Path(), "vecchio.kvf");
    EXPECT_EQ(CommDlgExtendedError(), 0U);
}

TEST_F(FileDialog, ShowsWhatTheFilterLetsThroughInAnyLetters) {
    Make("a.kva");
    Make("B.KVF");
    Make("senza");
    Make("d.txt");
    const auto shows = [](std::vector<std::string> expected) {
        return [expected](QWidget& window) { return NamesIn(window) == expected; };
    };
    const PersonAtDialog person({shows({"B.KVF", "a.kva"}),
                                 [](QWidget& window) {
                                     auto* const types = window.findChild<QComboBox*>(
                                         QStringLiteral("fileTypeCombo"));
                                     EXPECT_EQ(types->itemText(0).trimmed(), "Multimediali ZUVA");
                                     EXPECT_EQ(types->itemText(1).trimmed(), "Tutti i file (*.*)");
                                     types->setFocus();
                                     QTest::keyClick(types, Qt::Key_Down);
                                     return true;
                                 },
                                 shows({"B.KVF", "a.kva", "d.txt", "senza"}), ClickFile("senza"),
                                 [](QWidget& window) {
                                     EXPECT_EQ(NameEditIn(window)->text(), "senza");
                                     QTest::keyClick(NameEditIn(window), Qt::Key_Return);
                                     return true;
                                 }});
    ASSERT_TRUE(GetOpenFileNameA(&request_));
    EXPECT_EQ(Path(), folder_ + "/senza");
    EXPECT_EQ(request_.nFilterIndex, 2U);
    EXPECT_EQ(request_.nFileExtension, Path().size());
}

TEST_F(FileDialog, FindsNamesTypedAsElsewhere) {
    std::filesystem::create_directory(folder_ + "/Vacanze");
    Make("Vacanze/mare.kvf");
    std::string whole = folder_ + '/' + "vacanze/mare.kvf";
    std::ranges::replace(whole, '/', '\\');
    for (const std::string& typed :
         {std::string("VACANZE\\MARE.kvf"), std::string("vacanze/Mare.KVF"),
          std::string("vacanze\\mare.kvf"), whole}) {
        path_.fill(0);
        const PersonAtDialog person({TypeAndEnter(typed.c_str())});
        ASSERT_TRUE(GetOpenFileNameA(&request_)) << typed;
        EXPECT_EQ(Path(), folder_ + '/' + "Vacanze/mare.kvf") << typed;
    }
}

TEST_F(FileDialog, StaysOpenForAFolderThatDoesNotExist) {
    const PersonAtDialog person(
        {[this](QWidget& window) {
             if (!HasFocus(window, *NameEditIn(window))) return false;
             TypeName(window, QString::fromStdString(folder_) + "/" + "manca/x.kvf");
             // The complaint is answered by the next step, while the key waits for it.
             QTimer::singleShot(0, NameEditIn(window), [edit = NameEditIn(window)] {
                 edit->completer()->popup()->hide(); // it would take the key
                 QTest::keyClick(edit, Qt::Key_Return);
             });
             return true;
         },
         [](QWidget& window) {
             auto* const box = qobject_cast<QMessageBox*>(&window);
             if (box == nullptr) return false;
             EXPECT_TRUE(box->text().contains("manca"));
             QTest::keyClick(box, Qt::Key_Return);
             return true;
         },
         [](QWidget& window) { return NameEditIn(window) != nullptr && Escape(window); }});
    EXPECT_FALSE(GetOpenFileNameA(&request_));
}

TEST_F(FileDialog, SaysHowMuchRoomItNeeds) {
    request_.nMaxFile = 4;
    const PersonAtDialog person({TypeAndEnter("x.kvf")});
    EXPECT_FALSE(GetOpenFileNameA(&request_));
    EXPECT_EQ(CommDlgExtendedError(), FNERR_BUFFERTOOSMALL);
    WORD room = 0;
    std::memcpy(&room, path_.data(), sizeof room);
    EXPECT_EQ(room, folder_.size() + sizeof "/x.kvf");
    EXPECT_EQ(std::string_view(path_.data() + 4, 8), std::string_view("\0\0\0\0\0\0\0\0", 8));
}

TEST_F(FileDialog, OffersNamesThatAreNoUtf8) {
    Make("perch\xE9.kvf");
    Make("citt\xE0.txt");
    const PersonAtDialog person({[](QWidget& window) {
        auto* const names = window.findChild<QListWidget*>();
        EXPECT_TRUE(names->isVisible());
        EXPECT_EQ(names->count(), 1) << "the filter holds for them, too";
        EXPECT_EQ(names->item(0)->text(), QStringLiteral("perché.kvf"));
        names->setFocus();
        names->setCurrentRow(0);
        QTest::keyClick(names, Qt::Key_Return);
        return true;
    }});
    ASSERT_TRUE(GetOpenFileNameA(&request_));
    EXPECT_EQ(Path(), folder_ + "/perch\xE9.kvf");
}

TEST_F(FileDialog, StartsInAFolderWhoseNameIsNoUtf8) {
    const std::string odd = folder_ + "/et\xE0";
    std::filesystem::create_directory(odd);
    std::ofstream(odd + "/film.kvf") << "film";
    request_.lpstrInitialDir = odd.c_str();
    const PersonAtDialog person({ClickFile("film.kvf"), [](QWidget& window) {
                                     QTest::keyClick(NameEditIn(window), Qt::Key_Return);
                                     return true;
                                 }});
    ASSERT_TRUE(GetOpenFileNameA(&request_));
    EXPECT_EQ(Path(), odd + "/film.kvf");
}

TEST_F(FileDialog, RefusesWhatItCannotDo) {
    EXPECT_FALSE(GetOpenFileNameA(nullptr));
    request_.lStructSize = 76;
    EXPECT_FALSE(GetOpenFileNameA(&request_));
    EXPECT_EQ(CommDlgExtendedError(), CDERR_STRUCTSIZE);
    request_.lStructSize = sizeof request_;
    request_.Flags |= OFN_ENABLETEMPLATE;
    request_.lpTemplateName = "NoSuchTemplate";
    EXPECT_FALSE(GetOpenFileNameA(&request_));
    EXPECT_EQ(CommDlgExtendedError(), CDERR_FINDRESFAILURE);
}
