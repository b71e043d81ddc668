// A machine without a sound device still shows the film, after it has said so.

#include "tests/e2e/StageForTests.h"
#include "tests/e2e/SyncMeasurement.h"

#include <algorithm>

namespace kelvo::test {
namespace {

class WithoutSound : public OnStage {};

TEST_F(WithoutSound, ShowsTheFilmByItsOwnPeriodAfterABox) {
    const CodedFilmPlan plan{.images_per_second = 25, .seconds = 4};
    Player player(TheStage(), {Film("film.kva", plan)}, {{"SDL_AUDIODRIVER", "nosuch"}});
    ASSERT_TRUE(player.WaitForBox("ERRORE"));
    const auto picture = player.WaitForPicture(kCodedWidth, kCodedHeight);
    ASSERT_TRUE(picture);
    ASSERT_TRUE(player.AnswerBox());
    ImageWatcher watcher(TheStage().Screen(), picture->x, picture->y);
    EXPECT_TRUE(WaitUntil([&] { return watcher.Current() == plan.Images() - 1; }));
    const auto seen = watcher.Stop();
    std::vector<double> steps_ms;
    for (std::size_t i = 1; i < seen.size(); ++i) {
        if (seen[i].number != seen[i - 1].number + 1) continue;
        steps_ms.push_back(
            std::chrono::duration<double, std::milli>(seen[i].at - seen[i - 1].at).count());
    }
    ASSERT_GT(steps_ms.size(), 60U);
    std::ranges::nth_element(steps_ms, steps_ms.begin() + 30);
    EXPECT_NEAR(steps_ms[30], plan.PeriodMs(), 8);
    EXPECT_TRUE(player.Boxes().empty());
    EXPECT_EQ(player.Title(), "Kelvo - film");
}

} // namespace
} // namespace kelvo::test
