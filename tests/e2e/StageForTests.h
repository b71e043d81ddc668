#pragma once
// The one stage of all end-to-end tests, and the films that they play on it.

#include "tests/e2e/CodedFilm.h"
#include "tests/e2e/Player.h"

#include <gtest/gtest.h>

namespace kelvo::test {

// A sanitizer makes everything slower: times are then only looked at roughly, and fewer films are
// played.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

/// Started when it is first asked for, stopped after the last test.
const Stage& TheStage();

class OnStage : public testing::Test {
protected:
    void SetUp() override { ASSERT_EQ(TheStage().Problem(), ""); }
    void TearDown() override;
    /// Makes a coded film in the test's folder. @return its name
    std::string Film(const std::string& name, const CodedFilmPlan& plan = {}) const;
    /// Waits for any bar code in the picture of a natural size.
    bool WaitForAnyImage(Player& player) const;

    TemporaryFolder folder_;
};

} // namespace kelvo::test
