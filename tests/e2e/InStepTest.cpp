// Picture and sound agree, at every rate and after every command.

#include "tests/e2e/ExpectInStep.h"
#include "tests/e2e/StageForTests.h"
#include "tests/e2e/SyncRun.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>

namespace kelvo::test {
namespace {

constexpr int kCommandPause = 404;
constexpr int kCommandStop = 403;
constexpr int kCommandPlay = 405;
constexpr int kCommandContinuous = 1015;

std::string NotReached(const char* what, const SyncRun& run) {
    return std::string(what) + " was not seen, but image " + std::to_string(run.CurrentImage());
}

class InStep : public OnStage {};

class Rates : public OnStage, public testing::WithParamInterface<CodedFilmPlan> {};
TEST_P(Rates, ImagesComeWithTheirSound) {
    CodedFilmPlan plan = GetParam();
    plan.seconds = 5;
    ExpectInStep(static_cast<std::size_t>(plan.Images()) * 3 / 4, [&](Agreement& agreement) {
        SyncRun run(TheStage(), plan);
        if (!run.Problem().empty()) return run.Problem();
        if (!run.WaitForEnd()) return NotReached("the end", run);
        agreement = run.Finish();
        return std::string();
    });
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
    ExpectInStep(48, [&](Agreement& agreement) {
        SyncRun run(TheStage(), plan);
        if (!run.Problem().empty()) return run.Problem();
        if (!run.WaitForImages(30, 40)) return NotReached("the second audio frame", run);
        run.ThePlayer().Command(kCommandPause);
        // Held is what does not change for the length of several images.
        int held = run.CurrentImage();
        auto since = Clock::now();
        const bool holds = WaitUntil([&] {
            if (run.CurrentImage() != held) {
                held = run.CurrentImage();
                since = Clock::now();
            }
            return Clock::now() - since > std::chrono::milliseconds(600);
        });
        if (!holds || held >= 50) return NotReached("a held image of the second audio frame", run);
        run.ThePlayer().Command(kCommandPause);
        // The first one of an audio frame that was not torn.
        if (!run.WaitForImages(50, 60)) return NotReached("the third audio frame", run);
        const auto from = Clock::now();
        if (!run.WaitForEnd()) return NotReached("the end", run);
        agreement = run.Finish(from);
        return std::string();
    });
}

TEST_F(InStep, StaysTogetherAfterASeek) {
    const CodedFilmPlan plan{.audio_frames_per_second = 5, .images_per_second = 25, .seconds = 12};
    ExpectInStep(20, [&](Agreement& agreement) {
        SyncRun run(TheStage(), plan);
        if (!run.Problem().empty()) return run.Problem();
        if (!run.WaitForImages(10, 80)) return NotReached("the beginning", run);
        TheStage().Screen().Click(run.Picture().x + kCodedWidth - 60, run.Picture().y - 12);
        if (!run.WaitForImages(200, 270)) return NotReached("the place of the click", run);
        const auto from = Clock::now();
        if (!run.WaitForEnd()) return NotReached("the end", run);
        agreement = run.Finish(from);
        return std::string();
    });
}

TEST_F(InStep, StaysTogetherAfterStopAndPlay) {
    const CodedFilmPlan plan{.audio_frames_per_second = 5, .images_per_second = 25, .seconds = 5};
    ExpectInStep(50, [&](Agreement& agreement) {
        SyncRun run(TheStage(), plan);
        if (!run.Problem().empty()) return run.Problem();
        if (!run.WaitForImages(20, 60)) return NotReached("the beginning", run);
        run.ThePlayer().Command(kCommandStop);
        if (!WaitUntil([] { return TheStage().Sound().PlayingStreams() == 0; })) {
            return std::string("the sound did not stop");
        }
        const auto from = Clock::now();
        run.ThePlayer().Command(kCommandPlay);
        if (!run.WaitForEnd()) return NotReached("the end", run);
        agreement = run.Finish(from);
        return std::string();
    });
}

TEST_F(InStep, StaysTogetherFromTurnToTurn) {
    const CodedFilmPlan plan{.audio_frames_per_second = 10, .images_per_second = 25, .seconds = 2};
    ExpectInStep(100, [&](Agreement& agreement) {
        SyncRun run(TheStage(), plan);
        if (!run.Problem().empty()) return run.Problem();
        run.ThePlayer().Command(kCommandContinuous);
        for (int turn = 0; turn < 2; ++turn) {
            if (!run.WaitForImages(plan.Images() - 5, plan.Images() - 1)) {
                return NotReached("the end of a turn", run);
            }
            if (!run.WaitForImages(0, 10)) return NotReached("the beginning of a turn", run);
        }
        if (!run.WaitForImages(40, 45)) return NotReached("the last turn", run);
        agreement = run.Finish();
        return std::string();
    });
}

} // namespace
} // namespace kelvo::test
