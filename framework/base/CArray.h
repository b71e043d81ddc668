#pragma once
// The framework's growable array. It grows by a step that its owner sets (5 unless told otherwise)
// and keeps one free slot. An owner that adds without knowing how many raises the step as the count
// rises, or the copying turns quadratic.

#include "framework/base/MemCheck.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <span>
#include <utility>

namespace kelvo {

/// Shows the box for an array that could not grow to so many elements.
void ReportArrayGrowthFailure(std::int32_t elements);

template <class T>
class CArray {
public:
    static constexpr std::int32_t kDefaultStep = 5;

    CArray() = default;
    explicit CArray(std::int32_t growth_step) { SetGrowthStep(growth_step); }
    CArray(const CArray& other) : step_(other.step_) { CopyFrom(other); }
    CArray(CArray&& other) noexcept { Swap(other); }
    CArray& operator=(const CArray& other) {
        if (this != &other) CopyFrom(other);
        return *this;
    }
    CArray& operator=(CArray&& other) noexcept {
        CArray taken(std::move(other));
        Swap(taken);
        return *this;
    }
    virtual ~CArray() { Clear(); }

    std::int32_t Count() const { return count_; }
    bool IsEmpty() const { return count_ == 0; }
    std::int32_t Capacity() const { return capacity_; }
    std::int32_t GrowthStep() const { return step_; }
    /// Elements by which the next growth goes beyond the capacity; at least 1.
    void SetGrowthStep(std::int32_t elements) { step_ = std::max<std::int32_t>(elements, 1); }

    /// The element at an index below the count.
    T& operator[](std::int32_t index) {
        assert(index >= 0 && index < count_);
        return data_[index];
    }
    const T& operator[](std::int32_t index) const {
        assert(index >= 0 && index < count_);
        return data_[index];
    }
    /// The elements in use; lives until the array grows, shrinks or goes.
    std::span<T> Items() { return {data_, static_cast<std::size_t>(count_)}; }
    std::span<const T> Items() const { return {data_, static_cast<std::size_t>(count_)}; }
    T* begin() { return data_; }
    T* end() { return data_ + count_; }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + count_; }

    /// @return the new count, or 0 when the array cannot grow; the box has been shown
    std::int32_t Add(const T& element) {
        if (capacity_ - 1 <= count_) return AddAfterGrowth(element);
        data_[count_] = element;
        return ++count_;
    }

    /// Moves the following elements down by one.
    void RemoveAt(std::int32_t index) {
        assert(index >= 0 && index < count_);
        if (index < 0 || index >= count_) return;
        std::move(data_ + index + 1, data_ + count_, data_ + index);
        --count_;
    }

    /// Room for so many elements in all, and the free slot.
    /// @return false when there is no memory; the array is unchanged, the box has been shown
    [[nodiscard]] bool Reserve(std::int32_t elements) {
        if (elements < capacity_) return true;
        if (elements == std::numeric_limits<std::int32_t>::max()) return false;
        return AllocSpace(elements + 1);
    }

    /// Makes the count so; new elements are T{}, elements beyond are forgotten, the block is kept.
    /// @return false when there is no memory; the array is unchanged, the box has been shown
    [[nodiscard]] bool Resize(std::int32_t elements) {
        const std::int32_t before = count_;
        if (!ResizeForOverwrite(elements)) return false;
        if (before < count_) std::fill(data_ + before, data_ + count_, T{});
        return true;
    }

    /// The same without the T{}: new elements hold whatever they held. For filling in bulk.
    [[nodiscard]] bool ResizeForOverwrite(std::int32_t elements) {
        if (elements < 0 || !Reserve(elements)) return false;
        count_ = elements;
        return true;
    }

    /// Releases the block.
    void Clear() {
        delete[] data_;
        data_ = nullptr;
        count_ = 0;
        capacity_ = 0;
    }

    void Swap(CArray& other) noexcept {
        std::swap(data_, other.data_);
        std::swap(count_, other.count_);
        std::swap(capacity_, other.capacity_);
        std::swap(step_, other.step_);
    }

private:
    std::int32_t AddAfterGrowth(const T& element) {
        T copy = element; // the element may lie in the block that growing releases
        if (capacity_ > std::numeric_limits<std::int32_t>::max() - step_) {
            ReportArrayGrowthFailure(std::numeric_limits<std::int32_t>::max());
            return 0;
        }
        if (!AllocSpace(capacity_ + step_)) return 0;
        data_[count_] = std::move(copy);
        return ++count_;
    }

    bool AllocSpace(std::int32_t elements) {
        const auto wanted = static_cast<std::size_t>(elements);
        T* grown = AllocationAllowed(wanted * sizeof(T)) ? new (std::nothrow) T[wanted] : nullptr;
        if (grown == nullptr) {
            ReportArrayGrowthFailure(elements);
            return false;
        }
        std::move(data_, data_ + count_, grown);
        delete[] data_;
        data_ = grown;
        capacity_ = elements;
        return true;
    }

    void CopyFrom(const CArray& other) {
        if (!ResizeForOverwrite(other.count_)) {
            Clear();
            return;
        }
        std::copy(other.begin(), other.end(), data_);
    }

    T* data_ = nullptr;
    std::int32_t count_ = 0;
    std::int32_t capacity_ = 0;
    std::int32_t step_ = kDefaultStep;
};

} // namespace kelvo
