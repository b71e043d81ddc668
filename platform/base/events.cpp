#include "platform/base/events.h"

#include "platform/base/Waiting.h"
#include "platform/base/threads.h"

namespace {

using kelvo::platform::WaitMutex;

class Event : public kelvo::platform::Waitable {
public:
    Event(bool manual_reset, bool initially_set)
        : manual_reset_(manual_reset), set_(initially_set) {}

    bool TakeSignal() override {
        const bool was_set = set_;
        if (!manual_reset_) set_ = false;
        return was_set;
    }

    void Set() {
        const std::scoped_lock lock{WaitMutex()};
        set_ = true;
        NotifyWaiters(*this);
    }
    void Reset() {
        const std::scoped_lock lock{WaitMutex()};
        set_ = false;
    }

private:
    const bool manual_reset_;
    bool set_; ///< with WaitMutex
};

} // namespace

HANDLE CreateEventA(SECURITY_ATTRIBUTES*, BOOL manual_reset, BOOL initially_set, LPCSTR name) {
    kelvo::platform::ThreadCheckpoint();
    if (name != nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return kelvo::platform::AddHandle(
        std::make_shared<Event>(manual_reset != FALSE, initially_set != FALSE));
}

BOOL SetEvent(HANDLE event) {
    kelvo::platform::SuspensionPoint();
    const auto object = kelvo::platform::FindObject<Event>(event);
    if (!object) return FALSE;
    object->Set();
    return TRUE;
}

BOOL ResetEvent(HANDLE event) {
    kelvo::platform::SuspensionPoint();
    const auto object = kelvo::platform::FindObject<Event>(event);
    if (!object) return FALSE;
    object->Reset();
    return TRUE;
}

DWORD WaitForSingleObject(HANDLE handle, DWORD milliseconds) {
    std::shared_ptr<kelvo::platform::Waitable> object;
    if (handle == GetCurrentThread()) {
        object = kelvo::platform::CurrentThreadObject().shared_from_this();
    } else {
        object = kelvo::platform::FindObject<kelvo::platform::Waitable>(handle);
    }
    if (!object) return WAIT_FAILED;
    const auto deadline = kelvo::platform::DeadlineAfter(milliseconds);
    const auto end = kelvo::platform::WaitFor(object.get(), deadline);
    return end == kelvo::platform::Waited::Signalled ? WAIT_OBJECT_0 : WAIT_TIMEOUT;
}
