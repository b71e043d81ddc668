#include "tests/e2e/SyncRun.h"

namespace kelvo::test {

std::vector<CodedFilmPlan> SyncPlans() {
    return {
        {.audio_frames_per_second = 1, .images_per_second = 25},
        {.audio_frames_per_second = 1, .images_per_second = 10, .sample_rate = 8000},
        {.audio_frames_per_second = 5, .images_per_second = 25},
        {.audio_frames_per_second = 5,
         .images_per_second = 25,
         .sample_rate = 44100,
         .bytes_per_sample = 2,
         .picture_type = 7},
        {.audio_frames_per_second = 5, .images_per_second = 10},
        {.audio_frames_per_second = 10, .images_per_second = 30},
        {.audio_frames_per_second = 10, .images_per_second = 20, .sample_rate = 8000},
        {.audio_frames_per_second = 10, .images_per_second = 10},
        {.audio_frames_per_second = 10,
         .images_per_second = 25,
         .sample_rate = 11025,
         .bytes_per_sample = 2},
    };
}

SyncRun PlayCodedFilm(const Stage& stage, const CodedFilmPlan& plan) {
    SyncRun run;
    const TemporaryFolder folder;
    const std::string film = folder.File("coded.kva");
    if (const auto problem = MakeCodedFilm(film, plan)) {
        run.problem = *problem;
        return run;
    }
    Recorder recorder(stage.Sound());
    Player player(stage, {film});
    if (!player.WaitForTitle("Kelvo - coded")) {
        run.problem = "the player did not open the film: " + player.Process().Errors();
        return run;
    }
    const auto picture = player.WaitForPicture(kCodedWidth, kCodedHeight);
    if (!picture) {
        run.problem = "the window did not take the film's size";
        return run;
    }
    ImageWatcher watcher(stage.Screen(), picture->x, picture->y);
    const bool played = WaitUntil([&] { return watcher.Current() == plan.Images() - 1; },
                                  std::chrono::seconds(plan.seconds) + kPatience);
    if (!played)
        run.problem = "the last image was not seen, only " + std::to_string(watcher.Current());
    run.seen = watcher.Stop();
    player.AskToClose();
    player.WaitForExit();
    run.heard = HeardFrames(recorder.Stop());
    if (run.heard.empty()) run.problem += " nothing was heard";
    run.agreement = Compare(plan, run.seen, run.heard);
    return run;
}

} // namespace kelvo::test
