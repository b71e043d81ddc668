// Picture and sound agree. The bounds are wide, since nobody knows what else the machine does;
// measure_sync has the strict ones.

#include "tests/e2e/StageForTests.h"
#include "tests/e2e/SyncRun.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

namespace kelvo::test {
namespace {

constexpr double kMedianMs = kSanitized ? 60 : 15;
constexpr double kNearMs = kSanitized ? 200 : 40;
constexpr double kShareNear = 0.95;
constexpr int kCommandPause = 404;
constexpr int kCommandStop = 403;
constexpr int kCommandPlay = 405;
constexpr int kCommandContinuous = 1015;

void ExpectInStep(const Agreement& agreement, std::size_t at_least) {
    std::printf("            %s\n", agreement.Text().c_str());
    EXPECT_GE(agreement.late_ms.size(), at_least);
    EXPECT_LE(std::fabs(agreement.Median()), kMedianMs) << agreement.Text();
    EXPECT_GE(agreement.ShareWithin(kNearMs), kShareNear)
        << agreement.Text() << agreement.Outside(kNearMs);
    if (!kSanitized) {
        EXPECT_LE(agreement.missed, static_cast<int>(at_least / 50));
    }
}

class InStep : public OnStage {};

class Rates : public OnStage, public testing::WithParamInterface<CodedFilmPlan> {};
TEST_P(Rates, ImagesComeWithTheirSound) {
    CodedFilmPlan plan = GetParam();
    plan.seconds = 5;
    SyncRun run(TheStage(), plan);
    ASSERT_EQ(run.Problem(), "");
    ASSERT_TRUE(run.WaitForEnd()) << run.CurrentImage();
    ExpectInStep(run.Finish(), static_cast<std::size_t>(plan.Images()) * 9 / 10);
}
std::vector<CodedFilmPlan> PlansToTest() {
    std::vector<CodedFilmPlan> plans = SyncPlans();
    if (kSanitized) plans.resize(1);
    return plans;
}
INSTANTIATE_TEST_SUITE_P(All, Rates, testing::ValuesIn(PlansToTest()), [](const auto& test) {
    std::string name = test.param.Name();
    std::ranges::replace_if(name, [](char letter) { return std::isalnum(letter) == 0; }, '_');
    return name;
});

TEST_F(InStep, HoldsThePictureWithTheSoundAndGoesOnTogether) {
    const CodedFilmPlan plan{.audio_frames_per_second = 1, .images_per_second = 25, .seconds = 6};
    SyncRun run(TheStage(), plan);
    ASSERT_EQ(run.Problem(), "");
    ASSERT_TRUE(run.WaitForImages(30, 40));
    run.ThePlayer().Command(kCommandPause);
    // Held is what does not change for the length of several images.
    int held = run.CurrentImage();
    auto since = Clock::now();
    ASSERT_TRUE(WaitUntil([&] {
        if (run.CurrentImage() != held) {
            held = run.CurrentImage();
            since = Clock::now();
        }
        return Clock::now() - since > std::chrono::milliseconds(600);
    }));
    EXPECT_LT(held, 50) << "the picture ran on to the end of the audio frame";
    run.ThePlayer().Command(kCommandPause);
    ASSERT_TRUE(run.WaitForImage(50)); // the first one of an audio frame that was not torn
    const auto from = Clock::now();
    ASSERT_TRUE(run.WaitForEnd());
    ExpectInStep(run.Finish(from), 90);
}

TEST_F(InStep, StaysTogetherAfterASeek) {
    const CodedFilmPlan plan{.audio_frames_per_second = 5, .images_per_second = 25, .seconds = 12};
    SyncRun run(TheStage(), plan);
    ASSERT_EQ(run.Problem(), "");
    ASSERT_TRUE(run.WaitForImages(10, 80));
    TheStage().Screen().Click(run.Picture().x + kCodedWidth - 60, run.Picture().y - 12);
    ASSERT_TRUE(run.WaitForImages(200, 270)) << run.CurrentImage();
    const auto from = Clock::now();
    ASSERT_TRUE(run.WaitForEnd());
    ExpectInStep(run.Finish(from), 20);
}

TEST_F(InStep, StaysTogetherAfterStopAndPlay) {
    const CodedFilmPlan plan{.audio_frames_per_second = 5, .images_per_second = 25, .seconds = 5};
    SyncRun run(TheStage(), plan);
    ASSERT_EQ(run.Problem(), "");
    ASSERT_TRUE(run.WaitForImages(20, 60));
    run.ThePlayer().Command(kCommandStop);
    ASSERT_TRUE(WaitUntil([] { return TheStage().Sound().PlayingStreams() == 0; }));
    const auto from = Clock::now();
    run.ThePlayer().Command(kCommandPlay);
    ASSERT_TRUE(run.WaitForEnd());
    ExpectInStep(run.Finish(from), 50);
}

TEST_F(InStep, StaysTogetherFromTurnToTurn) {
    const CodedFilmPlan plan{.audio_frames_per_second = 10, .images_per_second = 25, .seconds = 2};
    SyncRun run(TheStage(), plan);
    ASSERT_EQ(run.Problem(), "");
    run.ThePlayer().Command(kCommandContinuous);
    for (int turn = 0; turn < 2; ++turn) {
        ASSERT_TRUE(run.WaitForImage(plan.Images() - 1)) << turn;
        ASSERT_TRUE(run.WaitForImages(0, 10)) << turn;
    }
    ASSERT_TRUE(run.WaitForImages(40, 45));
    ExpectInStep(run.Finish(), 130);
}

} // namespace
} // namespace kelvo::test
