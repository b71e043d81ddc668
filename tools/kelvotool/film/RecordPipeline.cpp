#include "tools/kelvotool/film/RecordPipeline.h"

#include "container/codec/CompressionTypes.h"
#include "tools/kelvotool/report/StopSignal.h"

#include <algorithm>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace kelvo::tool {

namespace {

// Small records are worked on in batches, so that taking them costs little beside the work.
constexpr std::uint32_t kBatchBytes = 64 * 1024;
constexpr std::uint32_t kLargestBatch = 64;
// Of decoded records and what is made of them.
constexpr std::uint64_t kWindowBytesAJob = std::uint64_t{64} * 1024 * 1024;
constexpr std::uint64_t kMostWindowBytes = std::uint64_t{512} * 1024 * 1024;
// A longer group does not fit into the window anyway.
constexpr std::uint32_t kLongGroup = 1024;

/// Makes a damaged record what it is when only the record before it was read first: over whatever
/// else stood in the buffer it would come out differently from thread to thread.
bool ReadAgain(TrackReader& reader, std::uint32_t number) {
    std::ranges::fill(reader.Container().RecordBuffer(), std::uint8_t{0});
    if (number > 0 && !reader.ReadByNumber(number - 1)) return false;
    return reader.ReadByNumber(number);
}

} // namespace

bool IndexIsInOrder(const ZFilekel& container) {
    const RecordIndex& index = container.Index();
    for (std::uint32_t n = 0; n < index.Count(); ++n) {
        const std::uint64_t side_end =
            std::uint64_t{index.SidePosition(n)} + container.SideLength();
        if (side_end != index.RecordOffset(n + 1)) return false;
    }
    return true;
}

class RecordPipeline::Machine {
public:
    Machine(TrackReader& reader, PipelinePlan plan);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    PipelineRecord* Next();
    const Error& Why() const { return why_; }
    const PipelineRecord& Failed() const { return failed_; }

private:
    enum class State : std::uint8_t { Free, Decoded, Done };
    struct Slot {
        State state = State::Free;
        PipelineRecord record;
    };
    /// A run of records that one thread at a time works on, in order. Whoever sets `busy` under the
    /// lock has everything else of it to himself.
    struct Chain {
        std::uint32_t next = 0;
        std::uint32_t end = 0; ///< nothing left: free for the next run
        bool busy = false;
        TrackReader* reader = nullptr;
        std::unique_ptr<TrackReader> own_reader = {};
        std::unique_ptr<RecordStage> stage = {};
    };
    struct Task {
        Chain* chain = nullptr;
        bool decodes = false;
        std::uint32_t count = 0;
    };
    using Lock = std::unique_lock<std::mutex>;

    void Measure();
    std::uint32_t RunEnd(std::uint32_t start, std::uint32_t length) const;
    Slot& SlotOf(std::uint32_t number) { return slots_[number % slots_.size()]; }
    std::uint32_t WindowEnd() const;
    std::uint32_t ReadyCount(const Chain& chain, bool decodes);
    Chain* Pick(std::vector<Chain>& chains, std::uint32_t& next_run, std::uint32_t run_length,
                bool decodes, std::uint32_t& count);
    std::optional<Task> TakeTask();
    void RunTask(const Task& task, Lock& lock);
    Error Perform(const Task& task, std::uint32_t& done);
    bool Decode(Chain& chain, PipelineRecord& record, Error& error);
    bool OpenReader(Chain& chain, Error& error);
    void Work();

    TrackReader& reader_;
    PipelinePlan plan_;
    // Fixed after construction.
    bool in_one_run_ = false; ///< the source is read in order by the reader that was given
    unsigned jobs_ = 1;
    std::uint32_t batch_ = 1;
    std::uint32_t decode_run_ = 0; ///< records that decode by themselves; 0: all in one run
    std::uint32_t stage_run_ = 0;
    std::uint32_t end_ = 0;

    std::mutex mutex_;
    std::condition_variable changed_;
    // Under the lock; a slot's record belongs to the thread whose task it is.
    std::vector<Slot> slots_;
    std::vector<Chain> decoders_;
    std::vector<Chain> stages_;
    std::uint32_t next_decode_run_ = 0;
    std::uint32_t next_stage_run_ = 0;
    std::uint32_t head_ = 0;    ///< the record that Next hands out
    std::uint32_t waiting_ = 0; ///< decoded records that no stage has seen
    bool held_ = false;         ///< the head is the caller's
    bool quit_ = false;
    std::uint32_t failed_at_ = std::numeric_limits<std::uint32_t>::max();
    Error failure_;
    Error why_;
    PipelineRecord failed_;
    std::vector<std::thread> threads_;
};

