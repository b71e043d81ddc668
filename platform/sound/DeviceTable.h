#pragma once
// The devices behind the handles. A handle's number is never given twice, so that a late message of
// an old device cannot be taken for one of a new device.

#include "platform/base/types.h"

#include <algorithm>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace kelvo::platform {

/// Any thread.
/// @param Device  one that is asked IsClosed()
template <class Handle, class Device>
class DeviceTable {
public:
    Handle NewHandle() {
        const std::lock_guard lock(mutex_);
        return reinterpret_cast<Handle>(++last_number_);
    }
    void Add(Handle handle, std::shared_ptr<Device> device) {
        const std::lock_guard lock(mutex_);
        open_[handle] = std::move(device);
    }
    std::shared_ptr<Device> Find(Handle handle) {
        const std::lock_guard lock(mutex_);
        const auto found = open_.find(handle);
        return found == open_.end() ? nullptr : found->second;
    }
    /// The handle is dead; the device goes once its thread has ended.
    void MoveToClosing(Handle handle) {
        const std::lock_guard lock(mutex_);
        const auto found = open_.find(handle);
        if (found == open_.end()) return;
        closing_.push_back(std::move(found->second));
        open_.erase(found);
    }
    /// Destroys what has closed; never waits for long.
    void Sweep() {
        std::vector<std::shared_ptr<Device>> closed;
        const std::lock_guard lock(mutex_);
        const auto first_closed = std::ranges::stable_partition(
            closing_, [](const auto& device) { return !device->IsClosed(); });
        closed.assign(first_closed.begin(), first_closed.end());
        closing_.erase(first_closed.begin(), first_closed.end());
    }
    int Count() {
        Sweep();
        const std::lock_guard lock(mutex_);
        return static_cast<int>(open_.size() + closing_.size());
    }

private:
    std::mutex mutex_;
    UINT_PTR last_number_ = 0;
    std::map<Handle, std::shared_ptr<Device>> open_;
    std::vector<std::shared_ptr<Device>> closing_;
};

} // namespace kelvo::platform
