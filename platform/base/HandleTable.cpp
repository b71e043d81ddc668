#include "platform/base/HandleTable.h"

#include "platform/base/Immortal.h"
#include "platform/base/errors.h"
#include "platform/base/handles.h"
#include "platform/base/threads.h"

#include <mutex>
#include <unordered_map>
#include <utility>

namespace kelvo::platform {

namespace {

// Far above what a program could hold for a small number, and never that of a window's object,
// which is even and larger.
constexpr UINT_PTR kFirstHandle = 0x10001;
constexpr UINT_PTR kHandleStep = 4;

struct Table {
    std::mutex mutex; ///< guards all below
    std::unordered_map<UINT_PTR, std::shared_ptr<SystemObject>> objects;
    UINT_PTR next = kFirstHandle;
};

Table& Handles() {
    static Immortal<Table> table;
    return *table;
}

} // namespace

HANDLE AddHandle(std::shared_ptr<SystemObject> object) {
    Table& table = Handles();
    const std::scoped_lock lock{table.mutex};
    const UINT_PTR handle = table.next;
    table.next += kHandleStep;
    table.objects.emplace(handle, std::move(object));
    return reinterpret_cast<HANDLE>(handle);
}

std::shared_ptr<SystemObject> FindHandle(HANDLE handle) {
    Table& table = Handles();
    const std::scoped_lock lock{table.mutex};
    const auto found = table.objects.find(reinterpret_cast<UINT_PTR>(handle));
    return found != table.objects.end() ? found->second : nullptr;
}

std::shared_ptr<SystemObject> RemoveHandle(HANDLE handle) {
    Table& table = Handles();
    const std::scoped_lock lock{table.mutex};
    const auto node = table.objects.extract(reinterpret_cast<UINT_PTR>(handle));
    return node ? node.mapped() : nullptr;
}

void RefuseHandle() {
    SetLastError(ERROR_INVALID_HANDLE);
}

} // namespace kelvo::platform

BOOL CloseHandle(HANDLE handle) {
    kelvo::platform::SuspensionPoint();
    if (handle == GetCurrentThread()) return TRUE;
    const auto object = kelvo::platform::RemoveHandle(handle);
    if (!object) {
        kelvo::platform::RefuseHandle();
        return FALSE;
    }
    const DWORD error = object->OnHandleClosed();
    if (error != ERROR_SUCCESS) SetLastError(error);
    return error == ERROR_SUCCESS ? TRUE : FALSE;
}
