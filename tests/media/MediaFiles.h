#pragma once
// What the tests of tracks are made of: a folder that goes away, files byte by byte, containers of
// raw records with any claim in their headers, and a progress display that a test looks into.

#include "container/ContainerHeader.h"
#include "framework/base/Bytes.h"
#include "framework/base/CString.h"
#include "framework/base/ProgressDisplay.h"

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <vector>

namespace kelvo::test {

using Bytes = std::vector<std::uint8_t>;

class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The full name of a file in it.
    CString Name(const std::string& file) const;
    /// Writes a file and gives its full name.
    CString Write(const std::string& file, ByteView bytes) const;
    /// The names in it, sorted.
    std::vector<std::string> Files() const;

private:
    std::string path_;
};

Bytes ReadFile(const CString& name);

/// A container of raw records (type 99) as its header, user header, records and index say.
struct RawContainer {
    ContainerHeader header; // counts, lengths and IndexOffset are filled in where they are 0
    Bytes user_header;
    std::vector<Bytes> records;
    std::vector<Bytes> sides;

    Bytes Build() const;
};

/// A film's directory and its two tracks, whatever they are; an empty track is absent.
Bytes FilmOf(const Bytes& audio, const Bytes& video);

/// Appends little-endian numbers.
void Put32(Bytes& bytes, std::uint32_t value);
void Put16(Bytes& bytes, std::uint16_t value);
/// Overwrites one in place.
void Set32(Bytes& bytes, std::size_t offset, std::uint32_t value);
void Set16(Bytes& bytes, std::size_t offset, std::uint16_t value);
Bytes Joined(std::initializer_list<Bytes> parts);

/// Lower-case hexadecimal.
std::string Sha256(ByteView bytes);

/// While it lives, keeps what progress displays were asked to show, and stops them if told to.
class ProgressRecorder {
public:
    ProgressRecorder();
    ~ProgressRecorder();
    ProgressRecorder(const ProgressRecorder&) = delete;
    ProgressRecorder& operator=(const ProgressRecorder&) = delete;

    std::vector<std::string> titles;
    std::vector<std::int32_t> shares; // of kTotal
    std::int32_t total = 0;
    std::size_t cancel_at = SIZE_MAX; // number of the update that is answered with stop
    std::function<void()> during;     // called within every update
    int closed = 0;
};

} // namespace kelvo::test
