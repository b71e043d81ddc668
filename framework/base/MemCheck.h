#pragma once
// The checked allocation helpers: a block or an exception, never a null pointer that nobody tested.
// Also the gate through which every allocation of the framework goes, so that a test can refuse
// one.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <source_location>

namespace kelvo {

/// What the helpers throw when memory runs out; nothing else in the program throws.
class AllocationFailure : public std::bad_alloc {
public:
    static constexpr int kCode = 4443;

    explicit AllocationFailure(std::source_location place) : place_(place) {}
    int Code() const noexcept { return kCode; }
    const char* Source() const noexcept { return place_.file_name(); }
    std::uint32_t Line() const noexcept { return place_.line(); }
    const char* what() const noexcept override { return "out of memory (4443)"; }

private:
    std::source_location place_;
};

/// A fresh block of `bytes` bytes with whatever they held; null for 0 bytes. Free with MemRelease.
/// @throws AllocationFailure when there is no memory
[[nodiscard]] void* MemCheck(std::size_t bytes,
                             std::source_location place = std::source_location::current());

/// The same, all zero. A large block takes no memory until it is written.
[[nodiscard]] void* MemCheckZeroed(std::size_t bytes,
                                   std::source_location place = std::source_location::current());

/// The block with its content at a new size; null blocks are made, 0 bytes free the block and give
/// null.
/// @throws AllocationFailure when there is no memory; the block is then as it was
[[nodiscard]] void* LumMemoryCheck(void* block, std::size_t bytes,
                                   std::source_location place = std::source_location::current());

/// The same as LumMemoryCheck for callers that show their own box: null when there is no memory.
[[nodiscard]] void* TryResizeBlock(void* block, std::size_t bytes) noexcept;

/// Frees a block of any of the four; null is allowed.
void MemRelease(void* block) noexcept;

struct MemReleaser {
    void operator()(void* block) const noexcept { MemRelease(block); }
};
/// A buffer of the checked helpers that frees itself.
using MemBlock = std::unique_ptr<std::uint8_t[], MemReleaser>;

/// A self-freeing zeroed buffer; empty for 0 bytes.
/// @throws AllocationFailure when there is no memory
[[nodiscard]] MemBlock MakeMemBlock(std::size_t bytes,
                                    std::source_location place = std::source_location::current());

/// Answers whether an allocation of so many bytes may be tried. Any thread.
using AllocationGate = bool (*)(std::size_t bytes);

/// Puts a gate before every allocation of the framework's strings, arrays, buffers and of the
/// helpers above; null lets everything through.
/// @return the gate that was there
AllocationGate SetAllocationGate(AllocationGate gate) noexcept;

/// What the gate says; true without one. Any thread.
bool AllocationAllowed(std::size_t bytes) noexcept;

} // namespace kelvo
