#include "tests/e2e/StageForTests.h"

#include <cstdio>
#include <memory>

// The threads of the tests meet inside the sound server's client library, where the sanitizer does
// not see them. What is tried for races is the player, a process of its own.
extern "C" const char* __tsan_default_options() {
    return "report_bugs=0";
}

namespace kelvo::test {
namespace {

std::unique_ptr<Stage>& OneStage() {
    static std::unique_ptr<Stage> stage;
    return stage;
}

class StageEnd : public testing::Environment {
public:
    void TearDown() override { OneStage().reset(); }
};
const auto* const kStageEnd = testing::AddGlobalTestEnvironment(new StageEnd);

} // namespace

const Stage& TheStage() {
    if (!OneStage()) OneStage() = std::make_unique<Stage>();
    return *OneStage();
}

// No test leaves a stream behind for the next one to hear, nor a film for it to see.
void OnStage::TearDown() {
    std::remove(TheStage().HomeFolder().File("lstfls.dat").c_str());
    EXPECT_TRUE(WaitUntil([] { return TheStage().Sound().PlayingStreams() == 0; }));
}

std::string OnStage::Film(const std::string& name, const CodedFilmPlan& plan) const {
    const std::string file = folder_.File(name);
    const auto problem = MakeCodedFilm(file, plan);
    EXPECT_EQ(problem.value_or(""), "") << name;
    return file;
}

bool OnStage::WaitForAnyImage(Player& player) const {
    const auto picture = player.WaitForPicture(kCodedWidth, kCodedHeight);
    return picture && WaitUntil([&] {
               return ReadBarCode(TheStage().Screen(), picture->x, picture->y).has_value();
           });
}

} // namespace kelvo::test
