#include "app/PreviewDecoder.h"

#include "platform/desktop/messages.h"

#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace kelvo {
namespace {

std::atomic<int> working_threads = 0;

struct Question {
    CString path;
    std::uint32_t number = 0;
};

} // namespace

struct PreviewDecoder::Shared {
    explicit Shared(Decode decode_function) : decode(std::move(decode_function)) {}

    Preview Answer(const CString& path) const;
    bool Deliver(std::uint32_t answered, Preview preview);
    std::optional<Question> NextOrEnd();
    static void Work(const std::shared_ptr<Shared>& shared, Question question);

    const Decode decode; ///< called by several threads at once
    std::mutex mutex;
    // All below under mutex.
    std::uint32_t number = 0; ///< of the question that still matters
    HWND window = nullptr;
    UINT message = 0;
    std::optional<Question> waiting; ///< all threads are busy
    std::optional<Preview> answer;   ///< to the question that matters
    int threads = 0;
};

// ---- at work: the decoding threads ----

// A file that asks for more memory than there is shows nothing, as one that is too slow.
Preview PreviewDecoder::Shared::Answer(const CString& path) const {
    try {
        return decode(path);
    } catch (...) {
        return {};
    }
}

/// @return whether somebody still waits for it
bool PreviewDecoder::Shared::Deliver(std::uint32_t answered, Preview preview) {
    HWND target = nullptr;
    UINT report = 0;
    {
        const std::scoped_lock lock{mutex};
        if (answered != number) return false;
        answer = std::move(preview);
        target = window;
        report = message;
    }
    return PostMessageA(target, report, answered, 0) != FALSE;
}

std::optional<Question> PreviewDecoder::Shared::NextOrEnd() {
    const std::scoped_lock lock{mutex};
    if (!waiting) --threads;
    return std::exchange(waiting, std::nullopt);
}

void PreviewDecoder::Shared::Work(const std::shared_ptr<Shared>& shared, Question question) {
    for (std::optional<Question> next = std::move(question); next; next = shared->NextOrEnd()) {
        std::ignore = shared->Deliver(next->number, shared->Answer(next->path));
    }
}

// ---- asking: the UI thread ----

PreviewDecoder::PreviewDecoder(Decode decode)
    : shared_(std::make_shared<Shared>(std::move(decode))) {}

PreviewDecoder::~PreviewDecoder() {
    Forget();
}

std::uint32_t PreviewDecoder::Ask(const CString& path, HWND window, UINT message) {
    Question question{path, 0};
    std::uint32_t number = 0;
    {
        const std::scoped_lock lock{shared_->mutex};
        number = question.number = ++shared_->number;
        shared_->window = window;
        shared_->message = message;
        shared_->answer.reset();
        shared_->waiting.reset();
        if (shared_->threads == kMostThreads) {
            shared_->waiting = std::move(question);
            return number;
        }
        ++shared_->threads;
    }
    ++working_threads;
    try {
        // It owns all that it touches, so nobody has to wait for a disk that does not answer.
        std::thread([shared = shared_, question = std::move(question)]() mutable {
            Shared::Work(shared, std::move(question));
            shared.reset();
            --working_threads;
        }).detach();
    } catch (const std::system_error&) { // no thread to be had: no preview
        --working_threads;
        const std::scoped_lock lock{shared_->mutex};
        --shared_->threads;
    }
    return number;
}

void PreviewDecoder::Forget() {
    const std::scoped_lock lock{shared_->mutex};
    ++shared_->number;
    shared_->waiting.reset();
    shared_->answer.reset();
}

std::optional<Preview> PreviewDecoder::Take(std::uint32_t number) {
    const std::scoped_lock lock{shared_->mutex};
    if (number != shared_->number) return std::nullopt;
    return std::exchange(shared_->answer, std::nullopt);
}

int PreviewDecoder::WorkingThreads() {
    return working_threads;
}

} // namespace kelvo
