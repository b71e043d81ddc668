#include "framework/window/tools/CToolWin.h"

#include "framework/base/CString.h"
#include "framework/window/LUM.h"
#include "framework/window/tools/ButtonFaces.h"
#include "framework/window/tools/GestToolButtonsGroups.h"
#include "platform/desktop/messages.h"

#include <tuple>
#include <utility>

namespace kelvo {
namespace {

constexpr char kMissingBefore[] = "BITMAP: ";
constexpr char kMissingAfter[] = " NON CARICATA in CToolWin::AddButton()";
constexpr char kMissingPressed[] = "BITMAP -ON- NON CARICATA in CToolWin::AddButton()";
constexpr char kMissingNormal[] = "BITMAP -OFF- NON CARICATA in CToolWin::AddButton()";

} // namespace

CToolWin::CToolWin() = default;

CToolWin::~CToolWin() {
    buttons_.Clear();
}

bool CToolWin::HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    if (CMovableWin::HandleMessage(message, wparam, lparam)) return true;
    switch (message) {
    case kButtonClicked:
        return OnClick(static_cast<std::int32_t>(wparam),
                       reinterpret_cast<const BitmapButton*>(lparam));
    case kButtonMessage:
        return ReportButtonMouse(*reinterpret_cast<const ButtonMessage*>(lparam));
    case WM_KEYDOWN:
        return OnKey(wparam, lparam);
    case WM_DESTROY:
        buttons_.Clear();
        return false;
    default:
        return false;
    }
}

bool CToolWin::ReportButtonMouse(const ButtonMessage& report) {
    if (report.message != WM_RBUTTONDOWN) return false;
    Tell(kButtonRightPressed, report.button->CommandId(), report.button);
    return true;
}

HBITMAP CToolWin::MakePressedImage(HDC context, HBITMAP bitmap) {
    return button_faces::Sunken(context, bitmap, BackgroundColour());
}

HBITMAP CToolWin::MakeNormalImage(HDC context, HBITMAP bitmap) {
    return button_faces::Raised(context, bitmap);
}

HBITMAP CToolWin::MakeDisabledImage(HDC context, HBITMAP bitmap) {
    return button_faces::Greyed(context, bitmap);
}

int CToolWin::AddButton(const char* bitmap_name, std::int32_t command_id, LONG left, LONG top,
                        const char* tip_text, ButtonKind kind, std::int32_t group) {
    const HBITMAP bitmap = LoadBitmapA(lum.ResourceIst(), bitmap_name);
    if (bitmap == nullptr) {
        ErrorBox(kMissingBefore + CString(bitmap_name) + kMissingAfter);
        return 0;
    }
    auto record = std::make_unique<CButtonInfo>();
    const HDC context = GetDC(Window());
    record->normal_image = MakeNormalImage(context, bitmap);
    record->pressed_image = MakePressedImage(context, bitmap);
    ReleaseDC(Window(), context);
    DeleteObject(bitmap);
    return Add(std::move(record), command_id, left, top, tip_text, kind, group);
}

int CToolWin::AddButton(const char* pressed_name, const char* normal_name, std::int32_t command_id,
                        LONG left, LONG top, const char* tip_text, ButtonKind kind,
                        std::int32_t group) {
    auto record = std::make_unique<CButtonInfo>();
    record->pressed_image = LoadBitmapA(lum.ResourceIst(), pressed_name);
    if (record->pressed_image == nullptr) return static_cast<int>(ErrorBox(kMissingPressed));
    record->normal_image = LoadBitmapA(lum.ResourceIst(), normal_name);
    if (record->normal_image == nullptr) return static_cast<int>(ErrorBox(kMissingNormal));
    return Add(std::move(record), command_id, left, top, tip_text, kind, group);
}

int CToolWin::AddButton(HBITMAP pressed_image, HBITMAP normal_image, std::int32_t command_id,
                        LONG left, LONG top, const char* tip_text, ButtonKind kind,
                        std::int32_t group) {
    auto record = std::make_unique<CButtonInfo>();
    record->pressed_image = pressed_image;
    record->normal_image = normal_image;
    record->not_owned = 1;
    return Add(std::move(record), command_id, left, top, tip_text, kind, group);
}

