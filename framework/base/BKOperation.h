#pragma once
// Runs one member function of its owner on a worker thread, one run at a time.

#include "framework/base/Threadlum.h"

namespace kelvo {

template <class T>
class BKOperation : public Threadlum {
public:
    /// A member function of the owner; its result becomes the thread's exit code.
    using Operation = INT_PTR (T::*)(INT_PTR first, INT_PTR second, INT_PTR third);

    explicit BKOperation(T* owner) : owner_(owner) {}
    /// A thread that still runs is killed; the owner has asked it to stop and waited before.
    ~BKOperation() override {
        if (IsRunning()) Kill(0);
    }

    DWORD Body() override {
        return static_cast<DWORD>((owner_->*operation_)(first_, second_, third_));
    }

    /// Only when no earlier run is running.
    /// @return the thread's handle, or null after a failure, which has been shown
    HANDLE Start(Operation operation, INT_PTR first = 0, INT_PTR second = 0, INT_PTR third = 0) {
        operation_ = operation;
        first_ = first;
        second_ = second;
        third_ = third;
        return StartTread();
    }

private:
    // Written before the thread starts, read by its body.
    T* owner_;
    Operation operation_ = nullptr;
    INT_PTR first_ = 0;
    INT_PTR second_ = 0;
    INT_PTR third_ = 0;
};

} // namespace kelvo
