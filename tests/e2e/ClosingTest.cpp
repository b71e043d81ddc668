// However and whenever the player is closed, it ends soon and leaves nothing behind.

#include "tests/e2e/StageForTests.h"

#include <csignal>
#include <random>
#include <thread>

namespace kelvo::test {
namespace {

using namespace std::chrono_literals;

class Closing : public OnStage {};

constexpr auto kLongestEnd = kSanitized ? 15s : 3s;

TEST_F(Closing, EndsSoonAtAnyMomentAndLeavesNoSoundBehind) {
    const std::string film = Film("film.kva", {.seconds = 3});
    std::mt19937 random(20); // the same moments each time
    std::uniform_int_distribution<int> moment_ms(0, 1500);
    const int rounds = kSanitized ? 5 : 20;
    for (int round = 0; round < rounds; ++round) {
        Player player(TheStage(), {film});
        ASSERT_TRUE(player.WaitForWindow());
        const int moment = moment_ms(random);
        // Any moment will do: this is no wait for something to happen.
        std::this_thread::sleep_for(std::chrono::milliseconds(moment));
        player.AskToClose();
        const auto status = player.WaitForExit(kLongestEnd);
        ASSERT_TRUE(status) << "closed after " << moment << " ms, still running";
        EXPECT_EQ(*status, ExitStatus{.code = 0}) << moment << ": " << player.Process().Errors();
        EXPECT_EQ(player.Process().Errors(), "") << moment;
    }
    EXPECT_TRUE(WaitUntil([] { return TheStage().Sound().PlayingStreams() == 0; }));
}

TEST_F(Closing, EndsWhileAFilmIsBeingSought) {
    const std::string film = Film("film.kva", {.seconds = 8});
    for (int round = 0; round < (kSanitized ? 1 : 3); ++round) {
        Player player(TheStage(), {film});
        ASSERT_TRUE(WaitForAnyImage(player));
        const auto picture = player.WaitForPicture(kCodedWidth, kCodedHeight);
        TheStage().Screen().Click(picture->x + kCodedWidth - 40 - 50 * round, picture->y - 12);
        player.AskToClose();
        EXPECT_EQ(player.WaitForExit(kLongestEnd), ExitStatus{.code = 0});
    }
}

TEST_F(Closing, EndsByASignalAtOnce) {
    Player player(TheStage(), {Film("film.kva", {.seconds = 8})});
    ASSERT_TRUE(WaitForAnyImage(player));
    player.Process().Signal(SIGINT);
    EXPECT_EQ(player.WaitForExit(kLongestEnd), (ExitStatus{.code = -1, .signal = SIGINT}));
}

} // namespace
} // namespace kelvo::test
