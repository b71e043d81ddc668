#include "tools/kelvotool/film/IndexCheck.h"

#include "framework/base/ByteReader.h"
#include "platform/base/files.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <array>
#include <cstdint>
#include <optional>

namespace kelvo::tool {

namespace {

constexpr std::uint64_t kLengthBytes = 4;

std::optional<std::uint32_t> NumberAt(HFILE file, std::uint64_t offset) {
    std::array<std::uint8_t, kLengthBytes> bytes{};
    const std::int64_t count = platform::ReadFileAt(file, offset, bytes.data(), bytes.size());
    if (count != std::int64_t{kLengthBytes}) return std::nullopt;
    return ByteReader{bytes}.ReadU32();
}

} // namespace

bool CheckIndex(const TrackReader& reader, Reporter& reporter) {
    const ZFilekel& container = reader.Container();
    const RecordIndex& index = container.Index();
    const std::uint64_t start = reader.Track().window.start;
    const std::uint64_t problems_before = reporter.Count();
    std::uint64_t expected = container.Header().FirstRecordOffset();
    for (std::uint32_t n = 0; n < index.Count() && !StopRequested(); ++n) {
        const std::uint64_t offset = index.RecordOffset(n);
        if (offset != expected) {
            reporter.Report(reader.Make(ProblemCode::IndexDamaged,
                                        "the index places it elsewhere than behind the record "
                                        "before it",
                                        n, start + offset));
        }
        const auto length = NumberAt(container.Handle(), start + offset);
        if (!length || offset + kLengthBytes > reader.Track().window.Size()) {
            reporter.Report(reader.Make(ProblemCode::IndexDamaged,
                                        "the index places it beyond the end", n, start + offset));
            expected = std::uint64_t{index.SidePosition(n)} + container.SideLength();
            continue;
        }
        const std::uint64_t side = offset + kLengthBytes + *length;
        if (index.SidePosition(n) != side) {
            reporter.Report(reader.Make(ProblemCode::IndexDamaged,
                                        "the index and the record disagree on its length", n,
                                        start + offset));
        }
        // From here on as the index has it, so that one fault is one problem.
        expected = std::uint64_t{index.SidePosition(n)} + container.SideLength();
    }
    if (index.End() != expected) {
        reporter.Report(reader.Make(ProblemCode::IndexDamaged,
                                    "the index gives another end of the records", {},
                                    start + index.End()));
    } else if (index.End() > container.Header().IndexOffset) {
        reporter.Report(reader.Make(ProblemCode::IndexDamaged, "the index lies inside the records",
                                    {}, start + container.Header().IndexOffset));
    }
    return reporter.Count() == problems_before;
}

} // namespace kelvo::tool
