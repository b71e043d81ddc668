#include "tests/container/ContainerFiles.h"

#include "framework/base/ByteReader.h"
#include "framework/base/ByteWriter.h"

#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <iterator>

namespace kelvo::test {

namespace {

constexpr int kStrangeRecord = 999;

int NumberOf(ByteView record, ByteView side) {
    if (record.size() < 4) return kStrangeRecord;
    const std::uint32_t number = ByteReader{record}.ReadU32();
    const auto length = static_cast<std::uint32_t>(record.size());
    const bool same =
        std::ranges::equal(record, Payload(number, length)) &&
        std::ranges::equal(side, Side(number, static_cast<std::uint32_t>(side.size())));
    return same ? static_cast<int>(number) : kStrangeRecord;
}

} // namespace

ByteVector Numbers(std::initializer_list<std::uint32_t> numbers) {
    ByteVector bytes(numbers.size() * 4);
    ByteWriter writer{bytes};
    for (const std::uint32_t number : numbers)
        writer.WriteU32(number);
    return bytes;
}

ByteVector Joined(std::initializer_list<ByteVector> parts) {
    ByteVector bytes;
    for (const ByteVector& part : parts)
        bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

ByteVector FileBytes(const std::string& name) {
    std::ifstream file(name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void WriteFileBytes(const std::string& name, ByteView bytes) {
    std::ofstream file(name, std::ios::binary | std::ios::trunc);
    file.write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));
    ASSERT_TRUE(file.flush());
}

std::uint32_t NumberIn(const std::string& name, std::size_t offset) {
    const ByteVector bytes = FileBytes(name);
    ByteReader reader{bytes};
    reader.Seek(offset);
    return reader.ReadU32();
}

void PutNumber(const std::string& name, std::size_t offset, std::uint32_t number) {
    ByteVector bytes = FileBytes(name);
    ASSERT_GE(bytes.size(), offset + 4);
    ByteWriter{ByteSpan{bytes}.subspan(offset)}.WriteU32(number);
    WriteFileBytes(name, bytes);
}

ByteVector Payload(std::uint32_t number, std::uint32_t length) {
    ByteVector bytes(length);
    ByteWriter{bytes}.WriteU32(number);
    // Pixels below 0x8000, in runs of a length that depends on the number.
    for (std::uint32_t i = 4; i < length; ++i) {
        bytes[i] = static_cast<std::uint8_t>((i / (4 + number % 7) + number) & 0x7FU);
    }
    return bytes;
}

ByteVector Side(std::uint32_t number, std::uint32_t length) {
    ByteVector bytes(length);
    for (std::uint32_t i = 0; i < length; ++i)
        bytes[i] = static_cast<std::uint8_t>(number + i);
    return bytes;
}

void MakeContainer(const std::string& name, const Shape& shape) {
    ZFilekel file;
    ASSERT_TRUE(file.Create(name.c_str(), shape.user_header_size, shape.record_length,
                            shape.side_length, shape.type, shape.key_interval, 1));
    ByteVector user_header(shape.user_header_size);
    for (std::size_t i = 0; i < user_header.size(); ++i) {
        user_header[i] = static_cast<std::uint8_t>(i + 1);
    }
    ASSERT_TRUE(file.WriteUserHeader(user_header));
    for (std::uint32_t i = 0; i < shape.records; ++i) {
        ASSERT_TRUE(file.AppendRecord(Payload(i, shape.record_length), Side(i, shape.side_length)));
    }
    ASSERT_TRUE(file.Close());
}

void MakeFilm(const std::string& name, const std::string& audio, const std::string& video) {
    const ByteVector sound = audio.empty() ? ByteVector{} : FileBytes(audio);
    const ByteVector picture = video.empty() ? ByteVector{} : FileBytes(video);
    const auto middle = static_cast<std::uint32_t>(16 + sound.size());
    const auto end = static_cast<std::uint32_t>(middle + picture.size());
    const bool has_sound = !audio.empty();
    const bool has_picture = !video.empty();
    WriteFileBytes(name, Joined({Numbers({has_sound ? 16U : 0U, has_sound ? middle : 0U,
                                          has_picture ? middle : 0U, has_picture ? end : 0U}),
                                 sound, picture}));
}

std::vector<int> RecordNumbers(ZFilekel& file) {
    std::vector<int> numbers;
    for (std::uint32_t i = 0; i < file.RecordCount(); ++i) {
        const bool read = file.ReadRecord(static_cast<int>(i));
        numbers.push_back(read ? NumberOf(file.RecordBuffer(), file.SideBuffer()) : kStrangeRecord);
    }
    return numbers;
}

std::vector<int> RecordNumbersIn(const std::string& name, char selector) {
    ZFilekel file;
    std::vector<int> numbers;
    if (!file.OpenForRead(name.c_str(), selector)) return numbers;
    while (file.ReadNextRecord()) {
        numbers.push_back(NumberOf(file.RecordBuffer(), file.SideBuffer()));
    }
    return numbers;
}

std::vector<int> Range(int count) {
    std::vector<int> numbers;
    for (int i = 0; i < count; ++i)
        numbers.push_back(i);
    return numbers;
}

ContainerTest::ContainerTest() {
    // In memory where there is such a folder: the tests sync thousands of files.
    const char* shared_memory = "/dev/shm";
    const std::filesystem::path parent = ::access(shared_memory, W_OK) == 0
                                             ? std::filesystem::path(shared_memory)
                                             : std::filesystem::temp_directory_path();
    std::string pattern = (parent / "container-XXXXXX").string();
    folder_ = std::string(::mkdtemp(pattern.data())) + "/";
}

ContainerTest::~ContainerTest() {
    std::error_code ignored;
    std::filesystem::remove_all(folder_, ignored);
}

std::vector<std::string> ContainerTest::Names() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
        names.push_back(entry.path().filename().string());
    }
    std::ranges::sort(names);
    return names;
}

} // namespace kelvo::test
