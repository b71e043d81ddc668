#pragma once
// Plays a coded film in the real player, and compares what was seen with what was heard.

#include "tests/e2e/Player.h"
#include "tests/e2e/SyncMeasurement.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace kelvo::test {

/// Audio frames and images a second at which films are made.
std::vector<CodedFilmPlan> SyncPlans();

class SyncRun {
public:
    /// Makes the film, and starts the player, the recorder and the watcher. Problem() tells when
    /// there is nothing to watch.
    SyncRun(const Stage& stage, const CodedFilmPlan& plan);

    const std::string& Problem() const { return problem_; }
    Player& ThePlayer() { return *player_; }
    int CurrentImage() const { return watcher_->Current(); }
    /// Waits until an image is seen.
    bool WaitForImage(int number) const;
    /// The same for one of a range, after a jump.
    bool WaitForImages(int first, int last) const;
    /// Waits for the film's last image.
    bool WaitForEnd() const { return WaitForImage(plan_.Images() - 1); }
    /// Where the picture is on the screen.
    const Area& Picture() const { return picture_; }

    /// Closes the player and compares.
    /// @param from  what was seen before is left out
    Agreement Finish(Clock::time_point from = {});
    const std::vector<SeenImage>& Seen() const { return seen_; }
    const std::vector<HeardFrame>& Heard() const { return heard_; }

private:
    CodedFilmPlan plan_;
    TemporaryFolder folder_;
    std::string problem_;
    Area picture_;
    std::unique_ptr<Recorder> recorder_;
    std::unique_ptr<Player> player_;
    std::unique_ptr<ImageWatcher> watcher_;
    std::vector<SeenImage> seen_;
    std::vector<HeardFrame> heard_;
};

} // namespace kelvo::test