int CToolWin::Add(std::unique_ptr<CButtonInfo> record, std::int32_t command_id, LONG left, LONG top,
                  const char* tip_text, ButtonKind kind, std::int32_t group) {
    record->group = group != 0 ? group : -command_id;
    record->button = std::make_unique<BitmapButton>(command_id, kind, record->normal_image,
                                                    record->pressed_image);
    BitmapButton& button = *record->button;
    button.SetTipText(tip_text);
    button.SetParent(this);
    button.SetPosition(left, top);
    if (button.Create() == 0) return 0;
    if (buttons_.Add(record.get()) == 0) return 0;
    std::ignore = record.release(); // the array's now
    return 1;
}

// A button that is being removed still reports its last messages, and who hears them may look for
// others.
CButtonInfo* CToolWin::FindRecord(std::int32_t command_id) const {
    for (std::int32_t i = 0; i < buttons_.Count(); ++i) {
        auto* const record = static_cast<CButtonInfo*>(buttons_.At(i));
        if (record->button && record->button->CommandId() == command_id) return record;
    }
    return nullptr;
}

CButtonInfo* CToolWin::FindRecord(const BitmapButton* button) const {
    for (std::int32_t i = 0; i < buttons_.Count(); ++i) {
        auto* const record = static_cast<CButtonInfo*>(buttons_.At(i));
        if (record->button.get() == button) return record;
    }
    return nullptr;
}

int CToolWin::RemoveButton(std::int32_t command_id) {
    for (std::int32_t i = 0; i < buttons_.Count(); ++i) {
        const auto* const record = static_cast<CButtonInfo*>(buttons_.At(i));
        if (record->button && record->button->CommandId() == command_id) return buttons_.Remove(i);
    }
    return 0;
}

BitmapButton* CToolWin::FindButton(std::int32_t command_id) const {
    const CButtonInfo* const record = FindRecord(command_id);
    return record == nullptr ? nullptr : record->button.get();
}

int CToolWin::EnableButton(std::int32_t command_id) {
    const BitmapButton* const button = FindButton(command_id);
    if (button == nullptr) return 0;
    EnableWindow(button->Window(), TRUE);
    return 1;
}

int CToolWin::DisableButton(std::int32_t command_id) {
    const BitmapButton* const button = FindButton(command_id);
    if (button == nullptr) return 0;
    EnableWindow(button->Window(), FALSE);
    return 1;
}

int CToolWin::ShowButton(std::int32_t command_id) {
    const BitmapButton* const button = FindButton(command_id);
    if (button == nullptr) return 0;
    ShowWindow(button->Window(), SW_SHOW);
    return 1;
}

int CToolWin::HideButton(std::int32_t command_id) {
    const BitmapButton* const button = FindButton(command_id);
    if (button == nullptr) return 0;
    ShowWindow(button->Window(), SW_HIDE);
    return 1;
}

int CToolWin::ToggleButton(std::int32_t command_id) {
    BitmapButton* const button = FindButton(command_id);
    if (button == nullptr) return 0;
    button->SetPressed(!button->IsPressed());
    button->Repaint();
    OnClick(command_id, button);
    return 1;
}

void CToolWin::SetGroups(std::unique_ptr<GestToolButtonsGroups> groups) {
    groups_ = std::move(groups);
}

// A button may be removed between its click and this, and another one stand at its address.
bool CToolWin::OnClick(std::int32_t command_id, const BitmapButton* clicked) {
    const CButtonInfo* const record = FindRecord(clicked);
    if (record == nullptr || record->button->CommandId() != command_id) return true;
    BitmapButton& button = *record->button;
    if (button.Kind() == ButtonKind::Toggle) {
        if (!button.IsPressed() && record->group >= 0) {
            button.SetPressed(true); // one of its group is always down
            button.Repaint();
            return true;
        }
        ReleaseOthers(*record);
        button.Repaint();
    }
    Tell(WM_COMMAND, button.CommandId(), &button);
    return true;
}

void CToolWin::ReleaseOthers(const CButtonInfo& pressed) const {
    for (std::int32_t i = 0; i < buttons_.Count(); ++i) {
        const auto* const other = static_cast<CButtonInfo*>(buttons_.At(i));
        if (other == &pressed || other->group != pressed.group) continue;
        other->button->SetPressed(false);
        other->button->Repaint();
    }
}

void CToolWin::Tell(UINT message, std::int32_t command_id, BitmapButton* button) const {
    CObj* const receiver = notify_target_ != nullptr ? notify_target_ : Parent();
    if (receiver == nullptr) return;
    receiver->HandleMessage(message, static_cast<WPARAM>(command_id),
                            reinterpret_cast<LPARAM>(button));
}

} // namespace kelvo
