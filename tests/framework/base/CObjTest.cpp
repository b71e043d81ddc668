#include "framework/base/CObj.h"

#include "framework/base/CString.h"
#include "framework/base/ChFile.h"
#include "platform/base/message_boxes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace kelvo {
namespace {

using platform::MessageBoxRecorder;

TEST(ClassId, IsPackedIntoACodeAndReadBack) {
    const MessageBoxRecorder boxes;
    EXPECT_EQ(CObj(25030100).ClassCode(), 0 + 1 * 8 + 2 * 176 + 24 * 2112);
    for (const std::uint32_t id : {1010000U, 4040105U, 8040100U, 19030101U, 20030100U, 25030100U,
                                   31122107U, 31010000U, 1122107U}) {
        EXPECT_EQ(CObj(id).ClassId(), id);
    }
    EXPECT_EQ(ChFile().ClassId(), 4040105U);
    EXPECT_TRUE(boxes.Boxes().empty());
}

TEST(ClassId, IsReportedWhenNoDateCouldBeSo) {
    for (const std::uint32_t id : {32010100U, 10100U, 1130100U, 1000100U, 1012200U, 1010108U}) {
        const MessageBoxRecorder boxes;
        const CObj object(id);
        ASSERT_EQ(boxes.Boxes().size(), 1U) << id;
    }
    const MessageBoxRecorder boxes;
    const CObj object(32130908);
    EXPECT_EQ(boxes.Boxes()[0].caption,
              "ERRORE CObj::ClassIdentification(GGmmAAnn) [32130908] - INVALID ID");
    EXPECT_EQ(boxes.Boxes()[0].text, "GG = 32 (must be: 1-31), mm = 13 (must be: 01-12), AA = 9 "
                                     "(must be: 0-21), nn = 8");
    EXPECT_EQ(boxes.Boxes()[0].type, MB_ICONHAND | MB_TASKMODAL | MB_TOPMOST);
}

TEST(ObjectRoot, HandlesNothingByItself) {
    CObj object(1010100);
    ChFile file;
    object.Hook();
    EXPECT_FALSE(object.Save(file));
    EXPECT_FALSE(object.Load(file));
    EXPECT_FALSE(object.HandleMessage(1, 2, 3));
    EXPECT_FALSE(object.HandleSecondMessage(1, 2, 3));
    EXPECT_EQ(object.HandleNotification(78412, 1, 2), 0);
}

struct BoxCase {
    const char* name;
    bool (*show)();
    const char* text;
    const char* caption;
    UINT type;
};

const BoxCase kBoxCases[] = {
    {"ErrorText", [] { return CObj::ErrorBox("100% %s"); }, "100% %s", "ERRORE",
     MB_ICONHAND | MB_TASKMODAL | MB_TOPMOST},
    {"ErrorString", [] { return CObj::ErrorBox(CString("5%")); }, "5%", "ERRORE",
     MB_ICONHAND | MB_TASKMODAL | MB_TOPMOST},
    {"ErrorCaption", [] { return CObj::ErrorBox("%d", Caption{"ZFilekel"}); }, "%d", "ZFilekel",
     MB_ICONHAND | MB_TASKMODAL | MB_TOPMOST},
    {"ErrorFormat", [] { return CObj::ErrorBoxFormat("%s: %d", "x", 3); }, "x: 3", "ERRORE",
     MB_ICONHAND | MB_TOPMOST},
    {"Warning", [] { return CObj::WarningBox("%d%%", 5); }, "5%", "ATTENZIONE",
     MB_ICONEXCLAMATION | MB_TOPMOST},
    {"Confirm", [] { return CObj::ConfirmBox("%s?", "go"); }, "go?", "NECESSARIA CONFERMA",
     MB_YESNO | MB_ICONQUESTION},
};

TEST(MessageBoxes, HaveTheirCaptionsAndFlagsAndNoOwner) {
    for (const BoxCase& each : kBoxCases) {
        const MessageBoxRecorder boxes;
        EXPECT_FALSE(each.show()) << each.name;
        ASSERT_EQ(boxes.Boxes().size(), 1U) << each.name;
        EXPECT_EQ(boxes.Boxes()[0].owner, nullptr) << each.name;
        EXPECT_EQ(boxes.Boxes()[0].text, each.text) << each.name;
        EXPECT_EQ(boxes.Boxes()[0].caption, each.caption) << each.name;
        EXPECT_EQ(boxes.Boxes()[0].type, each.type) << each.name;
    }
}

TEST(MessageBoxes, ConfirmOnlyWithYes) {
    MessageBoxRecorder boxes;
    boxes.AnswerNext({IDYES, IDNO, 0});
    EXPECT_TRUE(CObj::ConfirmBox("?"));
    EXPECT_FALSE(CObj::ConfirmBox("?"));
    EXPECT_FALSE(CObj::ConfirmBox("?"));
}

TEST(MessageBoxes, CutALongFormattedText) {
    const MessageBoxRecorder boxes;
    CObj::WarningBox("%s", std::string(10000, 'w').c_str());
    EXPECT_EQ(boxes.Texts()[0], std::string(8191, 'w'));
}

} // namespace
} // namespace kelvo
