// How numbers stand in the fields of a dialog.

#include "framework/window/dialogs/NumberForms.h"

#include <gtest/gtest.h>

#include <limits>

namespace kelvo {
namespace {

struct FixedForm {
    const char* name;
    double value;
    const char* text;
};

const FixedForm kFixedForms[] = {
    {"Half", 12.5, "12.5"},
    {"WholeWithoutPoint", 3, "3"},
    {"NoZeroBeforeThePoint", 0.5, ".5"},
    {"MinusBeforeThePoint", -0.25, "-.25"},
    {"WholeKeepsItsZeros", 1200, "1200"},
    {"Zero", 0, "0"},
    {"MinusZero", -0.0, "0"},
    {"TenDigitsLeaveFourDecimals", 1234567890.123456, "1234567890.1234"},
    {"CutNotRounded", 123456789.0123456, "123456789.01234"},
    {"SmallNumberKeepsItsZeros", 0.0000123456789, ".0000123456789"},
    {"TooSmallForTheWidth", 1e-20, "0"},
    {"NegativeTooSmall", -1e-20, "0"},
    {"FifteenDigitsFill", 123456789012345, "123456789012345"},
    {"SignCountsAsCharacter", -1234567890.123456, "-1234567890.123"},
    {"ExponentTooLarge", 1e201, "0"},
    {"ExponentTooSmall", 1e-202, "0"},
    {"Infinite", std::numeric_limits<double>::infinity(), "0"},
    {"NoNumber", std::numeric_limits<double>::quiet_NaN(), "0"},
};

class FixedForms : public testing::TestWithParam<FixedForm> {};
INSTANTIATE_TEST_SUITE_P(Of15Characters, FixedForms, testing::ValuesIn(kFixedForms),
                         [](const auto& one) { return one.param.name; });

TEST_P(FixedForms, ReadsLikeThis) {
    EXPECT_STREQ(FixedNumberText(GetParam().value), GetParam().text);
}

TEST(NumberForms, ShareOneBufferPerForm) {
    const char* first = FixedNumberText(1);
    EXPECT_EQ(FixedNumberText(2), first);
    EXPECT_STREQ(first, "2");
}

TEST(NumberForms, GiveAsManySignificantDigitsAsAsked) {
    EXPECT_STREQ(SignificantDigitsText(2.0 / 3, 4), "0.6667");
    EXPECT_STREQ(SignificantDigitsText(1e20, 3), "1e+20");
    EXPECT_STREQ(SignificantDigitsText(7, 10), "7");
    EXPECT_STREQ(SignificantDigitsText(0.1, 1000), "0.10000000000000001");
}

} // namespace
} // namespace kelvo
