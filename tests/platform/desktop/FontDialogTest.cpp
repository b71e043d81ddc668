// Choosing a font: what the dialog starts from, and what it gives back.

#include "platform/desktop/common_dialogs.h"
#include "tests/platform/desktop/PersonAtDialog.h"

#include <QFontDialog>
#include <QFontInfo>

#include <gtest/gtest.h>

#include <cstring>

using namespace kelvo::test;

namespace {

class FontDialog : public testing::Test {
protected:
    FontDialog() {
        request_.lStructSize = sizeof request_;
        request_.lpLogFont = &font_;
        request_.Flags = CF_SCREENFONTS | CF_INITTOLOGFONTSTRUCT;
        font_.lfHeight = -16;
        font_.lfWeight = FW_BOLD;
        font_.lfUnderline = 1;
        std::strcpy(font_.lfFaceName, "Sans");
    }
    LOGFONTA font_{};
    CHOOSEFONTA request_{};
};

} // namespace

TEST_F(FontDialog, GivesBackWhatItStartedFrom) {
    const PersonAtDialog person({[](QWidget& window) {
        auto& dialog = dynamic_cast<QFontDialog&>(window);
        EXPECT_EQ(dialog.windowTitle(), "Scelta del tipo di carattere");
        EXPECT_DOUBLE_EQ(dialog.currentFont().pointSizeF(), 12.0) << "16 pixels, 96 an inch";
        EXPECT_TRUE(dialog.currentFont().bold());
        EXPECT_TRUE(dialog.currentFont().underline());
        QTest::keyClick(&dialog, Qt::Key_Return);
        return true;
    }});
    ASSERT_TRUE(ChooseFontA(&request_));
    EXPECT_EQ(font_.lfHeight, -16);
    EXPECT_EQ(font_.lfWeight, FW_BOLD);
    EXPECT_EQ(font_.lfUnderline, 1);
    EXPECT_EQ(font_.lfItalic, 0);
    EXPECT_EQ(request_.iPointSize, 120);
    EXPECT_EQ(request_.nFontType, SCREEN_FONTTYPE);
}

TEST_F(FontDialog, GivesTheSizeThatWasTyped) {
    const PersonAtDialog person({[](QWidget& window) {
        for (QLineEdit* edit : window.findChildren<QLineEdit*>()) {
            if (edit->text() != "12") continue;
            edit->setFocus();
            edit->selectAll();
            QTest::keyClicks(edit, "24");
            QTest::keyClick(edit, Qt::Key_Return);
            return true;
        }
        return false;
    }});
    ASSERT_TRUE(ChooseFontA(&request_));
    EXPECT_EQ(font_.lfHeight, -32);
}

TEST_F(FontDialog, LeavesTheFontAloneWhenCancelled) {
    const LOGFONTA before = font_;
    const PersonAtDialog person({[](QWidget& window) {
        QTest::keyClick(&window, Qt::Key_Escape);
        return true;
    }});
    EXPECT_FALSE(ChooseFontA(&request_));
    EXPECT_EQ(std::memcmp(&before, &font_, sizeof font_), 0);
}
