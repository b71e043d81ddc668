// What no command of the player reaches, operated by keyboard and mouse.

#include "tests/e2e/GalleryVisit.h"
#include "tests/e2e/StageForTests.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>

namespace kelvo::test {
namespace {

using testing::ElementsAre;
using testing::Not;

class Gallery : public OnStage {
protected:
    /// Opens an exhibit and waits for its window. @param width, height  of its template
    void Enter(const std::string& exhibit, const std::string& title, int width, int height,
               const std::string& argument = {}) {
        TheStage().Screen().MoveTo(VirtualScreen::kWidth - 1, VirtualScreen::kHeight - 1);
        visit_ = std::make_unique<GalleryVisit>(TheStage(), exhibit, Environment{}, argument);
        visit_->UseUnits(width, height);
        ASSERT_TRUE(visit_->WaitFor(title)) << visit_->Process().Errors();
    }
    void TearDown() override {
        visit_.reset();
        OnStage::TearDown();
    }

    std::unique_ptr<GalleryVisit> visit_;
};

// --- dialogs that ask --------------------------------------------------------------------------

class InputBoxes : public Gallery {
protected:
    void SetUp() override {
        Gallery::SetUp();
        Enter("input-box", "Nuovo nome", 220, 68);
    }
};

TEST_F(InputBoxes, GiveWhatWasTypedWithTheFirstButton) {
    visit_->Type("Estate 98");
    visit_->Press("Return");
    EXPECT_THAT(visit_->End(), ElementsAre("value Estate 98"));
}

TEST_F(InputBoxes, GiveTheInitialValueWithTheSecondButton) {
    visit_->Type("qualcosa");
    visit_->Click(187, 55);
    EXPECT_THAT(visit_->End(), ElementsAre("value Senza titolo"));
}

TEST_F(InputBoxes, GiveTheInitialValueWithEscape) {
    visit_->Type("qualcosa");
    visit_->Press("Escape");
    EXPECT_THAT(visit_->End(), ElementsAre("value Senza titolo"));
}

class StringDialogs : public Gallery {
protected:
    void SetUp() override {
        Gallery::SetUp();
        Enter("string", "Titolo del filmato", 240, 98);
    }
};

TEST_F(StringDialogs, StandOnWhiteAndGiveWhatWasTyped) {
    EXPECT_TRUE(visit_->WaitForColour(4, 90, 0xFFFFFF));
    visit_->Press("End");
    visit_->Type(" e poi");
    visit_->Press("Return");
    EXPECT_THAT(visit_->End(), ElementsAre("text così e poi"));
}

TEST_F(StringDialogs, GiveNothingWithAnnulla) {
    visit_->Click(207, 85);
    EXPECT_THAT(visit_->End(), ElementsAre("text "));
}

class ListDialogs : public Gallery {
protected:
    void SetUp() override {
        Gallery::SetUp();
        Enter("list", "Città", 240, 176);
    }
};

TEST_F(ListDialogs, BeginAtTheSelectedItemAndFollowTheArrows) {
    visit_->Press("Down");
    visit_->Press("Return");
    EXPECT_THAT(visit_->End(), ElementsAre("result 1, item 3"));
}

TEST_F(ListDialogs, TakeADoubleClickedItem) {
    visit_->DoubleClick(30, 48);
    EXPECT_THAT(visit_->End(), ElementsAre("result 1, item 0"));
}

TEST_F(ListDialogs, LeaveTheIndexAloneWithEscape) {
    visit_->Press("Down");
    visit_->Press("Escape");
    EXPECT_THAT(visit_->End(), ElementsAre("result 0, item 2"));
}

// --- controls ----------------------------------------------------------------------------------

class Controls : public Gallery {
protected:
    void SetUp() override {
        Gallery::SetUp();
        Enter("controls", "Galleria - controlli", 260, 164);
    }
};

TEST_F(Controls, KeepNumbersAndTakeChecksFromTheKeyboard) {
    // Three edits, then the boxes: the second is turned on by the keyboard, the first off by mouse.
    for (int i = 0; i < 4; ++i) {
        visit_->Press("Tab");
    }
    visit_->Press("space");
    visit_->Click(14, 67);
    visit_->Press("Return");
    EXPECT_THAT(visit_->End(),
                ElementsAre("fixed 1234567890.123400, integer -42, boxes 6", "result 5"));
}

TEST_F(Controls, ReportSelectionsOfListAndComboBox) {
    visit_->Click(30, 84);
    EXPECT_TRUE(visit_->WaitForLine("control 120: item 0"));
    visit_->Press("Down");
    EXPECT_TRUE(visit_->WaitForLine("control 120: item 1"));
    visit_->Click(200, 86);
    EXPECT_TRUE(visit_->WaitForLine("control 121: open"));
    visit_->Press("Down");
    visit_->Press("Home");
    visit_->Press("Return");
    EXPECT_TRUE(visit_->WaitForLine("control 121: closed"));
    EXPECT_TRUE(visit_->WaitForLine("control 121: item 0"));
    EXPECT_TRUE(visit_->WaitForColour(240, 120, 0xFFFFC0)); // the note's own background
    visit_->Press("Escape");
    EXPECT_EQ(visit_->End().back(), "result 0");
}

TEST_F(Controls, EditAnItemOfTheListInItsPlace) {
    visit_->DoubleClick(30, 84);
    visit_->Type("Aosta");
    visit_->Press("Return");
    visit_->Press("Down"); // the keyboard is the list's again
    EXPECT_TRUE(visit_->WaitForLine("control 120: item 1"));
    visit_->Press("Return");
    EXPECT_EQ(visit_->End().back(), "result 5");
}

// --- pictures ----------------------------------------------------------------------------------

class Pictures : public Gallery {
protected:
    void SetUp() override {
        Gallery::SetUp();
        Enter("pictures", "Galleria - immagini", 260, 176);
        ASSERT_TRUE(visit_->WaitForColour(60, 130, 0xC0C0C0)); // painted down to the frames
    }
};

TEST_F(Pictures, ShowTheFramesAndTheReplacedBackground) {
    const Area sunken = visit_->At(8, 116);
    const VirtualScreen& screen = TheStage().Screen();
    EXPECT_EQ(screen.Pixel(sunken.x + 20, sunken.y), 0x7F7F7FU);
    const Area raised = visit_->At(134, 116);
    EXPECT_EQ(screen.Pixel(raised.x + 20, raised.y), 0xFFFFFFU);
}

TEST_F(Pictures, ShowAButtonsOtherPictureWhileItIsHeld) {
    const Area button = visit_->At(104, 6);
    const VirtualScreen& screen = TheStage().Screen();
    const auto face = [&] {
        std::vector<std::uint32_t> pixels;
        for (int y = 0; y < 20; ++y) {
            for (int x = 0; x < 20; ++x) {
                pixels.push_back(screen.Pixel(button.x + x, button.y + y));
            }
        }
        return pixels;
    };
    screen.MoveTo(button.x + 8, button.y + 8); // the screen's pixels have the pointer in them
    visit_->WaitUntilStill();
    const auto normal = face();
    screen.HoldButton();
    EXPECT_TRUE(WaitUntil([&] { return face() != normal; }));
    screen.ReleaseButton();
    EXPECT_TRUE(visit_->WaitForLine("button 201"));
    EXPECT_TRUE(WaitUntil([&] { return face() == normal; }));
}

TEST_F(Pictures, ExplainAControlWhereThePointerRests) {
    visit_->MoveTo(220, 161); // the button that closes
    EXPECT_TRUE(visit_->WaitForPopups(1));
    visit_->MoveTo(220, 80); // a picture without a text
    EXPECT_TRUE(visit_->WaitForPopups(0));
}

TEST_F(Pictures, ExplainTheFocusedControlWithF1UntilAKeyIsPressed) {
    visit_->Press("F1");
    EXPECT_TRUE(visit_->WaitForPopups(1));
    visit_->Press("Return"); // hides the tip and does nothing else
    EXPECT_TRUE(visit_->WaitForPopups(0));
    EXPECT_TRUE(visit_->Process().IsRunning());
    EXPECT_EQ(visit_->Lines().size(), 0U);
}

TEST_F(Pictures, ExplainWhatIsPointedAtUntilAButtonGoesDown) {
    visit_->Click(172, 161); // "what is this?"
    visit_->MoveTo(224, 162);
    EXPECT_TRUE(visit_->WaitForPopups(1));
    visit_->MoveTo(110, 12);
    EXPECT_TRUE(visit_->WaitForPopups(1));
    visit_->MoveTo(220, 80);
    EXPECT_TRUE(visit_->WaitForPopups(0));
    visit_->Click(220, 80);
    visit_->Click(224, 161); // a click is a click again
    EXPECT_EQ(visit_->End().back(), "result 1");
}

TEST_F(Pictures, EditALabelInItsPlace) {
    visit_->DoubleClick(40, 161);
    visit_->Type("Vacanze");
    visit_->Press("Return");
    visit_->DoubleClick(20, 161);
    visit_->Type("scartato");
    visit_->Press("Escape"); // drops the text, does not close the dialog
    visit_->Click(224, 161);
    EXPECT_THAT(visit_->End(), ElementsAre("label Vacanze", "result 1"));
}

// --- boxes -------------------------------------------------------------------------------------

TEST_F(Gallery, MessageBoxesHaveTheirCaptions) {
    Enter("boxes", "ERRORE", 1, 1);
    visit_->Press("Return");
    ASSERT_TRUE(visit_->WaitFor("ATTENZIONE"));
    visit_->Press("Return");
    ASSERT_TRUE(visit_->WaitFor("NECESSARIA CONFERMA"));
    visit_->Press("Escape");
    EXPECT_THAT(visit_->End(), ElementsAre("no"));
}

// --- tool windows ------------------------------------------------------------------------------

class Tools : public Gallery {
protected:
    void SetUp() override {
        Gallery::SetUp();
        Enter("tools", "Galleria - strumenti", 1, 1);
    }
    /// Presses the button of a number in the bar.
    void ClickButton(int number) {
        visit_->WaitUntilStill();
        const Area window = visit_->Window();
        TheStage().Screen().Click(window.x + 8 + number * 20 + 10, window.y + 8 + 10);
    }
};

TEST_F(Tools, ReportCommandsAndKeepOneOfAGroupPressed) {
    ClickButton(0);
    EXPECT_TRUE(visit_->WaitForLine("command 10"));
    ClickButton(3);
    EXPECT_TRUE(visit_->WaitForLine("command 13"));
    ClickButton(4);
    EXPECT_TRUE(visit_->WaitForLine("command 14"));
    ClickButton(4); // pressed already: no command
    ClickButton(6); // disabled
    ClickButton(1);
    EXPECT_TRUE(visit_->WaitForLine("command 11"));
    EXPECT_THAT(visit_->Lines(),
                ElementsAre("command 10", "command 13", "command 14", "command 11"));
}

TEST_F(Tools, ShowATipWhereThePointerRests) {
    const Area window = visit_->Window();
    TheStage().Screen().MoveTo(window.x + 18, window.y + 18);
    EXPECT_TRUE(visit_->WaitForPopups(1));
    TheStage().Screen().MoveTo(window.x + 200, window.y + 150);
    EXPECT_TRUE(visit_->WaitForPopups(0));
}

TEST_F(Tools, OpenAMenuOfButtonsThatGivesAChoice) {
    ClickButton(7);
    ASSERT_TRUE(visit_->WaitForPopups(1));
    const Area window = visit_->Window();
    const int x = window.x + 8 + 7 * 20 + 10;
    TheStage().Screen().Click(x, window.y + 8 + 20 + 1 + 30); // the second of three
    EXPECT_TRUE(visit_->WaitForLine("menu 1, 62"));
    EXPECT_TRUE(visit_->WaitForPopups(0));
}

TEST_F(Tools, CloseAMenuThatThePointerLeaves) {
    ClickButton(7);
    ASSERT_TRUE(visit_->WaitForPopups(1));
    const Area window = visit_->Window();
    TheStage().Screen().MoveTo(window.x + 300, window.y + 100);
    EXPECT_TRUE(visit_->WaitForLine("menu 0, 0"));
}

// --- long work, information --------------------------------------------------------------------

TEST_F(Gallery, ProgressStopsWithInterrompi) {
    Enter("progress", "Operazione in corso...", 349, 25);
    TheStage().Screen().Press("Escape");
    EXPECT_THAT(visit_->End(), ElementsAre("stopped"));
}

TEST_F(Gallery, RecompressionStopsAndLeavesTheFilmAsItWas) {
    const std::string film = Film("film.kva", {.seconds = 20});
    const auto bytes_of = [](const std::string& name) {
        std::ifstream file(name, std::ios::binary);
        return std::string{std::istreambuf_iterator<char>(file), {}};
    };
    const std::string before = bytes_of(film);
    Enter("recompress", "Ricompressione", 349, 25, film);
    TheStage().Screen().Press("Escape");
    EXPECT_THAT(visit_->End(), ElementsAre("untouched"));
    EXPECT_TRUE(bytes_of(film) == before);
    EXPECT_FALSE(std::ifstream(folder_.File("film.tmp")).good());
}

// --- the desktop's dialogs ---------------------------------------------------------------------

TEST_F(Gallery, FileDialogsGiveNothingWhenCancelled) {
    for (const char* exhibit : {"open-file", "save-file"}) {
        SCOPED_TRACE(exhibit);
        Enter(exhibit, "Scegliere un filmato", 1, 1);
        visit_->Press("Escape");
        EXPECT_THAT(visit_->End(), ElementsAre("file "));
    }
}

} // namespace
} // namespace kelvo::test
