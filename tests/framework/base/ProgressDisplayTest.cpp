#include "framework/base/ProgressDisplay.h"
#include "framework/base/PendingMessages.h"

#include <gtest/gtest.h>

#include <string>

namespace kelvo {
namespace {

/// Asks to stop at the half.
class HalfWay : public ProgressDisplay {
public:
    bool Update(std::int32_t current, std::int32_t total) override { return current * 2 < total; }
    void Close() override {}
};

TEST(Progress, IsSilentUntilADisplayIsInstalled) {
    EXPECT_TRUE(ShowProgress("Ricostruzione indici...")->Update(1, 2));

    static std::string title;
    SetProgressDisplayFactory([](const CString& text) {
        title = text.c_str();
        return std::make_unique<HalfWay>();
    });
    const auto display = ShowProgress("Ricostruzione indici...");
    EXPECT_EQ(title, "Ricostruzione indici...");
    EXPECT_TRUE(display->Update(4, 10));
    EXPECT_FALSE(display->Update(5, 10));

    SetProgressDisplayFactory([](const CString&) { return nullptr; });
    EXPECT_TRUE(ShowProgress("")->Update(1, 1));
    SetProgressDisplayFactory({});
    EXPECT_TRUE(ShowProgress("")->Update(1, 1));
}

TEST(PendingMessages, AreServedByTheInstalledHookAlone) {
    static int served = 0;
    ProcessPendingMessages();
    EXPECT_EQ(SetPendingMessagesHook([] { ++served; }), nullptr);
    ProcessPendingMessages();
    EXPECT_EQ(served, 1);
    EXPECT_NE(SetPendingMessagesHook(nullptr), nullptr);
    ProcessPendingMessages();
    EXPECT_EQ(served, 1);
}

} // namespace
} // namespace kelvo
