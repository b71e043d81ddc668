// Sample films with bytes changed, cut off or doubled: whatever opens can be read, and nothing else
// is promised. KELVO_DAMAGE_ROUNDS makes it a longer search.

#include "media/AudioFilekel.h"
#include "media/NewCBitmaplum.h"
#include "media/VideoFilekel.h"
#include "platform/base/message_boxes.h"
#include "tests/media/MediaFiles.h"
#include "tests/media/OggStreams.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <cstdlib>
#include <random>

namespace kelvo::test {

namespace {

constexpr int kFramesRead = 12;
constexpr std::size_t kHeaders = 1200; // where a change says something else, not merely worse

int Rounds() {
    const char* const rounds = std::getenv("KELVO_DAMAGE_ROUNDS");
    return rounds != nullptr ? std::atoi(rounds) : 40;
}

Bytes Damaged(Bytes film, std::mt19937& random) {
    const auto below = [&](std::size_t limit) {
        return random() % std::max<std::size_t>(limit, 1);
    };
    const std::size_t changes = 1 + below(4);
    for (std::size_t i = 0; i < changes && film.size() > 8; ++i) {
        const bool in_headers = below(3) != 0;
        const std::size_t at =
            below((in_headers ? std::min(kHeaders, film.size()) : film.size()) - 4);
        switch (below(6)) {
        case 0:
            film.resize(below(film.size()));
            break;
        case 1:
            film[at] ^= static_cast<std::uint8_t>(1U << below(8));
            break;
        case 2:
            Set32(film, at & ~std::size_t{1}, 0xFFFFFFFF);
            break;
        case 3:
            Set32(film, at & ~std::size_t{1}, static_cast<std::uint32_t>(random()));
            break;
        case 4:
            Set32(film, at & ~std::size_t{1}, static_cast<std::uint32_t>(below(70000)));
            break;
        default:
            film.insert(film.begin() + static_cast<std::ptrdiff_t>(at), below(40),
                        static_cast<std::uint8_t>(random()));
        }
    }
    return film;
}

void ReadSound(const CString& name, std::mt19937& random) {
    AudioFilekel track;
    if (!track.OpenForRead(name)) return;
    ASSERT_GT(track.nFramesAlSec(), 0U);
    ASSERT_GT(track.FrameBytes(), 0U);
    ASSERT_EQ(track.FrameData().size(), track.FrameBytes());
    int next = 0;
    std::uint32_t time = 0;
    std::uint64_t sum = 0;
    for (int i = 0; i < kFramesRead && track.ReadNextAudioFrame(next, time); ++i) {
        for (const std::uint8_t byte : track.FrameData()) {
            sum += byte;
        }
    }
    if (track.FrameCount() > 0) {
        track.ReadAudioFrame(static_cast<int>(random() % static_cast<unsigned>(track.FrameCount())),
                             time);
    }
    EXPECT_LT(sum, UINT64_MAX); // every byte was looked at
}

void ReadPicture(const CString& name, std::mt19937& random) {
    VideoFilekel track;
    if (!track.OpenForRead(name)) return;
    ASSERT_GT(track.ImagesPerSecond(), 0);
    FrameSide side;
    for (int i = 0; i < kFramesRead && track.ReadNextFrame(side); ++i) {
        track.CurrentSyncNumber();
        NewCBitmaplum bitmap;
        ASSERT_TRUE(bitmap.SetByInfoAndBits(track.BitmapInfoBytes(), track.FrameBits()));
    }
    if (track.FrameCount() > 0) {
        track.GoToRecord(static_cast<int>(random() % static_cast<unsigned>(track.FrameCount())) %
                         40);
        track.CurrentSyncNumber();
    }
}

/// Bits changed inside the pages of a Vorbis track, whose checksums are then right again, so that
/// the damage reaches the decoder.
Bytes DamagedInside(const Bytes& track, std::mt19937& random) {
    constexpr std::size_t kStreamOffset = 88;
    Bytes film(track.begin(), track.begin() + kStreamOffset);
    const ByteView stream = ByteView{track}.subspan(kStreamOffset);
    const std::size_t headers = random() % 3; // pages that most of the damage goes to
    std::size_t at = 0;
    std::size_t number = 0;
    for (const std::size_t length : PageLengths(stream)) {
        Bytes page(stream.begin() + static_cast<std::ptrdiff_t>(at),
                   stream.begin() + static_cast<std::ptrdiff_t>(at + length));
        const std::size_t body = std::size_t{27} + page[26];
        const std::size_t changes = number == headers ? 1 + random() % 4 : random() % 8 / 7;
        for (std::size_t i = 0; i < changes && length > body; ++i) {
            page[body + random() % std::min<std::size_t>(length - body, 400)] ^=
                static_cast<std::uint8_t>(1U << random() % 8);
        }
        page = WithHeaderByte(page, 5, page[5]);
        film.insert(film.end(), page.begin(), page.end());
        at += length;
        ++number;
    }
    return film;
}

TEST(DamagedFilms, WithRightChecksumsAreReadAsFarAsTheyGo) {
    const platform::MessageBoxRecorder boxes;
    const ProgressRecorder progress;
    const TemporaryFolder folder;
    std::mt19937 random(4711);
    const Bytes track = ReadFile(KELVO_SOURCE_DIR "/tests/samples/bells.kaf");
    for (int round = 0; round < Rounds(); ++round) {
        SCOPED_TRACE(round);
        ReadSound(folder.Write("bells.kaf", DamagedInside(track, random)), random);
    }
}

TEST(DamagedFilms, AreReadAsFarAsTheyGo) {
    const platform::MessageBoxRecorder boxes;
    const ProgressRecorder progress;
    const TemporaryFolder folder;
    std::mt19937 random(20240229);
    for (const char* const file : {"bells.kaf", "cut.kva", "screen.kaf", "square.kvf"}) {
        const Bytes film = ReadFile(CString{KELVO_SOURCE_DIR "/tests/samples/"} + file);
        for (int round = 0; round < Rounds(); ++round) {
            SCOPED_TRACE(std::string{file} + " " + std::to_string(round));
            const CString name = folder.Write(file, Damaged(film, random));
            ReadSound(name, random);
            ReadPicture(name, random);
            if (HasFatalFailure()) return;
        }
    }
    // A few records and the index, whatever the headers said (the sanitizers need more of it).
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    EXPECT_LT(usage.ru_maxrss / 1024, 600);
}

} // namespace

} // namespace kelvo::test
