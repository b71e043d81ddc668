// What stands in the player's dialogs beside figures, in each of their copies.

#include "tests/app/StartedPlayer.h"

#include "framework/window/CDialog.h"

#include <vector>

namespace kelvo {
namespace {

using namespace test;

struct ControlWords {
    int id;
    const char* text;
};
struct DialogWords {
    const char* dialog;
    const char* caption;
    std::vector<ControlWords> controls;
};

const std::vector<ControlWords> kProgress = {{109, " Tempo trascorso:"},
                                             {120, " Tempo totale (stimato):"},
                                             {121, " Tempo Restante:"},
                                             {2, "Interrompi"}};
const std::vector<ControlWords> kRecompress = {{109, " Trascorso:"},
                                               {120, " Totale"},
                                               {121, " Restante"},
                                               {601, " File Len"},
                                               {2, "Interrompi"}};
const std::vector<ControlWords> kEnglishRecompress = {
    {109, " Elapsed:"}, {120, " Total"}, {121, " Remaining"}, {601, " File Len"}, {2, "Stop"}};

TEST(DialogTexts, AreTheStatedOnes) {
    for (const DialogWords& words : {
             DialogWords{"PROGRESSBARDIALOGKEL", "Operazione in corso...", kProgress},
             DialogWords{"ZRECOMPRESSDIALOGKEL", "Ricompressione", kRecompress},
             DialogWords{"ZRECOMPRESSDIALOGKEL_EN", "Recompress", kEnglishRecompress},
             DialogWords{"ZRECOMPRESSDIALOGKEL_ES", "Ricompressione", kRecompress},
             DialogWords{"ZRECOMPRESSDIALOGKEL_FR", "Ricompressione", kRecompress},
         }) {
        CDialog dialog;
        ASSERT_EQ(dialog.CreateModeless(nullptr, words.dialog), 1) << words.dialog;
        char caption[100] = "";
        GetWindowTextA(dialog.Window(), caption, sizeof caption);
        EXPECT_STREQ(caption, words.caption) << words.dialog;
        for (const ControlWords& control : words.controls) {
            EXPECT_EQ(dialog.ControlText(control.id), control.text) << words.dialog;
        }
    }
}

} // namespace
} // namespace kelvo
