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

SyncRun::SyncRun(const Stage& stage, const CodedFilmPlan& plan) : plan_(plan) {
    const std::string film = folder_.File("coded.kva");
    if (const auto failed = MakeCodedFilm(film, plan)) {
        problem_ = *failed;
        return;
    }
    recorder_ = std::make_unique<Recorder>(stage.Sound());
    player_ = std::make_unique<Player>(stage, std::vector{film}, Environment{}, std::string{},
                                       Commanded::Yes);
    if (!player_->WaitForTitle("Kelvo - coded")) {
        problem_ = "the player did not open the film: " + player_->Process().Errors();
        return;
    }
    const auto picture = player_->WaitForPicture(kCodedWidth, kCodedHeight);
    if (!picture) {
        problem_ = "the window did not take the film's size";
        return;
    }
    picture_ = *picture;
    watcher_ = std::make_unique<ImageWatcher>(stage.Screen(), picture->x, picture->y);
}

bool SyncRun::WaitForImage(int number) const {
    return WaitForImages(number, number);
}

bool SyncRun::WaitForImages(int first, int last) const {
    return WaitUntil(
        [&] {
            const int current = watcher_->Current();
            return current >= first && current <= last;
        },
        std::chrono::seconds(plan_.seconds) + kPatience);
}

Agreement SyncRun::Finish(Clock::time_point from) {
    seen_ = watcher_->Stop();
    player_->AskToClose();
    player_->WaitForExit();
    heard_ = HeardFrames(recorder_->Stop());
    std::vector<SeenImage> counted = seen_;
    std::erase_if(counted, [from](const SeenImage& image) { return image.at < from; });
    return Compare(plan_, counted, heard_);
}

} // namespace kelvo::test
