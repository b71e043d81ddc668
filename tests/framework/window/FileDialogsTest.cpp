// The framework's file dialogs: filters and folders, the one hook, opening and saving as.

#include "framework/window/dialogs/FileDialogs.h"
#include "framework/base/ChFile.h"
#include "framework/base/FilePaths.h"
#include "framework/window/CDc.h"
#include "framework/window/CDialog.h"
#include "platform/desktop/common_dialogs.h"
#include "platform/desktop/dialogs.h"
#include "tests/framework/window/WindowFixture.h"
#include "tests/platform/desktop/PersonAtDialog.h"

#include <QComboBox>

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <sstream>

namespace kelvo {
namespace {

using namespace kelvo::test;

const auto* const kFramework = testing::AddGlobalTestEnvironment(new StartedFramework);

class FileDialogs : public testing::Test {
protected:
    FileDialogs() {
        std::string pattern = (std::filesystem::temp_directory_path() / "files-XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        choice_.description = "Film";
        choice_.extension = "kva";
        choice_.title = "Salva il film";
        choice_.initial_directory = (folder_ + '/').c_str();
    }
    ~FileDialogs() override { std::filesystem::remove_all(folder_); }

    void Write(const char* name, const char* text) const {
        std::ofstream(folder_ + '/' + name) << text;
    }
    std::string Read(const char* name) const {
        std::ostringstream text;
        text << std::ifstream(folder_ + '/' + name).rdbuf();
        return text.str();
    }
    bool SaveAs(const char* typed) {
        ChFile file;
        const PersonAtDialog person({TypeAndEnter(typed)});
        if (!SaveAsWithDialog(file, nullptr, choice_)) return false;
        EXPECT_TRUE(file.IsWritable());
        EXPECT_EQ(file.FileName().View(), folder_ + "/song.kva");
        EXPECT_EQ(file.Write("nuovo", 5), 5);
        return true;
    }

    std::string folder_;
    FileChoice choice_;
};

/// Takes part in a file dialog.
class PartDialog : public CDialog {
public:
    PartDialog() { ResourceName("PARTDLG"); }
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (CDialog::HandleMessage(message, wparam, lparam)) return true;
        if (message == WM_INITDIALOG) saves = IsTemplatedDialogSaving();
        if (message != WM_NOTIFY) return false;
        codes.push_back(reinterpret_cast<const NMHDR*>(lparam)->code);
        if (codes.back() == CDN_FILEOK && on_chosen) on_chosen();
        return false;
    }
    std::vector<UINT> codes;
    std::function<void()> on_chosen;
    bool saves = false;
};

} // namespace

TEST_F(FileDialogs, OfferAllFilesBehindTheOthers) {
    const PersonAtDialog person(
        {[](QWidget& window) {
             auto* const types = window.findChild<QComboBox*>(QStringLiteral("fileTypeCombo"));
             EXPECT_EQ(types->count(), 2);
             EXPECT_EQ(types->itemText(0).trimmed(), "Film");
             EXPECT_EQ(types->itemText(1).trimmed(), "Tutti i file (*.*)");
             EXPECT_EQ(FileDialogIn(window)->directory().absolutePath() + '/',
                       ProgramDirectory().Text());
             return true;
         },
         Escape});
    EXPECT_TRUE(ChooseFile(nullptr, FileDialogKind::Open, {.filter = "Film|*.kva|", .title = "?"},
                           CString())
                    .IsEmpty());
}

TEST_F(FileDialogs, OpenTheChosenFileOrMakeIt) {
    Write("a.kva", "vecchio");
    for (const char* name : {"a.kva", "b.kva"}) {
        ChFile file;
        const PersonAtDialog person({TypeAndEnter(name)});
        ASSERT_TRUE(OpenWithDialog(file, nullptr, choice_)) << name;
        EXPECT_TRUE(file.IsWritable());
        EXPECT_EQ(file.FileName().View(), folder_ + '/' + name);
    }
    EXPECT_EQ(Read("a.kva"), "vecchio");
    ChFile file;
    const PersonAtDialog person({Escape});
    EXPECT_FALSE(OpenWithDialog(file, nullptr, choice_));
}

TEST_F(FileDialogs, SaveUnderTheExtensionWhateverWasTyped) {
    EXPECT_TRUE(SaveAs("song.txt"));
    EXPECT_EQ(Read("song.kva"), "nuovo");
    EXPECT_FALSE(std::filesystem::exists(folder_ + "/song.txt"));
}

TEST_F(FileDialogs, AskBeforeTheyOverwrite) {
    platform::MessageBoxRecorder boxes;
    Write("song.kva", "vecchio");
    boxes.AnswerNext({IDNO, IDYES});
    EXPECT_FALSE(SaveAs("song.txt"));
    EXPECT_EQ(Read("song.kva"), "vecchio");
    ASSERT_EQ(boxes.Boxes().size(), 1U);
    const auto box = boxes.Boxes().front();
    EXPECT_EQ(box.text, "Sovrascrivere il file:\r\n\r\n[song.kva]\r\n\r\nattualmente presente ?");
    EXPECT_EQ(box.caption, "Nome file già presente!");
    EXPECT_EQ(box.type, MB_YESNO | MB_ICONEXCLAMATION);
    EXPECT_TRUE(SaveAs("song"));
    EXPECT_EQ(Read("song.kva"), "nuovo");
}

TEST_F(FileDialogs, OverwriteNoFileInOtherLettersAndAskNothing) {
    const platform::MessageBoxRecorder boxes;
    Write("SONG.KVA", "vecchio");
    EXPECT_TRUE(SaveAs("song.kva"));
    EXPECT_TRUE(boxes.Boxes().empty());
    EXPECT_EQ(Read("SONG.KVA"), "vecchio");
    EXPECT_EQ(Read("song.kva"), "nuovo");
}

TEST_F(FileDialogs, LetADialogTakePartOneAtATime) {
    PartDialog dialog;
    CString second("?");
    dialog.on_chosen = [&] {
        EXPECT_TRUE(dialog.HasWindow());
        EXPECT_EQ(dialog.ControlText(104).View(), "a destra");
        PartDialog other;
        second =
            ChooseFileWithTemplate(nullptr, FileDialogKind::Open, {}, CString(), CString(), other);
    };
    for (int round = 0; round < 2; ++round) { // the hook is free again afterwards
        const PersonAtDialog person({[](QWidget& window) {
                                         EXPECT_EQ(NameEditIn(window)->text(), "vecchio.kva");
                                         return true;
                                     },
                                     TypeAndEnter("nuovo.kvf")});
        const CString chosen = ChooseFileWithTemplate(
            nullptr, FileDialogKind::Open, {.filter = "Film|*.kva|", .title = "Apri"},
            CString("kva"), CString((folder_ + "/vecchio.kva").c_str()), dialog);
        EXPECT_EQ(chosen.View(), folder_ + "/nuovo.kvf");
        EXPECT_TRUE(second.IsEmpty());
        EXPECT_FALSE(dialog.saves);
        EXPECT_FALSE(dialog.HasWindow());
        EXPECT_THAT(dialog.codes, testing::Contains(CDN_INITDONE));
        second = "?";
    }
}

TEST_F(FileDialogs, CompleteTheNameThatIsSaved) {
    const struct {
        const char* typed;
        const char* saved;
    } rows[] = {{"uno", "/uno.kVa"}, {"due.KVA", "/due.kVa"}, {"tre.txt", "/tre.txt"}};
    for (const auto& row : rows) {
        PartDialog dialog;
        const PersonAtDialog person({TypeAndEnter(row.typed)});
        const CString chosen = ChooseFileWithTemplate(
            nullptr, FileDialogKind::Save, {.filter = "Film|*.kva|", .title = "Salva"},
            CString("kVa"), CString((folder_ + '/').c_str()), dialog);
        EXPECT_EQ(chosen.View(), folder_ + row.saved);
        EXPECT_TRUE(dialog.saves);
    }
}

TEST_F(FileDialogs, ChooseAFontFromTheOneThereIs) {
    const HFONT current = CDc::FixedFont(20, kFontItalic);
    const PersonAtDialog person({[](QWidget& window) {
        QTest::keyClick(&window, Qt::Key_Return);
        return true;
    }});
    const HFONT chosen = CDc::ChooseFont(nullptr, current);
    ASSERT_NE(chosen, nullptr);
    LOGFONTA description{};
    GetObjectA(chosen, sizeof description, &description);
    EXPECT_EQ(description.lfItalic, 1);
    EXPECT_EQ(description.lfPitchAndFamily, FIXED_PITCH);
    EXPECT_NEAR(description.lfHeight, -17, 1) << "a cell of 20 pixels, without its leading";
    DeleteObject(chosen);
    DeleteObject(current);
}

} // namespace kelvo
