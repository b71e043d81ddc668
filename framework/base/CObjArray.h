#pragma once
// The array of object pointers, with a cursor for walking it. It may own what it holds.

#include "framework/base/CObj.h"

#include <cstdint>

namespace kelvo {

class CObjArray : public CObj {
public:
    static constexpr std::uint32_t kClassId = 20030100;
    static constexpr std::int32_t kStep = 5;

    /// Flags, to be joined by |.
    static constexpr std::uint8_t kOwnsElements = 1;    ///< destroys what is removed or cleared
    static constexpr std::uint8_t kReturnsCapacity = 2; ///< shrinks after removals

    explicit CObjArray(std::uint8_t flags = 0) : CObj(kClassId), flags_(flags) {}
    CObjArray(const CObjArray&) = delete;
    CObjArray& operator=(const CObjArray&) = delete;
    ~CObjArray() override { Clear(); }

    /// The cursor is left on the new element, which belongs to the array when it owns its elements.
    /// @return the new count, or 0 when the array cannot grow; the object is then still the
    /// caller's
    std::int32_t Add(CObj* object);
    /// @return 0 when the index is not below the count, else 1
    int Remove(std::int32_t index);
    /// @return 1 when the capacity was raised, else 0
    int Reserve(std::int32_t elements);
    void Clear();
    /// Destroys every element whatever the flags, then clears.
    void DestroyAll();

    /// The cursor goes to the first element; null when empty.
    CObj* First();
    /// The element after the cursor; null, and the cursor stays, after the last.
    CObj* Next();
    std::int32_t Count() const { return count_; }
    std::int32_t Capacity() const { return capacity_; }
    std::int32_t Cursor() const { return cursor_; }
    /// The element at an index below the count; not checked.
    CObj* At(std::int32_t index) const { return data_[index]; }

private:
    bool SetCapacity(std::int32_t elements);

    CObj** data_ = nullptr;
    std::int32_t count_ = 0;
    std::int32_t capacity_ = 0;
    std::int32_t step_ = kStep;
    std::int32_t cursor_ = 0;
    std::uint8_t flags_ = 0;
};

} // namespace kelvo
