// What a film shows before it is opened, and the decoding aside that nobody waits for.

#include "app/PreviewDecoder.h"
#include "container/UndoFile.h"
#include "framework/window/CWin.h"
#include "platform/base/message_boxes.h"
#include "platform/base/threads.h"
#include "platform/desktop/messages.h"
#include "tests/playback/Films.h"
#include "tests/playback/PlayerWindow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>
#include <set>
#include <string>

namespace kelvo::test {
namespace {

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new StartedFramework);

using Kind = Preview::Kind;

std::string ReadAll(const CString& name) {
    std::ifstream file(name.Text(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
void WriteAll(const CString& name, const std::string& bytes) {
    std::ofstream(name.Text(), std::ios::binary) << bytes;
}
std::string Little(std::size_t value) {
    std::string bytes;
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>((value >> shift) & 0xFFU);
    return bytes;
}
std::string FilmOf(const std::string& audio, const std::string& video) {
    const std::size_t middle = 16 + audio.size();
    const std::string none(8, '\0');
    return (audio.empty() ? none : Little(16) + Little(middle)) +
           (video.empty() ? none : Little(middle) + Little(middle + video.size())) + audio + video;
}

/// Lets the test say when a file has been decoded.
class Gate {
public:
    Preview Decode(const CString& path) {
        std::unique_lock lock{mutex_};
        started_.insert(path.Text());
        changed_.notify_all();
        changed_.wait(lock, [&] { return all_ || open_.contains(path.Text()); });
        ++finished_;
        return {Kind::Damaged, {}};
    }
    void Open(const char* path) {
        const std::scoped_lock lock{mutex_};
        open_.insert(path);
        changed_.notify_all();
    }
    void OpenAll() {
        const std::scoped_lock lock{mutex_};
        all_ = true;
        changed_.notify_all();
    }
    std::set<std::string> Started() {
        const std::scoped_lock lock{mutex_};
        return started_;
    }

private:
    std::mutex mutex_; // guards all below
    std::condition_variable changed_;
    std::set<std::string> started_;
    std::set<std::string> open_;
    int finished_ = 0;
    bool all_ = false;
};

constexpr UINT kDecoded = WM_USER + 5;

/// Notes which questions were reported as answered.
class AskingWindow : public CWin {
public:
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (message == kDecoded) answered.push_back(static_cast<std::uint32_t>(wparam));
        return CWin::HandleMessage(message, wparam, lparam);
    }
    std::vector<std::uint32_t> answered;
};

class Decoding : public testing::Test {
protected:
    Decoding() {
        window_.SetStyle(WS_OVERLAPPEDWINDOW);
        window_.Create();
    }
    ~Decoding() override {
        gate_->OpenAll();
        EXPECT_TRUE(PumpUntil([] { return PreviewDecoder::WorkingThreads() == 0; }));
    }
    PreviewDecoder::Decode Slow() const {
        return [gate = gate_](const CString& path) { return gate->Decode(path); };
    }

    std::shared_ptr<Gate> gate_ = std::make_shared<Gate>();
    AskingWindow window_;
};

} // namespace

TEST(FilmPreview, IsTheFirstImageOfAFilm) {
    const FilmFolder folder;
    MakeVideo(folder.Name("two.kvf"), {.images = 2});
    MakeAudio(folder.Name("two.kaf"), {});
    WriteAll(folder.Name("two.KVA"),
             FilmOf(ReadAll(folder.Name("two.kaf")), ReadAll(folder.Name("two.kvf"))));
    for (const char* name : {"two.kvf", "two.KVA"}) {
        const Preview preview = DecodePreview(folder.Name(name));
        ASSERT_EQ(preview.kind, Kind::Picture) << name;
        EXPECT_EQ(preview.picture.Width(), kImageWidth);
        EXPECT_EQ(preview.picture.Height(), kImageHeight);
        EXPECT_EQ(preview.picture.Pixels()[0], PixelOfImage(0) & 0xFF);
    }
}

TEST(FilmPreview, TellsWhatIsHealthyFromWhatIsDamaged) {
    const FilmFolder folder;
    MakeVideo(folder.Name("film.kvf"), {.images = 3, .type = 1});
    MakeVideo(folder.Name("one.kvf"), {.images = 1});
    MakeAudio(folder.Name("sound.kaf"), {});
    const std::string video = ReadAll(folder.Name("film.kvf"));
    const std::string sound = ReadAll(folder.Name("sound.kaf"));
    WriteAll(folder.Name("cut.kvf"), video.substr(0, video.size() - 40));
    std::string scratched = video;
    scratched[1052 + 66] = '\x01'; // the stored length of image 0
    scratched[1052 + 67] = '\x00';
    WriteAll(folder.Name("scratched.kvf"), scratched);
    WriteAll(folder.Name("empty.kvf"), "");
    WriteAll(folder.Name("text.txt"), "questo non è un film");
    WriteAll(folder.Name("cut.kaf"), sound.substr(0, 900));
    WriteAll(folder.Name("sound only.kva"), FilmOf(sound, ""));
    WriteAll(folder.Name("cut film.kva"), FilmOf(sound, video.substr(0, 1000)));
    std::filesystem::create_directory(folder.Name("folder.kvf").Text());

    const struct {
        const char* name;
        Kind kind;
    } rows[] = {
        {"one.kvf", Kind::Nothing},        {"sound.kaf", Kind::Nothing},
        {"sound only.kva", Kind::Nothing}, {"folder.kvf", Kind::Nothing},
        {"missing.kvf", Kind::Nothing},    {"cut.kvf", Kind::Damaged},
        {"scratched.kvf", Kind::Damaged},  {"empty.kvf", Kind::Damaged},
        {"text.txt", Kind::Damaged},       {"cut.kaf", Kind::Damaged},
        {"cut film.kva", Kind::Damaged},
    };
    const platform::MessageBoxRecorder boxes;
    for (const auto& row : rows) {
        const Preview preview = DecodePreview(folder.Name(row.name));
        EXPECT_EQ(preview.kind, row.kind) << row.name;
        EXPECT_FALSE(preview.picture.HasImage()) << row.name;
    }
    EXPECT_TRUE(boxes.Texts().empty()) << "nobody is to be bothered";
}

TEST(FilmPreview, LeavesAFilmWhoseEditWasCutOffToWhoeverOpensIt) {
    const FilmFolder folder;
    const CString name = folder.Name("film.kvf");
    MakeVideo(name, {.images = 3});
    const std::string before = ReadAll(name);
    {
        VideoFilekel film;
        ASSERT_TRUE(film.OpenForRead(name));
        UndoFile undo;
        const auto header = ParseContainerHeader(
            ByteView{reinterpret_cast<const std::uint8_t*>(before.data()), kContainerHeaderBytes});
        RecordIndex index;
        ASSERT_TRUE(index.Size(film.RecordCount()));
        ASSERT_EQ(
            undo.Save(name.Text(), header.Value(), film.UserHeader(), index, before.size()).fault,
            Fault::None);
        undo.Abandon();
    }
    const std::string undo_name = std::string(name.Text()) + ".undo";
    const std::string undo_bytes = ReadAll(CString(undo_name.c_str()));
    EXPECT_EQ(DecodePreview(name).kind, Kind::Nothing);
    EXPECT_EQ(ReadAll(name), before);
    EXPECT_EQ(ReadAll(CString(undo_name.c_str())), undo_bytes);
}

TEST(FilmPreview, ShowsTheSamples) {
    const std::string samples = KELVO_SOURCE_DIR "/tests/samples/";
    EXPECT_EQ(DecodePreview(CString((samples + "square.kvf").c_str())).kind, Kind::Picture);
    EXPECT_EQ(DecodePreview(CString((samples + "bells.kaf").c_str())).kind, Kind::Nothing);
    EXPECT_EQ(DecodePreview(CString((samples + "screen.kaf").c_str())).kind, Kind::Nothing);
}

TEST_F(Decoding, ReportsTheNewestQuestionAlone) {
    PreviewDecoder decoder(Slow());
    const std::uint32_t first = decoder.Ask("slow", window_.Window(), kDecoded);
    EXPECT_TRUE(PumpUntil([&] { return gate_->Started().contains("slow"); }));
    const std::uint32_t second = decoder.Ask("quick", window_.Window(), kDecoded);
    gate_->Open("quick");
    ASSERT_TRUE(PumpUntil([&] { return !window_.answered.empty(); })) << "the slow one held it up";
    EXPECT_EQ(window_.answered, std::vector{second});
    EXPECT_FALSE(decoder.Take(first));
    EXPECT_TRUE(decoder.Take(second));
    EXPECT_FALSE(decoder.Take(second)) << "taken already";
    gate_->OpenAll();
    ASSERT_TRUE(PumpUntil([] { return PreviewDecoder::WorkingThreads() == 0; }));
    EXPECT_TRUE(PumpUntil([] { return true; }));
    EXPECT_EQ(window_.answered.size(), 1U) << "the stale answer was dropped";
}

TEST_F(Decoding, TakesTheLastQuestionWhenAllThreadsAreBusy) {
    PreviewDecoder decoder(Slow());
    const char* const stuck[] = {"1", "2", "3", "4"};
    static_assert(std::size(stuck) == PreviewDecoder::kMostThreads);
    for (const char* path : stuck)
        decoder.Ask(path, window_.Window(), kDecoded);
    decoder.Ask("overtaken", window_.Window(), kDecoded);
    const std::uint32_t last = decoder.Ask("last", window_.Window(), kDecoded);
    EXPECT_EQ(PreviewDecoder::WorkingThreads(), PreviewDecoder::kMostThreads);
    gate_->Open("2");
    gate_->Open("last");
    ASSERT_TRUE(PumpUntil([&] { return !window_.answered.empty(); }));
    EXPECT_EQ(window_.answered, std::vector{last});
    EXPECT_FALSE(gate_->Started().contains("overtaken"));
}

TEST_F(Decoding, IsLeftBehindWithoutWaiting) {
    {
        PreviewDecoder decoder(Slow());
        decoder.Ask("slow", window_.Window(), kDecoded);
        ASSERT_TRUE(PumpUntil([&] { return gate_->Started().contains("slow"); }));
    } // returns, though nobody lets the decoding go on
    EXPECT_EQ(PreviewDecoder::WorkingThreads(), 1);
    gate_->OpenAll();
    ASSERT_TRUE(PumpUntil([] { return PreviewDecoder::WorkingThreads() == 0; }));
    EXPECT_TRUE(window_.answered.empty());
}

} // namespace kelvo::test