RecordPipeline::Machine::Machine(TrackReader& reader, PipelinePlan plan)
    : reader_(reader), plan_(std::move(plan)) {
    Measure();
    const std::uint32_t count = end_ - head_;
    jobs_ = std::max(1U, std::min<unsigned>(plan_.jobs, count / batch_ + 1));
    decoders_.resize(in_one_run_ ? 1 : jobs_);
    decoders_.front().reader = &reader_;
    if (plan_.make_stage) stages_.resize(jobs_);
    for (Chain& chain : stages_)
        chain.stage = plan_.make_stage();
    threads_.reserve(jobs_);
    try {
        for (unsigned i = 1; i < jobs_; ++i)
            threads_.emplace_back([this] { Work(); });
    } catch (const std::system_error&) { // no more threads: those that there are do the work
    }
}

RecordPipeline::Machine::~Machine() {
    {
        const std::lock_guard lock(mutex_);
        quit_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

/// How the track may be cut into runs, and how many records are on their way at once.
void RecordPipeline::Machine::Measure() {
    end_ = std::min(plan_.end, reader_.Count());
    head_ = next_decode_run_ = next_stage_run_ = std::min(plan_.first, end_);
    const std::uint64_t record_bytes =
        std::max<std::uint64_t>(1, reader_.IsVorbis() ? reader_.Track().vorbis->FrameBytes
                                                      : reader_.Container().RecordLength());
    batch_ = static_cast<std::uint32_t>(
        std::clamp<std::uint64_t>(kBatchBytes / record_bytes, 1, kLargestBatch));
    in_one_run_ = reader_.IsVorbis() || !IndexIsInOrder(reader_.Container());
    if (!in_one_run_ && reader_.IsDifferential()) {
        const auto& type =
            codec::CodingType(static_cast<int>(reader_.Container().CompressionType()));
        in_one_run_ = !type.forces_key || reader_.Container().KeyInterval() == 0;
        decode_run_ = in_one_run_ ? 0 : reader_.Container().KeyInterval();
    } else if (!in_one_run_) {
        decode_run_ = batch_;
    }
    stage_run_ = plan_.chain == 1 ? batch_ : plan_.chain;

    const std::uint64_t jobs = std::max(1U, plan_.jobs);
    const std::uint64_t group = std::max({4 * batch_, 2 * std::min(decode_run_, kLongGroup), //
                                          2 * std::min(stage_run_, kLongGroup)});
    const std::uint64_t side_bytes = reader_.IsVorbis() ? 0 : reader_.Container().SideLength();
    const std::uint64_t budget = std::min(jobs * kWindowBytesAJob, kMostWindowBytes);
    const std::uint64_t window =
        std::clamp<std::uint64_t>(budget / (2 * record_bytes + side_bytes), 1, jobs * group);
    slots_.resize(std::max<std::uint64_t>(1, std::min<std::uint64_t>(window, end_ - head_)));
}

std::uint32_t RecordPipeline::Machine::RunEnd(std::uint32_t start, std::uint32_t length) const {
    if (length == 0 || length - start % length > end_ - start) return end_;
    return start + (length - start % length);
}

std::uint32_t RecordPipeline::Machine::WindowEnd() const {
    const std::size_t room = std::min<std::size_t>(slots_.size(), end_ - head_);
    return std::min(head_ + static_cast<std::uint32_t>(room), failed_at_);
}

/// How many records of the chain can be worked on now.
std::uint32_t RecordPipeline::Machine::ReadyCount(const Chain& chain, bool decodes) {
    const std::uint32_t limit = std::min({chain.end, WindowEnd()});
    std::uint32_t count = 0;
    while (count < batch_ && chain.next + count < limit) {
        if (!decodes && SlotOf(chain.next + count).state != State::Decoded) break;
        ++count;
    }
    return count;
}

/// The chain whose next record is the first one that can be worked on; one that is done takes up
/// the next run.
RecordPipeline::Machine::Chain* RecordPipeline::Machine::Pick(std::vector<Chain>& chains,
                                                              std::uint32_t& next_run,
                                                              std::uint32_t run_length,
                                                              bool decodes, std::uint32_t& count) {
    Chain* best = nullptr;
    for (Chain& chain : chains) {
        if (chain.busy) continue;
        if (chain.next == chain.end && next_run < WindowEnd()) {
            if (!decodes && SlotOf(next_run).state != State::Decoded) continue;
            chain.next = next_run;
            chain.end = next_run = RunEnd(next_run, run_length);
        }
        const std::uint32_t ready = ReadyCount(chain, decodes);
        if (ready == 0 || (best != nullptr && best->next < chain.next)) continue;
        best = &chain;
        count = ready;
    }
    return best;
}

std::optional<RecordPipeline::Machine::Task> RecordPipeline::Machine::TakeTask() {
    // Decoding ahead keeps every thread's stage fed.
    const bool decodes_first = waiting_ < 2 * std::size_t{jobs_};
    for (const bool decodes : {decodes_first, !decodes_first}) {
        Task task{.decodes = decodes};
        task.chain = decodes ? Pick(decoders_, next_decode_run_, decode_run_, true, task.count)
                             : Pick(stages_, next_stage_run_, stage_run_, false, task.count);
        if (task.chain == nullptr) continue;
        task.chain->busy = true;
        return task;
    }
    return std::nullopt;
}

bool RecordPipeline::Machine::OpenReader(Chain& chain, Error& error) {
    if (chain.reader != nullptr) return true;
    auto reader = std::make_unique<TrackReader>(reader_.Film(), reader_.Track());
    if (reader->Open()) {
        error = {Fault::Unreadable, 0};
        return false;
    }
    chain.own_reader = std::move(reader);
    chain.reader = chain.own_reader.get();
    return true;
}

bool RecordPipeline::Machine::Decode(Chain& chain, PipelineRecord& record, Error& error) {
    if (!OpenReader(chain, error)) return false;
    TrackReader& reader = *chain.reader;
    const std::uint32_t number = record.number;
    if (!reader.HasMore()) {
        error = {Fault::EndsEarly, 0};
        return false;
    }
    const std::uint32_t at = reader.IsVorbis()
                                 ? static_cast<std::uint32_t>(reader.Vorbis().CurrentFrame())
                                 : reader.Container().CurrentRecord();
    bool read = at == number ? reader.ReadNext() : reader.ReadByNumber(number);
    if (read && !in_one_run_ && reader.RecordIsDamaged()) {
        const bool begins_anew =
            !reader.IsDifferential() || reader.Container().Header().KeyRecordOf(number) == number;
        if (begins_anew) read = ReadAgain(reader, number);
    }
    record.problem = reader.RecordProblem(number);
    if (!read) {
        const Error& last = reader.Container().LastError();
        error =
            !reader.IsVorbis() && last.fault != Fault::None ? last : Error{Fault::Unreadable, 0};
        return false;
    }
    record.is_damaged = reader.RecordIsDamaged();
    record.record.assign(reader.Record().begin(), reader.Record().end());
    record.side.assign(reader.Side().begin(), reader.Side().end());
    return true;
}

/// @param done  records that were worked on before the fault
Error RecordPipeline::Machine::Perform(const Task& task, std::uint32_t& done) {
    Chain& chain = *task.chain;
    Error error;
    try {
        for (; done < task.count && !StopRequested(); ++done) {
            // Its state keeps every other thread away from the slot.
            PipelineRecord& record = SlotOf(chain.next + done).record;
            if (task.decodes) {
                record.number = chain.next + done;
                if (!Decode(chain, record, error)) break;
            } else {
                record.made.clear();
                if (!chain.stage->Make(record)) {
                    error = {Fault::BadValue, 0};
                    break;
                }
            }
        }
    } catch (...) { // memory ran out, which a thread must not end with
        error = {Fault::TooLarge, 0};
    }
    return error;
}

void RecordPipeline::Machine::RunTask(const Task& task, Lock& lock) {
    std::uint32_t done = 0;
    lock.unlock();
    const Error error = Perform(task, done);
    lock.lock();
    const State state = task.decodes && !stages_.empty() ? State::Decoded : State::Done;
    for (std::uint32_t i = 0; i < done; ++i)
        SlotOf(task.chain->next + i).state = state;
    if (state == State::Decoded) waiting_ += done;
    if (!task.decodes) waiting_ -= done;
    task.chain->next += done;
    task.chain->busy = false;
    if (error.fault != Fault::None && task.chain->next < failed_at_) {
        failed_at_ = task.chain->next;
        failure_ = error;
    }
    changed_.notify_all();
}

void RecordPipeline::Machine::Work() {
    Lock lock(mutex_);
    while (!quit_ && !StopRequested()) {
        if (const auto task = TakeTask()) {
            RunTask(*task, lock);
        } else {
            changed_.wait(lock);
        }
    }
    changed_.notify_all();
}

PipelineRecord* RecordPipeline::Machine::Next() {
    Lock lock(mutex_);
    if (held_) {
        SlotOf(head_).state = State::Free;
        ++head_;
        held_ = false;
        changed_.notify_all();
    }
    while (true) {
        if (head_ == end_) return nullptr;
        if (StopRequested()) {
            why_ = {Fault::Stopped, 0};
            return nullptr;
        }
        if (SlotOf(head_).state == State::Done) {
            held_ = true;
            return &SlotOf(head_).record;
        }
        if (head_ == failed_at_) {
            why_ = failure_;
            failed_.number = head_;
            failed_.problem = SlotOf(head_).record.problem;
            return nullptr;
        }
        if (const auto task = TakeTask()) {
            RunTask(*task, lock);
        } else {
            changed_.wait(lock);
        }
    }
}

RecordPipeline::RecordPipeline(TrackReader& reader, PipelinePlan plan)
    : machine_(std::make_unique<Machine>(reader, std::move(plan))) {}

RecordPipeline::~RecordPipeline() = default;

PipelineRecord* RecordPipeline::Next() {
    return machine_->Next();
}

const Error& RecordPipeline::Why() const {
    return machine_->Why();
}

const PipelineRecord& RecordPipeline::Failed() const {
    return machine_->Failed();
}

} // namespace kelvo::tool
