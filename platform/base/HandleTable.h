#pragma once
// The objects behind handles, for the parts of the layer that make them. A handle is a number that
// is never given twice, so one that was closed is known as such for ever. Any thread.

#include "platform/base/types.h"

#include <memory>

namespace kelvo::platform {

/// What a handle stands for. It lives as long as a handle or a call in progress holds it.
class SystemObject {
public:
    SystemObject() = default;
    virtual ~SystemObject() = default;
    SystemObject(const SystemObject&) = delete;
    SystemObject& operator=(const SystemObject&) = delete;

    /// Called once when its handle is closed.
    /// @return the ERROR_ number of what went wrong, ERROR_SUCCESS mostly.
    [[nodiscard]] virtual DWORD OnHandleClosed() { return 0; }
};

[[nodiscard]] HANDLE AddHandle(std::shared_ptr<SystemObject> object);

/// The object, or null. The pseudo handle of the current thread is not in the table.
[[nodiscard]] std::shared_ptr<SystemObject> FindHandle(HANDLE handle);

/// Takes the handle out of the table. @return its object, or null when it was none.
[[nodiscard]] std::shared_ptr<SystemObject> RemoveHandle(HANDLE handle);

/// Sets ERROR_INVALID_HANDLE.
void RefuseHandle();

/// The object as a T, or null with ERROR_INVALID_HANDLE when it is something else or nothing.
template <class T>
[[nodiscard]] std::shared_ptr<T> FindObject(HANDLE handle) {
    auto object = std::dynamic_pointer_cast<T>(FindHandle(handle));
    if (!object) RefuseHandle();
    return object;
}

} // namespace kelvo::platform
