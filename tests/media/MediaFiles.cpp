#include "tests/media/MediaFiles.h"

#include "container/AVDirectory.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace kelvo::test {

namespace {

CString AsName(const std::string& text) {
    return CString{std::string_view{text}};
}

} // namespace

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "kelvo-media-XXXXXX").string();
    if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no temporary folder");
    path_ = pattern;
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
}

CString TemporaryFolder::Name(const std::string& file) const {
    return AsName(path_ + "/" + file);
}

CString TemporaryFolder::Write(const std::string& file, ByteView bytes) const {
    std::ofstream stream(path_ + "/" + file, std::ios::binary);
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    if (!stream) throw std::runtime_error("cannot write " + file);
    return Name(file);
}

std::vector<std::string> TemporaryFolder::Files() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_)) {
        names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

Bytes ReadFile(const CString& name) {
    std::ifstream stream(std::string{name.View()}, std::ios::binary);
    if (!stream) throw std::runtime_error("cannot read " + std::string{name.View()});
    return Bytes(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
}

Bytes RawContainer::Build() const {
    ContainerHeader filled = header;
    const auto set = [](std::uint32_t& field, std::size_t value) {
        if (field == 0) field = static_cast<std::uint32_t>(value);
    };
    set(filled.UserHeaderSize, user_header.size());
    set(filled.RecordLength, records.empty() ? 0 : records.front().size());
    set(filled.SideLength, sides.empty() ? 0 : sides.front().size());
    set(filled.RecordCount, records.size());
    set(filled.CompressionType, 99);
    set(filled.KeyInterval, 999999);
    filled.CreatorValue = 1;
    filled.HeaderMark = 1;

    Bytes body = user_header;
    Bytes offsets;
    Bytes side_positions;
    const auto position = [&] {
        return static_cast<std::uint32_t>(kContainerHeaderBytes + body.size());
    };
    for (std::size_t i = 0; i < records.size(); ++i) {
        Put32(offsets, position());
        Put32(body, static_cast<std::uint32_t>(records[i].size()));
        body.insert(body.end(), records[i].begin(), records[i].end());
        Put32(side_positions, position());
        if (i < sides.size()) body.insert(body.end(), sides[i].begin(), sides[i].end());
    }
    Put32(offsets, position());
    set(filled.IndexOffset, position());
    const auto head = HeaderBytes(filled);
    return Joined({Bytes(head.begin(), head.end()), body, offsets, side_positions});
}

Bytes FilmOf(const Bytes& audio, const Bytes& video) {
    const auto audio_end = static_cast<std::uint32_t>(16 + audio.size());
    Bytes film;
    Put32(film, audio.empty() ? 0 : 16);
    Put32(film, audio.empty() ? 0 : audio_end);
    Put32(film, video.empty() ? 0 : audio_end);
    Put32(film, video.empty() ? 0 : audio_end + static_cast<std::uint32_t>(video.size()));
    return Joined({film, audio, video});
}

void Put32(Bytes& bytes, std::uint32_t value) {
    Put16(bytes, static_cast<std::uint16_t>(value));
    Put16(bytes, static_cast<std::uint16_t>(value >> 16U));
}

void Put16(Bytes& bytes, std::uint16_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8U));
}

void Set32(Bytes& bytes, std::size_t offset, std::uint32_t value) {
    Set16(bytes, offset, static_cast<std::uint16_t>(value));
    Set16(bytes, offset + 2, static_cast<std::uint16_t>(value >> 16U));
}

void Set16(Bytes& bytes, std::size_t offset, std::uint16_t value) {
    bytes.at(offset) = static_cast<std::uint8_t>(value);
    bytes.at(offset + 1) = static_cast<std::uint8_t>(value >> 8U);
}

Bytes Joined(std::initializer_list<Bytes> parts) {
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

std::string Sha256(ByteView bytes) {
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    unsigned length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr) !=
        1) {
        throw std::runtime_error("no sha256");
    }
    constexpr char kDigits[] = "0123456789abcdef";
    std::string text;
    for (unsigned i = 0; i < length; ++i) {
        text += kDigits[digest[i] >> 4U];
        text += kDigits[digest[i] & 15U];
    }
    return text;
}

namespace {

class RecordedProgress : public ProgressDisplay {
public:
    explicit RecordedProgress(ProgressRecorder& recorder) : recorder_(recorder) {}
    bool Update(std::int32_t current, std::int32_t total) override {
        recorder_.shares.push_back(current);
        recorder_.total = total;
        if (recorder_.during) recorder_.during();
        return recorder_.shares.size() - 1 != recorder_.cancel_at;
    }
    void Close() override { ++recorder_.closed; }

private:
    ProgressRecorder& recorder_;
};

} // namespace

ProgressRecorder::ProgressRecorder() {
    SetProgressDisplayFactory([this](const CString& title) {
        titles.emplace_back(title.View());
        return std::make_unique<RecordedProgress>(*this);
    });
}

ProgressRecorder::~ProgressRecorder() {
    SetProgressDisplayFactory({});
}

} // namespace kelvo::test
