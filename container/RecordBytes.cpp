#include "container/RecordBytes.h"

#include "framework/base/MemCheck.h"

#include <sys/mman.h>

#include <cstdlib>
#include <utility>

namespace kelvo {

namespace {

// Smaller blocks come from the heap, where a tool that looks for overruns sees them; larger ones
// are mapped, because only a mapping is sure to be zero pages.
constexpr std::size_t kSmallestMapping = std::size_t{1} << 20U;

} // namespace

RecordBytes::RecordBytes(RecordBytes&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

RecordBytes& RecordBytes::operator=(RecordBytes&& other) noexcept {
    if (this != &other) {
        Free();
        data_ = std::exchange(other.data_, nullptr);
        size_ = std::exchange(other.size_, 0);
    }
    return *this;
}

RecordBytes::~RecordBytes() {
    Free();
}

bool RecordBytes::Allocate(std::size_t size) {
    Free();
    if (size == 0) return true;
    if (!AllocationAllowed(size)) return false;
    if (size < kSmallestMapping) {
        data_ = static_cast<std::uint8_t*>(std::calloc(size, 1));
    } else {
        void* pages = ::mmap(nullptr, size, PROT_READ | PROT_WRITE,
                             MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
        data_ = pages == MAP_FAILED ? nullptr : static_cast<std::uint8_t*>(pages);
    }
    if (data_ != nullptr) size_ = size;
    return data_ != nullptr;
}

void RecordBytes::Free() {
    if (size_ >= kSmallestMapping) {
        ::munmap(data_, size_);
    } else {
        std::free(data_);
    }
    data_ = nullptr;
    size_ = 0;
}

} // namespace kelvo
