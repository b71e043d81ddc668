#pragma once
// Handles for drawing objects: numbers that are never given twice, so that a handle kept too long
// fails instead of meeting another object. Any thread.

#include <cstdint>
#include <memory>
#include <mutex>
#include <unordered_map>
#include <utility>

namespace kelvo::desktop {

template <class Handle, class Object>
class ObjectTable {
public:
    Handle Add(std::shared_ptr<Object> object) {
        const std::lock_guard lock(mutex_);
        const std::uintptr_t number = next_number_;
        next_number_ += kNumberStep;
        objects_.emplace(number, std::move(object));
        return reinterpret_cast<Handle>(number);
    }

    /// @return null for a handle of nothing.
    std::shared_ptr<Object> Find(Handle handle) {
        const std::lock_guard lock(mutex_);
        const auto found = objects_.find(reinterpret_cast<std::uintptr_t>(handle));
        return found == objects_.end() ? nullptr : found->second;
    }

    /// @return what was removed, null for a handle of nothing.
    std::shared_ptr<Object> Remove(Handle handle) {
        const std::lock_guard lock(mutex_);
        auto node = objects_.extract(reinterpret_cast<std::uintptr_t>(handle));
        return node.empty() ? nullptr : std::move(node.mapped());
    }

    /// Calls visit(handle, object) for each, with the table locked.
    template <class Visit>
    void ForEach(Visit visit) {
        const std::lock_guard lock(mutex_);
        for (const auto& [number, object] : objects_) {
            visit(reinterpret_cast<Handle>(number), *object);
        }
    }

private:
    // Above all numbers that mean something else in a handle's place, such as COLOR_... + 1.
    static constexpr std::uintptr_t kFirstNumber = 0x10000;
    static constexpr std::uintptr_t kNumberStep = 4;

    std::mutex mutex_;
    std::uintptr_t next_number_ = kFirstNumber;                           ///< under mutex_
    std::unordered_map<std::uintptr_t, std::shared_ptr<Object>> objects_; ///< under mutex_
};

} // namespace kelvo::desktop
