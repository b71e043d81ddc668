#include "platform/base/memory.h"

#include "platform/base/HandleTable.h"

#include <atomic>
#include <exception>
#include <tuple>
#include <vector>

namespace {

class MemoryBlock : public kelvo::platform::SystemObject {
public:
    explicit MemoryBlock(SIZE_T size) : bytes(size) {}

    std::vector<BYTE> bytes; ///< its length is fixed after construction
    std::atomic<int> lock_count{0};
};

} // namespace

HGLOBAL GlobalAlloc(UINT flags, SIZE_T size) {
    if ((flags & ~(GMEM_MOVEABLE | GMEM_ZEROINIT)) != 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    try {
        return kelvo::platform::AddHandle(std::make_shared<MemoryBlock>(size));
    } catch (const std::exception&) { // out of memory, or longer than a vector may be
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
}

LPVOID GlobalLock(HGLOBAL block) {
    const auto memory = kelvo::platform::FindObject<MemoryBlock>(block);
    if (!memory) return nullptr;
    ++memory->lock_count;
    return memory->bytes.data();
}

BOOL GlobalUnlock(HGLOBAL block) {
    const auto memory = kelvo::platform::FindObject<MemoryBlock>(block);
    if (!memory) return FALSE;
    int count = memory->lock_count;
    while (count > 0 && !memory->lock_count.compare_exchange_weak(count, count - 1)) {}
    SetLastError(ERROR_SUCCESS);
    return count > 1 ? TRUE : FALSE;
}

SIZE_T GlobalSize(HGLOBAL block) {
    const auto memory = kelvo::platform::FindObject<MemoryBlock>(block);
    return memory ? memory->bytes.size() : 0;
}

HGLOBAL GlobalFree(HGLOBAL block) {
    if (!kelvo::platform::FindObject<MemoryBlock>(block)) return block;
    std::ignore = kelvo::platform::RemoveHandle(block); // its memory goes with it
    return nullptr;
}
