#pragma once
// Waits for what another thread is to bring about: a condition with a deadline that only a fault
// reaches.

#include <chrono>
#include <thread>

template <class Condition>
bool Eventually(Condition condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{20};
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::sleep_for(std::chrono::microseconds{200});
    }
    return true;
}
