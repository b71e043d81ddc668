#include "framework/base/Threadlum.h"

#include "platform/base/events.h"
#include "platform/base/handles.h"
#include "platform/base/threads.h"

#include <mutex>
#include <vector>

namespace kelvo {
namespace {

constexpr const char* kEndExitCode =
    "Threadlum::~Threadlum() - GetExitCodeThread() non ha funzionato!";
constexpr const char* kEndSetEvent = "Threadlum::~Threadlum() - ::SetEvent() fallita!";
constexpr const char* kEndTerminate =
    "Threadlum::~Threadlum() - TerminateThread() non ha funzionato!";
constexpr const char* kStartEvent = "Threadlum::StartTread() - ::CreateEvent() fallita!";
constexpr const char* kStartThread = "Threadlum::StartTread() - ::CreateThread() Fallito";
constexpr const char* kSuspendExitCode =
    "Threadlum::Sospendi() - GetExitCodeThread() non ha funzionato!";
constexpr const char* kSuspendEnded =
    "Threadlum::Sospendi() - Tentativo di sospendere Tread già concluso!";
constexpr const char* kSuspendFailed = "Threadlum::Sospendi() - SuspendThread() non ha funzionato!";
constexpr const char* kResumeExitCode =
    "Threadlum::Riprendi() - GetExitCodeThread() non ha funzionato!";
constexpr const char* kResumeEnded =
    "Threadlum::Riprendi() - Tentativo di Riprendere un Tread già concluso!";
constexpr const char* kResumeFailed = "Threadlum::Riprendi() - ResumeThread() non ha funzionato!";
constexpr const char* kKillExitCode = "Threadlum::Kill() - GetExitCodeThread() non ha funzionato!";
constexpr const char* kKillEnded =
    "Threadlum::Kill() - Tentativo di eliminare un Tread già concluso!";
constexpr const char* kKillFailed = "Threadlum::Kill() - TerminateThread() non ha funzionato!";
constexpr const char* kFinishFailed = "Threadlum::Concludi()  - ::SetEvent() fallita!";

/// What a destructor grants a body that was asked to stop, as long as the player waits for its
/// loop.
constexpr DWORD kStopWaitMs = 2000;

constexpr DWORD kSuspendError = static_cast<DWORD>(-1);

} // namespace

/// What a thread is started with.
struct Threadlum::Start {
    Threadlum* thread;
    std::shared_ptr<Run> run;
};

/// A thread that was killed before it entered does not look at its start, unless it was abandoned
/// in the very moment of entering: so the start is not freed, but stays known.
void Threadlum::KeepUntilExit(Start* start) {
    static std::mutex mutex;
    static std::vector<std::unique_ptr<Start>> kept;
    const std::scoped_lock lock(mutex);
    kept.emplace_back(start);
}

Threadlum::~Threadlum() {
    StopBody();
    CloseThread();
    CloseEvents();
}

DWORD Threadlum::Body() {
    return 0;
}

HANDLE Threadlum::StartTread() {
    if (IsRunning()) {
        // A second body beside the first would share its event and its members.
        ErrorBox(kStartThread);
        return nullptr;
    }
    CloseThread();
    suspended_ = false;
    if (!CreateEndEvent()) {
        ErrorBox(kStartEvent);
        return nullptr;
    }
    run_ = std::make_shared<Run>();
    auto start = std::make_unique<Start>(Start{this, run_});
    unsigned id = 0;
    const std::uintptr_t thread = _beginthreadex(security_attributes_, stack_size_, &Entry,
                                                 start.get(), creation_flags_, &id);
    if (thread == 0 || thread == static_cast<std::uintptr_t>(-1)) {
        run_.reset();
        ErrorBox(kStartThread);
        return nullptr;
    }
    start_ = start.release();
    thread_ = reinterpret_cast<HANDLE>(thread);
    thread_id_ = id;
    return thread_;
}

unsigned Threadlum::Entry(void* start) {
    const std::unique_ptr<Start> own(static_cast<Start*>(start));
    own->run->entered = true;
    const DWORD exit_code = own->thread->Body();
    // The last touch: from here on the owner may destroy the object.
    own->run->finished = true;
    return exit_code;
}

HANDLE Threadlum::ThreadHandle() const {
    return run_ != nullptr && !run_->finished ? thread_ : nullptr;
}

bool Threadlum::IsRunning() const {
    DWORD exit_code = 0;
    return GetExitCodeThread(ThreadHandle(), &exit_code) && exit_code == STILL_ACTIVE;
}

bool Threadlum::Sospendi() {
    const HANDLE thread = ThreadHandle();
    DWORD exit_code = 0;
    if (!GetExitCodeThread(thread, &exit_code)) return ErrorBox(kSuspendExitCode);
    if (exit_code != STILL_ACTIVE) return ErrorBox(kSuspendEnded);
    if (suspended_) return true;
    if (SuspendThread(thread) == kSuspendError) return ErrorBox(kSuspendFailed);
    suspended_ = true;
    return true;
}

bool Threadlum::Riprendi() {
    const HANDLE thread = ThreadHandle();
    DWORD exit_code = 0;
    if (!GetExitCodeThread(thread, &exit_code)) return ErrorBox(kResumeExitCode);
    if (exit_code != STILL_ACTIVE) return ErrorBox(kResumeEnded);
    if (!suspended_) return true;
    if (ResumeThread(thread) == kSuspendError) return ErrorBox(kResumeFailed);
    suspended_ = false;
    return true;
}

bool Threadlum::Kill(DWORD exit_code) {
    const HANDLE thread = ThreadHandle();
    DWORD current_code = 0;
    if (!GetExitCodeThread(thread, &current_code)) return ErrorBox(kKillExitCode);
    if (current_code != STILL_ACTIVE) return ErrorBox(kKillEnded);
    if (!TerminateThread(thread, exit_code)) return ErrorBox(kKillFailed);
    suspended_ = false;
    CloseThread();
    return true;
}

bool Threadlum::Concludi() {
    return SetEvent(end_event_) ? true : ErrorBox(kFinishFailed);
}

bool Threadlum::EndRequested() {
    const HANDLE event = end_event_;
    if (event == nullptr || WaitForSingleObject(event, 0) != WAIT_OBJECT_0) return false;
    end_event_ = nullptr;
    spent_event_ = event;
    return true;
}

bool Threadlum::CreateEndEvent() {
    CloseEvents();
    end_event_ = CreateEventA(nullptr, FALSE, FALSE, nullptr);
    return end_event_ != nullptr;
}

void Threadlum::CloseEvents() {
    for (std::atomic<HANDLE>* event : {&end_event_, &spent_event_}) {
        const HANDLE handle = event->exchange(nullptr);
        if (handle != nullptr) CloseHandle(handle);
    }
}

void Threadlum::CloseThread() {
    if (thread_ != nullptr) CloseHandle(thread_);
    thread_ = nullptr;
    if (run_ != nullptr && !run_->entered) KeepUntilExit(start_);
    start_ = nullptr;
    run_.reset();
}

void Threadlum::StopBody() {
    const HANDLE thread = ThreadHandle();
    if (thread == nullptr) return;
    DWORD exit_code = 0;
    if (!GetExitCodeThread(thread, &exit_code)) {
        ErrorBox(kEndExitCode);
        return;
    }
    if (exit_code != STILL_ACTIVE) return;
    if (suspended_) ResumeThread(thread); // or it would never see the event
    const HANDLE event = end_event_;
    if (event != nullptr) {
        if (!SetEvent(event)) ErrorBox(kEndSetEvent);
        // The body still uses this object, so it gets its time; then it is ended by force.
        if (WaitForSingleObject(thread, kStopWaitMs) == WAIT_OBJECT_0) return;
    }
    if (!TerminateThread(thread, 0)) ErrorBox(kEndTerminate);
}

} // namespace kelvo
