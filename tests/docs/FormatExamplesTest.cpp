// docs/format.md against the program: each example is read out of the page, made by the classes
// that the player uses, and read back by them.

#include "container/AVDirectory.h"
#include "container/Compressionekel.h"
#include "container/ContainerHeader.h"
#include "container/codec/CompressionTypes.h"
#include "container/codec/Lzss.h"
#include "media/AudioFilekel.h"
#include "media/FilmFile.h"
#include "media/VideoFilekel.h"
#include "media/VorbisTrackWriter.h"
#include "tests/docs/Markdown.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>

namespace kelvo::docs {
namespace {

const Document& Format() {
    static const Document document = ReadDocument(KELVO_SOURCE_DIR "/docs/format.md");
    return document;
}

std::vector<Block> BlocksOf(const std::string& first_word) {
    std::vector<Block> found;
    for (const Block& block : Format().blocks) {
        if (block.info.starts_with(first_word + " ")) found.push_back(block);
    }
    return found;
}

Block BlockNamed(const std::string& info) {
    for (const Block& block : Format().blocks) {
        if (block.info == info) return block;
    }
    ADD_FAILURE() << "the page has no block " << info;
    return {};
}

std::string Where(const Block& block) {
    return "docs/format.md:" + std::to_string(block.line) + " (" + block.info + ")";
}

std::string WithoutRemark(const std::string& line) {
    return line.substr(0, line.find(';'));
}

/// "key  bytes" lines; a line that begins with a blank goes on with the one before.
std::map<std::string, Bytes> PartsOf(const Block& block) {
    std::map<std::string, std::string> texts;
    std::string key;
    for (const std::string& line : block.lines) {
        const std::string content = WithoutRemark(line);
        const std::size_t key_end = content.starts_with(' ') ? 0 : content.find(' ');
        if (key_end != 0) key = content.substr(0, key_end);
        texts[key] += content.substr(std::min(key_end, content.size()));
    }
    std::map<std::string, Bytes> parts;
    for (const auto& [name, text] : texts)
        parts[name] = BytesFrom(text);
    return parts;
}

/// What "type=5,6" in a block's info names.
std::vector<int> TypesOf(const Block& block) {
    std::smatch match;
    static const std::regex kTypes("type=([0-9,]+)");
    std::vector<int> types;
    if (!std::regex_search(block.info, match, kTypes)) return types;
    std::istringstream list(match[1].str());
    for (std::string id; std::getline(list, id, ',');)
        types.push_back(std::stoi(id));
    return types;
}

Bytes Copy(ByteView view) {
    return {view.begin(), view.end()};
}

Bytes Shortened(const Bytes& bytes) {
    Bytes stream(codec::LzssWorstCase(bytes.size()));
    codec::LzssEncoder encoder;
    stream.resize(encoder.Encode(bytes, stream));
    return stream;
}

Bytes Lengthened(const Bytes& stream, std::size_t room) {
    Bytes bytes(room);
    const Decoded decoded = codec::DecodeLzss(stream, bytes);
    EXPECT_EQ(decoded.fault, Fault::None);
    EXPECT_EQ(decoded.described, decoded.written);
    bytes.resize(decoded.written);
    return bytes;
}

Bytes StoredBy(int type, const std::map<std::string, Bytes>& parts) {
    const Bytes& record = parts.at("record");
    Compressionekel catalogue;
    EXPECT_TRUE(catalogue.SetCompressionType(type, static_cast<int>(record.size())));
    Bytes stored(catalogue.StoredRoom(record.size()));
    if (parts.contains("before")) std::ignore = catalogue.Compress(parts.at("before"), stored);
    stored.resize(catalogue.Compress(record, stored));
    return stored;
}

Bytes DecodedBy(int type, const std::map<std::string, Bytes>& parts) {
    const std::size_t length = parts.at("record").size();
    Compressionekel catalogue;
    EXPECT_TRUE(catalogue.SetCompressionType(type, static_cast<int>(length)));
    Bytes record = parts.contains("before") ? parts.at("before") : Bytes(length, 0x55);
    const Decoded decoded = catalogue.DecodeRecord(parts.at("stored"), record);
    EXPECT_EQ(decoded.fault, Fault::None);
    EXPECT_EQ(decoded.written, length);
    return record;
}

TEST(FormatExamples, OfStreamsAreWhatTheCatalogueWritesAndReads) {
    std::set<int> shown;
    for (const Block& block : BlocksOf("stream")) {
        SCOPED_TRACE(Where(block));
        const auto parts = PartsOf(block);
        for (const int type : TypesOf(block)) {
            SCOPED_TRACE("type " + std::to_string(type));
            const bool decode_only = block.info.find("decode-only") != std::string::npos;
            if (!decode_only) {
                shown.insert(type);
                EXPECT_EQ(Notation(StoredBy(type, parts)), Notation(parts.at("stored")));
            }
            const Bytes& expected = parts.at(parts.contains("decoded") ? "decoded" : "record");
            EXPECT_EQ(Notation(DecodedBy(type, parts)), Notation(expected));
            EXPECT_EQ(parts.contains("coded"), codec::CodingType(type).cmprs && type != 17);
        }
    }
    std::set<int> known;
    for (const codec::CompressionType& type : codec::AllCompressionTypes())
        known.insert(type.id);
    EXPECT_EQ(shown, known) << "each type has an example, and no other";
}

TEST(FormatExamples, OfTheLastStageAreWhatItWritesAndReads) {
    int shown = 0;
    for (const Block& block : BlocksOf("stream")) {
        SCOPED_TRACE(Where(block));
        auto parts = PartsOf(block);
        if (block.info == "stream cmprs") parts["coded"] = parts.at("record");
        if (!parts.contains("coded")) continue;
        ++shown;
        const Bytes& coded = parts.at("coded");
        EXPECT_EQ(Notation(Shortened(coded)), Notation(parts.at("stored")));
        EXPECT_EQ(Notation(Lengthened(parts.at("stored"), coded.size() + 1)), Notation(coded));
    }
    EXPECT_GE(shown, 4);
}

/// A dump, with the numbers that its remarks name.
struct Dump {
    Bytes bytes;
    std::map<std::string, std::uint64_t> fields;
};

std::uint64_t NumberOf(const Bytes& bytes) {
    std::uint64_t number = 0;
    for (std::size_t i = bytes.size(); i-- > 0;)
        number = number << 8U | bytes[i];
    return number;
}

/// Reads "offset  bytes ; remark" lines. Each offset must be where its bytes are, and a number that
/// begins or ends the remark of a field must be what the field's bytes say.
Dump DumpNamed(const std::string& name) {
    static const std::regex kLine("^([0-9A-F]{4})  ([^;]+?) *(?:; (.*))?$");
    static const std::regex kRemark("^ *;.*$");
    static const std::regex kField("^([A-Za-z_.]+)[^0-9]* ([0-9]+)$");
    static const std::regex kNumber("^([0-9]+) .*$|^.* ([0-9]+)$");
    const Block block = BlockNamed("dump " + name);
    Dump dump;
    for (const std::string& line : block.lines) {
        SCOPED_TRACE(Where(block) + ": " + line);
        if (std::regex_match(line, kRemark)) continue;
        std::smatch parts;
        if (!std::regex_match(line, parts, kLine)) {
            ADD_FAILURE() << "neither a remark nor a line of a dump";
            continue;
        }
        EXPECT_EQ(std::stoul(parts[1].str(), nullptr, 16), dump.bytes.size()) << "wrong offset";
        const Bytes bytes = BytesFrom(parts[2].str());
        const std::string remark = parts[3].str();
        std::smatch number;
        if (bytes.size() <= 4 && std::regex_match(remark, number, kNumber)) {
            EXPECT_EQ(std::stoull(number[1].str() + number[2].str()), NumberOf(bytes));
        }
        if (std::regex_match(remark, number, kField)) {
            dump.fields[number[1].str()] = std::stoull(number[2].str());
        }
        dump.bytes.insert(dump.bytes.end(), bytes.begin(), bytes.end());
    }
    return dump;
}

Bytes Prefix(const Bytes& bytes, std::size_t length) {
    return {bytes.begin(),
            bytes.begin() + static_cast<std::ptrdiff_t>(std::min(length, bytes.size()))};
}

/// A folder of its own for each test, gone when the test is.
class FormatExampleFiles : public testing::Test {
protected:
    FormatExampleFiles() {
        std::string pattern = (std::filesystem::temp_directory_path() / "kelvo-XXXXXX").string();
        folder_ = mkdtemp(pattern.data()) == nullptr ? "" : pattern;
        EXPECT_FALSE(folder_.empty());
    }
    ~FormatExampleFiles() override {
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    CString Name(const char* file) const { return CString((folder_ / file).string()); }
    static Bytes Content(const CString& name) {
        const std::string text = ReadText(name.c_str());
        return {text.begin(), text.end()};
    }
    CString Write(const char* file, const Bytes& bytes) const {
        std::ofstream stream(folder_ / file, std::ios::binary);
        stream.write(reinterpret_cast<const char*>(bytes.data()),
                     static_cast<std::streamsize>(bytes.size()));
        return Name(file);
    }

private:
    std::filesystem::path folder_;
};

TEST(FormatExamples, OfTheSoundHeaderIsBuiltAndParsed) {
    const Dump dump = DumpNamed("audio-header");
    const auto built = AudioHeaderBytes(BuildWaveFormat(22050, 1, 10));
    EXPECT_EQ(Notation(dump.bytes), Notation({built.begin(), built.end()}));
    const Result<AudioHeader> parsed = ParseAudioHeader(dump.bytes);
    ASSERT_TRUE(parsed.Ok());
    EXPECT_EQ(CheckAudioHeader(parsed.Value()), Error{});
    const AudioHeader& header = parsed.Value();
    const std::map<std::string, std::uint64_t> fields{
        {"SampleRate", header.SampleRate},
        {"BytesPerSample", header.BytesPerSample},
        {"nFramesAlSec", header.nFramesAlSec},
        {"FrameBytes", header.FrameBytes},
        {"wFormatTag", header.Format.wFormatTag},
        {"nChannels", header.Format.nChannels},
        {"nSamplesPerSec", header.Format.nSamplesPerSec},
        {"nAvgBytesPerSec", header.Format.nAvgBytesPerSec},
        {"nBlockAlign", header.Format.nBlockAlign},
        {"wBitsPerSample", header.Format.wBitsPerSample},
        {"cbSize", header.Format.cbSize}};
    EXPECT_EQ(dump.fields, fields);
}

TEST_F(FormatExampleFiles, OfTheVorbisFormIsWrittenAndOpened) {
    const Dump dump = DumpNamed("vorbis-header");
    const CString name = Name("sound.kaf");
    VorbisTrackWriter writer;
    ASSERT_EQ(writer.Begin(name, BuildWaveFormat(22050, 1, 10)), Error{});
    ASSERT_EQ(writer.Append(Bytes(std::size_t{3} * 2205, 127)), Error{});
    ASSERT_EQ(writer.Finish(), Error{});
    EXPECT_EQ(Notation(dump.bytes), Notation(Prefix(Content(name), dump.bytes.size())));

    AudioFilekel track;
    ASSERT_TRUE(track.OpenForRead(name));
    ASSERT_TRUE(track.IsVorbis());
    const VorbisDescription& described = track.Vorbis()->Description();
    const std::map<std::string, std::uint64_t> fields{
        {"frame_count", described.frame_count},   {"SampleRate", described.SampleRate},
        {"channels", described.channels},         {"BytesPerSample", described.BytesPerSample},
        {"nFramesAlSec", described.nFramesAlSec}, {"FrameBytes", described.FrameBytes}};
    EXPECT_EQ(dump.fields, fields);
}

TEST_F(FormatExampleFiles, OfThePictureHeaderIsWrittenAndParsed) {
    const Dump dump = DumpNamed("video-header");
    VideoFilekel track;
    ASSERT_TRUE(track.Create(Name("picture.kvf"), kBitmapHeadersSize, 153600, 1, 25, 999999, true));
    ASSERT_TRUE(track.WriteVideoHeader(BuildBitmapHeaders(320, 240, 16)));
    EXPECT_EQ(Notation(dump.bytes), Notation(Copy(track.UserHeader())));

    const Result<VideoHeader> parsed = ParseVideoHeader(dump.bytes);
    ASSERT_TRUE(parsed.Ok());
    const VideoHeader& header = parsed.Value();
    EXPECT_EQ(CheckVideoHeader(header, dump.bytes.size(), 153600), Error{});
    const std::map<std::string, std::uint64_t> fields{
        {"biSize", header.bitmap.biSize},
        {"biWidth", static_cast<std::uint64_t>(header.bitmap.biWidth)},
        {"biHeight", static_cast<std::uint64_t>(header.bitmap.biHeight)},
        {"biPlanes", header.bitmap.biPlanes},
        {"biBitCount", header.bitmap.biBitCount},
        {"biCompression", header.bitmap.biCompression},
        {"biSizeImage", header.bitmap.biSizeImage},
        {"BitmapHeaderLength", header.BitmapHeaderLength},
        {"VideoHeaderLength", header.VideoHeaderLength},
        {"nImgAlSec", static_cast<std::uint64_t>(header.nImgAlSec)},
        {"VideoFlags", header.VideoFlags}};
    for (const auto& [field, value] : fields)
        EXPECT_EQ(dump.fields.at(field), value) << field;
}

TEST(FormatExamples, OfTheDirectoryIsParsed) {
    const Dump dump = DumpNamed("directory");
    const Result<AVDirectory> parsed = ParseAVDirectory(dump.bytes);
    ASSERT_TRUE(parsed.Ok());
    const AVDirectory& directory = parsed.Value();
    const std::map<std::string, std::uint64_t> fields{{"audio.start", directory.audio.start},
                                                      {"audio.end", directory.audio.end},
                                                      {"video.start", directory.video.start},
                                                      {"video.end", directory.video.end}};
    EXPECT_EQ(dump.fields, fields);
    const auto built = DirectoryBytes(directory);
    EXPECT_EQ(Notation(dump.bytes), Notation({built.begin(), built.end()}));
}

/// The records of a whole example, "number  bytes" lines.
std::vector<Bytes> RecordsOf(const std::string& track) {
    std::vector<Bytes> records;
    for (const std::string& line : BlockNamed("records " + track).lines) {
        const std::size_t number_end = line.find(' ');
        EXPECT_EQ(line.substr(0, number_end), std::to_string(records.size()));
        records.push_back(BytesFrom(line.substr(number_end)));
    }
    return records;
}

TEST_F(FormatExampleFiles, OfAWholeFilmIsWhatTheClassesWrite) {
    AudioFilekel sound;
    ASSERT_TRUE(sound.Create(Name("film.kaf"), 15, 80, 1, 10));
    for (const Bytes& frame : RecordsOf("sound"))
        ASSERT_TRUE(sound.AppendAudioFrame(frame, 0));
    ASSERT_TRUE(sound.Close());
    VideoFilekel picture;
    ASSERT_TRUE(
        picture.Create(Name("film.kvf"), kBitmapHeadersSize, 16, 5, 10, kNoKeyInterval, false));
    ASSERT_TRUE(picture.WriteVideoHeader(BuildBitmapHeaders(4, 2, 16)));
    std::uint32_t number = 0;
    for (const Bytes& image : RecordsOf("picture")) {
        ASSERT_TRUE(picture.AppendFrame(image, number++, 0));
    }
    ASSERT_TRUE(picture.Close());
    ASSERT_EQ(WriteFilmFile(Name("film.kva"), Name("film.kaf"), Name("film.kvf")), Error{});
    EXPECT_EQ(Notation(Content(Name("film.kva"))), Notation(DumpNamed("film").bytes));
}

TEST_F(FormatExampleFiles, OfAWholeFilmOpensAndItsRecordsDecode) {
    const CString film = Write("film.kva", DumpNamed("film").bytes);
    AudioFilekel sound;
    ASSERT_TRUE(sound.OpenForRead(film));
    EXPECT_EQ(sound.CompressionType(), 15U);
    const std::vector<Bytes> frames = RecordsOf("sound");
    EXPECT_EQ(sound.FrameCount(), static_cast<int>(frames.size()));
    int next = 0;
    std::uint32_t capture_time = 0;
    for (const Bytes& frame : frames) {
        ASSERT_TRUE(sound.ReadNextAudioFrame(next, capture_time));
        EXPECT_FALSE(sound.RecordIsDamaged());
        EXPECT_EQ(Notation(Copy(sound.FrameData())), Notation(frame));
    }
    EXPECT_FALSE(sound.ReadNextAudioFrame(next, capture_time));

    VideoFilekel picture;
    ASSERT_TRUE(picture.OpenForRead(film));
    EXPECT_EQ(picture.CompressionType(), 5U);
    EXPECT_EQ(picture.Width(), 4);
    EXPECT_EQ(picture.Height(), 2);
    const std::vector<Bytes> images = RecordsOf("picture");
    EXPECT_EQ(picture.FrameCount(), static_cast<int>(images.size()));
    FrameSide side;
    for (std::size_t i = 0; i < images.size(); ++i) {
        ASSERT_TRUE(picture.ReadNextFrame(side));
        EXPECT_FALSE(picture.RecordIsDamaged());
        EXPECT_EQ(Notation(Copy(picture.FrameBits())), Notation(images[i]));
        EXPECT_EQ(side.SyncNumber, i);
    }
    EXPECT_FALSE(picture.ReadNextFrame(side));

    const std::string verify = std::string(KELVOTOOL) + " verify '" + film.c_str() + "'";
    EXPECT_EQ(std::system(verify.c_str()), 0);
}

} // namespace
} // namespace kelvo::docs
