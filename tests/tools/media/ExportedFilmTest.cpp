// A film on its way out through both programs: what kelvotool-media's archive holds is, record by
// record, what the film decodes to.

#include "tests/tools/media/Streams.h"

namespace kelvo::test {

namespace {

/// An image as a record of 16-bit pixels: rows from the bottom up, filled up to 4 bytes.
Bytes RecordOf(const StreamImage& image, std::size_t width, std::size_t height) {
    Bytes record;
    for (std::size_t y = height; y-- > 0;) {
        for (std::size_t x = 0; x < width; ++x) {
            const std::uint8_t* const pixel = image.pixels.data() + (y * width + x) * 3;
            const auto value = static_cast<std::uint32_t>(pixel[0] >> 3U << 10U |
                                                          pixel[1] >> 3U << 5U | pixel[2] >> 3U);
            record.push_back(static_cast<std::uint8_t>(value & 0xFFU));
            record.push_back(static_cast<std::uint8_t>(value >> 8U));
        }
        while (record.size() % 4 != 0)
            record.push_back(0);
    }
    return record;
}

class ExportedFilm : public ToolTest {};

TEST_F(ExportedFilm, HoldsEveryPixelAndSampleOfItsRecords) {
    ASSERT_EQ(RunTool({"mux", Sample("screen.kaf"), Sample("square.kvf"), Path("film.kva")}).code,
              0);
    const ToolResult exported =
        RunTool({"export", Path("film.kva"), Path("film.mkv"), "--timing", "cfr"});
    ASSERT_EQ(exported.code, 0) << exported.messages;
    const MediaStream stream = ParseStream(Decode({Path("film.mkv")}).output);
    ASSERT_TRUE(stream.picture && stream.sound && stream.has_end);

    ASSERT_EQ(RunTool({"frames", Sample("square.kvf"), "--raw", Path("raw")}).code, 0);
    const Bytes records = ReadFile(Path("raw"));
    Bytes pictures;
    for (const StreamImage& image : stream.images) {
        const Bytes record = RecordOf(image, stream.picture->width, stream.picture->height);
        pictures.insert(pictures.end(), record.begin(), record.end());
    }
    EXPECT_EQ(stream.images.size(), 60U);
    EXPECT_TRUE(pictures == records) << "pixels differ";

    ASSERT_EQ(RunTool({"frames", Sample("screen.kaf"), "--raw", Path("raw"), "-f"}).code, 0);
    const Bytes sound = ReadFile(Path("raw"));
    EXPECT_EQ(stream.sound->significant_bits, 8U);
    ASSERT_GE(stream.samples.size(), sound.size());
    std::size_t differing = 0;
    for (std::size_t i = 0; i < sound.size(); ++i) {
        const int expected = sound[i] == 255 ? 32767 : (sound[i] - 127) * 256;
        differing += stream.samples[i] == expected ? 0 : 1;
    }
    EXPECT_EQ(differing, 0U);
}

TEST_F(ExportedFilm, ComesBackRecordByRecord) {
    ASSERT_EQ(RunTool({"mux", Sample("screen.kaf"), Sample("square.kvf"), Path("film.kva")}).code,
              0);
    ASSERT_EQ(RunTool({"export", Path("film.kva"), Path("film.mkv"), "--timing", "cfr"}).code, 0);
    const ToolResult imported = RunTool({"import", Path("film.mkv"), Path("back.kva")});
    EXPECT_EQ(imported.code, 0) << imported.messages;
    for (const char* const track : {"audio", "video"}) {
        const auto before = Contents(Path("film.kva"), track);
        const auto after = Contents(Path("back.kva"), track);
        ASSERT_EQ(before.size(), after.size()) << track;
        for (std::size_t n = 0; n < before.size(); ++n)
            EXPECT_EQ(before[n].first, after[n].first) << track << " record " << n;
    }
}

} // namespace

} // namespace kelvo::test
