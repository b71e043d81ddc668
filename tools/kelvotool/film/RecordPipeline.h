#pragma once
// The records of a track, decoded and made into something else on several threads, and handed out
// in order. What comes out is the same, byte by byte, however many threads there are: who takes a
// record from it writes the file that one core would have written. Memory is a window of a few
// records a thread.

#include "container/ZFilekel.h"
#include "framework/base/Result.h"
#include "tools/kelvotool/film/TrackReader.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace kelvo::tool {

/// One record on its way. Its memory serves one record after another.
struct PipelineRecord {
    std::uint32_t number = 0;
    std::vector<std::uint8_t> record = {}; ///< decoded; what could be, where it is damaged
    std::vector<std::uint8_t> side = {};   ///< empty for the Vorbis form
    std::optional<Problem> problem = {};   ///< what is wrong with it in the file
    bool is_damaged = false;               ///< it did not decode to its length
    std::vector<std::uint8_t> made = {};   ///< by the stage, which finds it empty
    std::uint64_t fingerprint = 0;         ///< by the stage
};

/// What is made of decoded records, on any thread: each thread has its own. It must not touch what
/// another thread may.
class RecordStage {
public:
    virtual ~RecordStage() = default;
    /// The records of one chain come in order, from its first one on.
    /// @return false when nothing can be made of it: the pipeline ends there with BadValue
    virtual bool Make(PipelineRecord& record) = 0;
};

struct PipelinePlan {
    std::uint32_t first = 0;        ///< records [first, end), cut to what there is
    std::uint32_t end = UINT32_MAX; ///< without it
    /// Where the stage may begin anew: at every record (1), at multiples of a number of records, or
    /// only at the first one (0).
    std::uint32_t chain = 1;
    unsigned jobs = 1; ///< threads that work, the caller's included
    /// Called once a thread at most, by the caller's; none: records are only decoded.
    std::function<std::unique_ptr<RecordStage>()> make_stage = {};
};

class RecordPipeline {
public:
    /// @param reader  open, and nobody else's until the pipeline is gone; a Vorbis sound is read by
    ///                it alone, a container by more of its kind
    RecordPipeline(TrackReader& reader, PipelinePlan plan);
    /// Waits for the records that are being worked on.
    ~RecordPipeline();
    RecordPipeline(const RecordPipeline&) = delete;
    RecordPipeline& operator=(const RecordPipeline&) = delete;

    /// The next record in order, which lives until the next call; the caller's thread works as well
    /// while it waits.
    /// @return null at the end, when a signal stops the tool, and where Why() tells a fault
    PipelineRecord* Next();
    /// Why there was no further record: None at the end, Stopped, Unreadable, EndsEarly (a Vorbis
    /// sound that has fewer frames than it says), BadValue (the stage), TooLarge (no memory).
    const Error& Why() const;
    /// The record at which a fault ended it: its number, and what is wrong with it in the file.
    const PipelineRecord& Failed() const;

private:
    class Machine;
    std::unique_ptr<Machine> machine_;
};

/// Whether the index alone says that every record lies right behind the one before: then reading by
/// number and reading in order are the same, and a track may be read at several places at once.
bool IndexIsInOrder(const ZFilekel& container);

} // namespace kelvo::tool
