// Starts the desktop, off screen unless the caller chose otherwise, around all tests.

#include "platform/desktop/Desktop.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

class DesktopForTests : public testing::Environment {
public:
    void SetUp() override {
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        ASSERT_TRUE(kelvo::platform::StartDesktop("desktop tests"));
    }
    void TearDown() override { kelvo::platform::EndDesktop(); }
};

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new DesktopForTests);

} // namespace
