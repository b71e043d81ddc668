#include "framework/base/CObjArray.h"

#include "framework/base/MemCheck.h"

#include <algorithm>
#include <limits>

namespace kelvo {

std::int32_t CObjArray::Add(CObj* object) {
    if (capacity_ - 1 <= count_) {
        if (capacity_ > std::numeric_limits<std::int32_t>::max() - step_) return 0;
        if (!SetCapacity(capacity_ + step_)) return 0;
    }
    data_[count_] = object;
    cursor_ = count_;
    return ++count_;
}

int CObjArray::Remove(std::int32_t index) {
    if (index < 0 || index >= count_) return 0;
    if ((flags_ & kOwnsElements) != 0) delete data_[index];
    if ((flags_ & kReturnsCapacity) != 0) {
        std::int32_t capacity = capacity_;
        while (count_ + kStep <= capacity && capacity > kStep) {
            capacity -= kStep;
        }
        // A block that cannot shrink is still large enough.
        if (capacity != capacity_) SetCapacity(capacity);
    }
    std::move(data_ + index + 1, data_ + count_, data_ + index);
    --count_;
    cursor_ = std::clamp(cursor_, 0, std::max(count_ - 1, 0));
    return 1;
}

int CObjArray::Reserve(std::int32_t elements) {
    if (elements <= capacity_) return 0;
    return SetCapacity(elements) ? 1 : 0;
}

void CObjArray::Clear() {
    if ((flags_ & kOwnsElements) != 0) {
        DestroyAll();
        return;
    }
    MemRelease(data_);
    data_ = nullptr;
    count_ = capacity_ = cursor_ = 0;
}

void CObjArray::DestroyAll() {
    // Taken out first: an element's destructor may look at the array.
    CObj** const elements = data_;
    const std::int32_t count = count_;
    data_ = nullptr;
    count_ = capacity_ = cursor_ = 0;
    for (std::int32_t i = 0; i < count; ++i) {
        delete elements[i];
    }
    MemRelease(elements);
}

CObj* CObjArray::First() {
    cursor_ = 0;
    return count_ == 0 ? nullptr : data_[0];
}

CObj* CObjArray::Next() {
    if (cursor_ + 1 >= count_) return nullptr;
    return data_[++cursor_];
}

bool CObjArray::SetCapacity(std::int32_t elements) {
    void* block = TryResizeBlock(data_, static_cast<std::size_t>(elements) * sizeof(CObj*));
    if (block == nullptr) return false;
    data_ = static_cast<CObj**>(block);
    capacity_ = elements;
    return true;
}

} // namespace kelvo
