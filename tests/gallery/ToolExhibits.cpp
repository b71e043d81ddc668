#include "framework/window/CWin.h"
#include "framework/window/tools/ButtonsMenu.h"
#include "framework/window/tools/CEdit.h"
#include "framework/window/tools/ToolWinlum.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"
#include "tests/gallery/Exhibits.h"

namespace kelvo::gallery {
namespace {

constexpr LONG kButtonSide = 20;
constexpr LONG kMenuButtonSide = 20;
constexpr int kMenuCommand = 50;
constexpr int kRadioGroup = 3;

struct ToolButton {
    const char* bitmap;
    std::int32_t command;
    const char* tip;
    ButtonKind kind;
    std::int32_t group;
};
constexpr ToolButton kButtons[] = {
    {"ApriBtnBmp", 10, "Apre un file", ButtonKind::Push, 0},
    {"CRP_Stop", 11, "Ferma", ButtonKind::Push, 0},
    {"CRP_Pausa", 12, "Pausa", ButtonKind::Toggle, 0},
    {"CRP_Indietro_veloce", 13, "Indietro veloce", ButtonKind::Toggle, kRadioGroup},
    {"CRP_Avanti", 14, "Avanti", ButtonKind::Toggle, kRadioGroup},
    {"CRP_Avanti_veloce", 15, "Avanti veloce", ButtonKind::Toggle, kRadioGroup},
    {"CRP_FineFile", 16, "Non disponibile", ButtonKind::Push, 0},
    {"CRP_InizioFile", kMenuCommand, "Apre il menu di pulsanti", ButtonKind::Push, 0},
};
constexpr std::int32_t kDisabledCommand = 16;

struct MenuItem {
    const char* bitmap;
    std::int32_t command;
    bool pressed;
};
constexpr MenuItem kMenuItems[] = {
    {"CRP_Avanti", 61, false}, {"CRP_Pausa", 62, true}, {"CRP_Stop", 63, false}};

/// A window with a bar of buttons and an edit under a framework object.
class ToolsWindow : public CWin {
public:
    ToolsWindow() {
        SetTitle("Galleria - strumenti");
        SetPlacement(100, 100, 420, 220);
        SetBackgroundColour(0xE0E0E0);
        SetPaintBackground(true);
    }

    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override {
        if (CWin::HandleMessage(message, wparam, lparam)) return true;
        switch (message) {
        case WM_CREATE:
            OnCreate();
            return false;
        case WM_COMMAND:
            if (HIWORD(wparam) != 0) return false; // the edit tells of its focus
            OnCommand(static_cast<int>(wparam), lparam);
            return true;
        default:
            return false;
        }
    }

private:
    void OnCreate() {
        bar_.SetParent(this);
        bar_.SetStyle(WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS);
        bar_.SetPlacement(8, 8, kButtonSide * static_cast<LONG>(std::size(kButtons)), kButtonSide);
        bar_.Create();
        LONG left = 0;
        for (const ToolButton& one : kButtons) {
            bar_.AddButton(one.bitmap, one.command, left, 0, one.tip, one.kind, one.group);
            left += kButtonSide;
        }
        bar_.DisableButton(kDisabledCommand);
        edit_.SetParent(this);
        edit_.SetPlacement(8, 40, 200, 24);
        edit_.Create();
    }

    void OnCommand(int command, LPARAM lparam) {
        if (command == kMenuCommand && lparam != 0) {
            OpenMenu();
        } else if (lparam == 0 || lparam == 1) {
            Report(CString::Formatted("posted %d, %d", command, static_cast<int>(lparam)).Text());
        } else if (command != 0) {
            Report(CString::Formatted("command %d", command).Text());
        }
    }

    void OpenMenu() {
        BitmapButton* anchor = bar_.FindButton(kMenuCommand);
        ButtonsMenu menu;
        for (const MenuItem& one : kMenuItems) {
            menu.AddItem(one.bitmap, one.command, "", one.pressed);
        }
        RECT place{};
        GetWindowRect(anchor->Window(), &place);
        std::int32_t chosen = 0;
        const int result = menu.Open(place.left, place.bottom, anchor, MenuSide::Below,
                                     kMenuButtonSide, &chosen, ButtonsMenu::Post::No);
        Report(CString::Formatted("menu %d, %d", result, chosen).Text());
    }

    ToolWinlum bar_;
    CEdit edit_;
};

} // namespace

void ShowTools() {
    ToolsWindow window;
    window.ModalRun(nullptr);
}

} // namespace kelvo::gallery
