#pragma once
// A static object that is never destroyed, so that threads which still run while the program ends,
// and destructors of other statics, find it whole.

#include <cstddef>
#include <memory>
#include <new>

namespace kelvo::platform {

template <class T>
class Immortal {
public:
    Immortal() { std::construct_at(reinterpret_cast<T*>(bytes_)); }
    Immortal(const Immortal&) = delete;
    Immortal& operator=(const Immortal&) = delete;

    T& operator*() { return *std::launder(reinterpret_cast<T*>(bytes_)); }
    T* operator->() { return &**this; }

private:
    alignas(T) std::byte bytes_[sizeof(T)];
};

} // namespace kelvo::platform
