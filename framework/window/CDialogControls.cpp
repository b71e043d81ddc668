// The controls of a dialog by their numbers: texts, numbers, check boxes, places.

#include "framework/window/CDialog.h"
#include "framework/window/dialogs/NumberForms.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/dialogs.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace kelvo {
namespace {

constexpr std::size_t kRoomBeyondText = 10;
constexpr int kLongestNumber = 40;
constexpr int kMostCheckBoxes = 32;

std::array<char, kLongestNumber + 1> NumberIn(HWND dialog, int id) {
    std::array<char, kLongestNumber + 1> text{};
    GetDlgItemTextA(dialog, id, text.data(), static_cast<int>(text.size()));
    return text;
}

} // namespace

HWND CDialog::Control(int id) const {
    return GetDlgItem(Window(), id);
}

void CDialog::SetControlText(int id, const CString& text) const {
    SetControlText(id, text.Text());
}

void CDialog::SetControlText(int id, LPCSTR text) const {
    SetDlgItemTextA(Window(), id, text != nullptr ? text : "");
}

void CDialog::SetControlInteger(int id, std::int32_t value) const {
    SetControlText(id, CString(value));
}

void CDialog::SetControlUnsigned(int id, std::uint32_t value) const {
    SetControlText(id, CString(value));
}

void CDialog::SetControlDouble(int id, double value, int digits) const {
    SetControlText(id, SignificantDigitsText(value, digits));
}

void CDialog::SetControlFixed(int id, double value) const {
    SetControlText(id, FixedNumberText(value));
}

void CDialog::SetControlDoubleFrom(int id, double value, int digits, double threshold) const {
    SetControlText(id, std::abs(value) >= threshold ? SignificantDigitsText(value, digits) : "0.0");
}

CString CDialog::ControlText(int id) const {
    const LRESULT length = SendDlgItemMessageA(Window(), id, WM_GETTEXTLENGTH, 0, 0);
    if (length <= 0) return {};
    std::vector<char> text(static_cast<std::size_t>(length) + kRoomBeyondText);
    GetDlgItemTextA(Window(), id, text.data(), static_cast<int>(text.size()));
    return {text.data()};
}

double CDialog::ControlDouble(int id) const {
    return std::atof(NumberIn(Window(), id).data());
}

long CDialog::ControlLong(int id) const {
    return std::strtol(ControlText(id).Text(), nullptr, 10);
}

int CDialog::ControlInt(int id) const {
    return std::atoi(ControlText(id).Text());
}

std::uint32_t CDialog::CheckedBoxes(int first, int last) const {
    std::uint32_t bits = 0;
    for (int i = 0; i < kMostCheckBoxes && first + i <= last; ++i) {
        if (IsDlgButtonChecked(Window(), first + i) == BST_CHECKED) bits |= 1U << i;
    }
    return bits;
}

void CDialog::SetCheckedBoxes(int first, int last, std::uint32_t bits) const {
    for (int i = 0; i < kMostCheckBoxes && first + i <= last; ++i) {
        CheckDlgButton(Window(), first + i, (bits >> i & 1U) != 0 ? BST_CHECKED : BST_UNCHECKED);
    }
}

int CDialog::HorizontalPixels(int units) const {
    RECT rect{0, 0, units, 0};
    MapDialogRect(Window(), &rect);
    return rect.right;
}

int CDialog::VerticalPixels(int units) const {
    RECT rect{0, 0, 0, units};
    MapDialogRect(Window(), &rect);
    return rect.bottom;
}

} // namespace kelvo
