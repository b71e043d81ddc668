#pragma once
// A thread whose body is a virtual operation and which is asked to stop through an event. The owner
// (the UI thread) starts, suspends, stops and destroys; the body alone polls EndRequested(). Every
// system call that fails is shown in a box and gives false.

#include "framework/base/CObj.h"

#include <atomic>
#include <cstdint>
#include <memory>

namespace kelvo {

class Threadlum : public CObj {
public:
    static constexpr std::uint32_t kClassId = 1040100;

    explicit Threadlum(std::uint32_t class_id = kClassId) : CObj(class_id) {}
    Threadlum(const Threadlum&) = delete;
    Threadlum& operator=(const Threadlum&) = delete;

    // Slots 6 to 8.
    /// Asks a body that still runs to stop (or ends it, when it can no longer be asked) and waits a
    /// bounded time for it. A derived class whose body uses its own members stops it in its
    /// destructor.
    ~Threadlum() override;
    /// What the thread runs; its result is the thread's exit code. On the thread itself.
    virtual DWORD Body();
    /// @return the thread's handle, or null after a failure; it stays valid until the next start or
    /// the end of this object
    virtual HANDLE StartTread();

    bool IsRunning() const;
    /// A flag, not a count: suspending twice needs one resume.
    bool Sospendi();
    bool Riprendi();
    bool Kill(DWORD exit_code);
    /// Asks the body to stop.
    bool Concludi();

    /// Polled by the body: true once after Concludi; the event is gone then. On the thread itself.
    bool EndRequested();

    /// Null when no thread runs or the body has returned.
    HANDLE ThreadHandle() const;
    bool IsSuspended() const { return suspended_; }
    DWORD ThreadId() const { return thread_id_; }
    void SetThreadId(DWORD id) { thread_id_ = id; }
    /// For the owner's use; the class does not look at it.
    INT_PTR UserValue() const { return user_value_; }
    void SetUserValue(INT_PTR value) { user_value_ = value; }
    LPVOID SecurityAttributes() const { return security_attributes_; }
    void SetSecurityAttributes(LPVOID attributes) { security_attributes_ = attributes; }
    DWORD StackSize() const { return stack_size_; }
    void SetStackSize(DWORD bytes) { stack_size_ = bytes; }
    DWORD CreationFlags() const { return creation_flags_; }
    void SetCreationFlags(DWORD flags) { creation_flags_ = flags; }

private:
    /// One start of the body. The thread keeps it alive, so that a thread which was killed, and
    /// ends late, never touches a later start.
    struct Run {
        std::atomic<bool> entered = false;  // the thread writes, the owner reads
        std::atomic<bool> finished = false; // likewise
    };
    struct Start;
    static unsigned Entry(void* start);
    static void KeepUntilExit(Start* start);

    bool CreateEndEvent();
    void CloseEvents();
    void CloseThread();
    void StopBody();

    // The owner's thread only.
    std::shared_ptr<Run> run_;
    Start* start_ = nullptr;  // the thread's as soon as it has entered
    HANDLE thread_ = nullptr; // of the current start; shown as null once the body has returned
    INT_PTR user_value_ = 0;
    LPVOID security_attributes_ = nullptr;
    DWORD stack_size_ = 0;
    DWORD creation_flags_ = 0;
    DWORD thread_id_ = 0;
    bool suspended_ = false;

    // The owner sets it, the body takes it away. A taken event is closed by the owner, later:
    // Concludi may just be signalling it.
    std::atomic<HANDLE> end_event_ = nullptr;
    std::atomic<HANDLE> spent_event_ = nullptr;
};

} // namespace kelvo
