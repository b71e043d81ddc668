#include "app/TransportBar.h"

#include "framework/window/tools/BitmapButton.h"
#include "platform/desktop/windows.h"

#include <algorithm>

namespace kelvo {
namespace {

constexpr LONG kBarWidth = 174;
constexpr LONG kBarHeight = 24;
constexpr LONG kButtonTop = 2;
constexpr std::int32_t kOwnGroup = 0;
constexpr std::int32_t kDirections = 1; ///< of these buttons one is down at a time

struct BarButton {
    Command command;
    const char* bitmap;
    LONG left;
    const char* tip;
    ButtonKind kind;
    std::int32_t group;
};

constexpr BarButton kButtons[] = {
    {Command::Open, "ApriBtnBmp", 2, "Apre un filmato", ButtonKind::Push, kOwnGroup},
    {Command::ToStart, "CRP_InizioFile", 26, "Vai all'Inizio", ButtonKind::Push, kOwnGroup},
    {Command::FastBackward, "CRP_Indietro_veloce", 46, "Indietro veloce", ButtonKind::Toggle,
     kDirections},
    {Command::Stop, "CRP_Stop", 66, "Stop", ButtonKind::Toggle, kDirections},
    {Command::Pause, "CRP_Pausa", 86, "Pausa", ButtonKind::Toggle, kOwnGroup},
    {Command::Play, "CRP_Avanti", 106, "Play", ButtonKind::Toggle, kDirections},
    {Command::FastForward, "CRP_Avanti_veloce", 126, "Avanti veloce", ButtonKind::Toggle,
     kDirections},
    {Command::ToEnd, "CRP_FineFile", 146, "Vai alla fine", ButtonKind::Push, kOwnGroup},
};

/// What makes no sense while something plays.
constexpr Command kIdleButtons[] = {Command::FastBackward, Command::FastForward, Command::Play,
                                    Command::ToStart, Command::ToEnd};

constexpr std::int32_t IdOf(Command command) {
    return static_cast<std::int32_t>(command);
}

const BarButton* RowOf(Command command) {
    const auto* const row = std::ranges::find(kButtons, command, &BarButton::command);
    return row == std::end(kButtons) ? nullptr : row;
}

} // namespace

void TransportBar::CreateIn(CWin& parent) {
    SetParent(&parent);
    SetPlacement(0, 0, kBarWidth, kBarHeight);
    Create();
    SetAnchors({.left = 0, .right = -1, .top = 0, .bottom = -1});
    for (const BarButton& button : kButtons) {
        AddButton(button.bitmap, IdOf(button.command), button.left, kButtonTop, button.tip,
                  button.kind, button.group);
    }
}

void TransportBar::SetTransportBusy(WithPause with_pause) {
    for (const Command command : kIdleButtons) {
        DisableButton(IdOf(command));
    }
    if (with_pause == WithPause::Yes) {
        DisableButton(IdOf(Command::Pause));
        HideButton(IdOf(Command::Pause));
    }
    for (const Command command : kIdleButtons) {
        HideButton(IdOf(command));
    }
}

void TransportBar::RestoreTransport() {
    for (const Command command : kIdleButtons) {
        EnableButton(IdOf(command));
    }
    EnableButton(IdOf(Command::Pause));
    ShowButton(IdOf(Command::Pause));
    for (const Command command : kIdleButtons) {
        ShowButton(IdOf(command));
    }
    Raise(Command::Pause);
}

void TransportBar::ResetTransport() {
    RestoreTransport();
    for (const Command command : kIdleButtons) {
        Raise(command);
    }
}

void TransportBar::Raise(Command command) {
    SetDown(command, false);
}

void TransportBar::ShowClick(Command command) {
    const BarButton* const row = RowOf(command);
    if (row == nullptr || row->kind != ButtonKind::Toggle) return;
    if (row->group == kOwnGroup) {
        SetDown(command, !IsDown(command));
        return;
    }
    for (const BarButton& button : kButtons) {
        if (button.group == row->group) SetDown(button.command, button.command == command);
    }
}

bool TransportBar::IsDown(Command command) const {
    const BitmapButton* const button = FindButton(IdOf(command));
    return button != nullptr && button->IsPressed();
}

void TransportBar::SetDown(Command command, bool down) {
    BitmapButton* const button = FindButton(IdOf(command));
    if (button == nullptr) return;
    button->SetPressed(down);
    button->Repaint();
}

} // namespace kelvo
