#pragma once
// Files for the tests of containers: a folder that goes away, bytes of files, containers with
// records that can be told apart.

#include "container/ZFilekel.h"
#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "platform/base/message_boxes.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace kelvo::test {

using ByteVector = std::vector<std::uint8_t>;

/// The bytes of a little-endian 32-bit number after each other.
ByteVector Numbers(std::initializer_list<std::uint32_t> numbers);
ByteVector Joined(std::initializer_list<ByteVector> parts);

ByteVector FileBytes(const std::string& name);
void WriteFileBytes(const std::string& name, ByteView bytes);
/// The number at an offset of a file.
std::uint32_t NumberIn(const std::string& name, std::size_t offset);
void PutNumber(const std::string& name, std::size_t offset, std::uint32_t number);

/// A record that no other number has; compresses well, but not to nothing.
ByteVector Payload(std::uint32_t number, std::uint32_t length);
ByteVector Side(std::uint32_t number, std::uint32_t length);

struct Shape {
    std::uint32_t type = 9;
    std::uint32_t records = 10;
    std::uint32_t record_length = 64;
    std::uint32_t side_length = 8;
    std::uint32_t user_header_size = 5;
    std::uint32_t key_interval = 999999;
};

/// A closed container of Payload(0), Payload(1) and so on; its user header is 1, 2, 3 and so on.
void MakeContainer(const std::string& name, const Shape& shape);
/// A film of two whole files; an empty name is an absent track.
void MakeFilm(const std::string& name, const std::string& audio, const std::string& video);

/// The numbers of the records of an open container, told by their payloads; 999 for one that is
/// none of them or whose side block is another's. Read by number.
std::vector<int> RecordNumbers(ZFilekel& file);
/// The same for a closed file, read in sequence; empty when it does not open.
std::vector<int> RecordNumbersIn(const std::string& name, char selector = 'A');
std::vector<int> Range(int count);

/// A folder of its own for each test, and a recorder of message boxes.
class ContainerTest : public testing::Test {
protected:
    ContainerTest();
    ~ContainerTest() override;
    std::string Path(std::string_view name) const { return folder_ + std::string(name); }
    /// Names in the folder, sorted.
    std::vector<std::string> Names() const;
    std::vector<std::string> Texts() const { return boxes_.Texts(); }

    platform::MessageBoxRecorder boxes_;

private:
    std::string folder_;
};

} // namespace kelvo::test
