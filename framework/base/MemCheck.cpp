#include "framework/base/MemCheck.h"

#include <atomic>
#include <cstdlib>

namespace kelvo {
namespace {

std::atomic<AllocationGate> allocation_gate = nullptr;

void* Checked(void* block, std::source_location place) {
    if (block == nullptr) throw AllocationFailure(place);
    return block;
}

} // namespace

AllocationGate SetAllocationGate(AllocationGate gate) noexcept {
    return allocation_gate.exchange(gate);
}

bool AllocationAllowed(std::size_t bytes) noexcept {
    const AllocationGate gate = allocation_gate.load();
    return gate == nullptr || gate(bytes);
}

void* MemCheck(std::size_t bytes, std::source_location place) {
    if (bytes == 0) return nullptr;
    return Checked(AllocationAllowed(bytes) ? std::malloc(bytes) : nullptr, place);
}

void* MemCheckZeroed(std::size_t bytes, std::source_location place) {
    if (bytes == 0) return nullptr;
    return Checked(AllocationAllowed(bytes) ? std::calloc(bytes, 1) : nullptr, place);
}

void* LumMemoryCheck(void* block, std::size_t bytes, std::source_location place) {
    if (bytes == 0) {
        MemRelease(block);
        return nullptr;
    }
    return Checked(TryResizeBlock(block, bytes), place);
}

void* TryResizeBlock(void* block, std::size_t bytes) noexcept {
    if (bytes == 0) {
        MemRelease(block);
        return nullptr;
    }
    return AllocationAllowed(bytes) ? std::realloc(block, bytes) : nullptr;
}

void MemRelease(void* block) noexcept {
    std::free(block);
}

MemBlock MakeMemBlock(std::size_t bytes, std::source_location place) {
    return MemBlock(static_cast<std::uint8_t*>(MemCheckZeroed(bytes, place)));
}

} // namespace kelvo
