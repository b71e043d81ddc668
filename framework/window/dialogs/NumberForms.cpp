#include "framework/window/dialogs/NumberForms.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace kelvo {
namespace {

constexpr int kFixedDigits = 15;
constexpr std::size_t kFixedCharacters = 15;
constexpr int kLargestExponent = 200;
constexpr int kMostSignificantDigits = 17;
constexpr char kZero[] = "0";

struct Digits {
    std::string text;
    int exponent; ///< the point stands after so many of the digits
    bool negative;
};

/// 0 has the exponent 0, and its digits are all zeros.
Digits SignificantDigits(double value) {
    if (value == 0) return {std::string(kFixedDigits, '0'), 0, false};
    std::array<char, 40> written{}; // "-d.dddde+xxx"
    std::snprintf(written.data(), written.size(), "%.*e", kFixedDigits - 1, std::fabs(value));
    Digits digits{std::string(1, written[0]), 0, std::signbit(value)};
    digits.text.append(&written[2], kFixedDigits - 1);
    digits.exponent = std::atoi(std::strchr(written.data(), 'e') + 1) + 1;
    return digits;
}

/// Trailing zeros of the decimals go, and with the last of them the point; integer digits stay.
void RemoveSuperfluousZeros(std::string& text) {
    const std::size_t point = text.find('.');
    if (point == std::string::npos) return;
    std::size_t length = text.size();
    while (length > point + 1 && text[length - 1] == '0') {
        --length;
    }
    if (length == point + 1) length = point;
    text.resize(length);
}

std::string FixedForm(double value) {
    if (!std::isfinite(value)) return kZero;
    const Digits digits = SignificantDigits(value);
    if (std::abs(digits.exponent) > kLargestExponent) return kZero;
    std::string text = digits.negative ? "-" : "";
    if (digits.exponent >= 1) {
        const auto whole = std::min(static_cast<std::size_t>(digits.exponent), digits.text.size());
        text += digits.text.substr(0, whole);
        text += '.';
        text += digits.text.substr(whole);
    } else {
        text += '.';
        text.append(static_cast<std::size_t>(-digits.exponent), '0');
        text += digits.text;
    }
    text.resize(std::min(text.size(), kFixedCharacters));
    RemoveSuperfluousZeros(text);
    return text.empty() || text == "-" ? kZero : text;
}

} // namespace

const char* FixedNumberText(double value) {
    static std::array<char, kFixedCharacters + 1> buffer;
    const std::string text = FixedForm(value);
    std::snprintf(buffer.data(), buffer.size(), "%s", text.c_str());
    return buffer.data();
}

const char* SignificantDigitsText(double value, int digits) {
    static std::array<char, 40> buffer;
    std::snprintf(buffer.data(), buffer.size(), "%.*g",
                  std::clamp(digits, 1, kMostSignificantDigits), value);
    return buffer.data();
}

} // namespace kelvo
