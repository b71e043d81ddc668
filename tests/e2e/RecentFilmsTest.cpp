// The list of recent films in the file of real players: several at once, and one that is damaged.

#include "tests/e2e/StageForTests.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <vector>

namespace kelvo::test {
namespace {

class RecentFilms : public OnStage {
protected:
    static std::string ListFile() { return TheStage().HomeFolder().File("lstfls.dat"); }
    static std::string List() {
        std::ifstream file(ListFile(), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    static void EndAll(std::vector<std::unique_ptr<Player>>& players) {
        for (const auto& player : players) {
            player->AskToClose();
        }
        for (const auto& player : players) {
            EXPECT_EQ(player->WaitForExit(), ExitStatus{.code = 0});
        }
    }
};

TEST_F(RecentFilms, AreAllKeptWhenSeveralKelvosOpenThemAtOnce) {
    std::vector<std::string> films;
    for (int i = 0; i < 4; ++i) {
        films.push_back(Film("film " + std::to_string(i) + ".kva", {.seconds = 2}));
    }
    for (int round = 1; round <= 2; ++round) { // at the second one they are known already
        std::vector<std::unique_ptr<Player>> players;
        for (const std::string& film : films) {
            players.push_back(std::make_unique<Player>(TheStage(), std::vector{film}));
        }
        for (std::size_t i = 0; i < players.size(); ++i) {
            ASSERT_TRUE(players[i]->WaitForTitle("Kelvo - film " + std::to_string(i)));
        }
        EndAll(players);
        const std::string list = List();
        EXPECT_EQ(list.substr(0, 4), std::string("\4\0\0\0", 4)) << round;
        for (const std::string& film : films) {
            EXPECT_NE(list.find(film), std::string::npos) << film;
        }
    }
    EXPECT_FALSE(std::filesystem::exists(TheStage().HomeFolder().File("lstfls.tmp")));
}

TEST_F(RecentFilms, AreNoneInADamagedListUntilAFilmIsOpened) {
    const std::string damaged("\2\0\0\0\xFF\xFF\xFF\x7F/a", 10);
    std::ofstream(ListFile(), std::ios::binary) << damaged;
    std::vector<std::unique_ptr<Player>> players;
    players.push_back(std::make_unique<Player>(TheStage(), std::vector<std::string>{}));
    ASSERT_TRUE(players[0]->WaitForTitle("Kelvo"));
    EndAll(players);
    EXPECT_EQ(List(), damaged);
    const std::string film = Film("film.kva", {.seconds = 2});
    players[0] = std::make_unique<Player>(TheStage(), std::vector{film});
    ASSERT_TRUE(players[0]->WaitForTitle("Kelvo - film"));
    EXPECT_TRUE(WaitUntil([&] { return List().find(film) != std::string::npos; }));
    EXPECT_TRUE(players[0]->Boxes().empty());
    EndAll(players);
}

} // namespace
} // namespace kelvo::test
