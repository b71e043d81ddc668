#pragma once
// A strip of buttons that pops up beside an anchor window, runs a loop of its own, and gives the
// chosen command. It closes when the pointer leaves its neighbourhood or presses elsewhere.

#include "framework/base/CArray.h"
#include "framework/window/CWin.h"
#include "framework/window/tools/CToolWin.h"

#include <cstdint>

struct MSG;

namespace kelvo {

/// Where the strip lies, seen from the opening point.
enum class MenuSide : std::int32_t { Below = 1, Above = 2, Left = 3, Right = 4 };

class ButtonsMenu : public CWin {
public:
#pragma pack(push, 1)
    struct btninfo {
        char bitmap_name[256]; ///< zero-terminated
        std::int32_t command_id;
        char second_name[256]; ///< may be empty; else the first is shown pressed, this one normal
        BYTE initially_pressed;
    };
#pragma pack(pop)
    static_assert(sizeof(btninfo) == 517);

    /// Whether a choice is posted to the anchor's window.
    enum class Post : bool { No, Yes };

    ButtonsMenu();
    ~ButtonsMenu() override;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

    void AddItem(const char* bitmap_name, std::int32_t command_id, const char* second_name,
                 bool initially_pressed);
    const CArray<btninfo>& Items() const { return items_; }

    /// Runs the menu at a point of the screen. A choice is stored and, with Post::Yes, posted to
    /// the anchor's window: WM_COMMAND with the id, lParam 0 for an initially pressed item, else 1.
    /// @param chosen  may be null
    /// @return 1 after a choice, else 0
    int Open(LONG x, LONG y, CWin* anchor, MenuSide side, LONG button_size, std::int32_t* chosen,
             Post post);
    /// Runs the menu until a button is chosen (1) or the menu is left (0).
    LPARAM newModalRun(CWin* owner);

    std::int32_t ChosenCommand() const { return chosen_; }
    const CToolWin& Strip() const { return strip_; }

    /// Whether the menu closes when the pointer leaves its neighbourhood; true at first.
    void SetTracking(bool tracks) { tracks_mouse_ = tracks ? 1 : 0; }

private:
    /// Whether the loop goes on with a message, or has nothing more to do.
    enum class Verdict : bool { GoOn, Leave };

    bool IsVertical() const { return vertical_ != 0; }
    LONG StripLength() const { return items_.Count() * button_size_; }
    bool IsPressedItem(std::int32_t command_id) const;
    void PlaceAt(LONG x, LONG y);
    int CreateMenu(CWin* owner);
    void OnCreate();
    void AddButtons();
    void TakeRectangles();
    Verdict Judge(const MSG& message);
    Verdict OnPointerMoved();
    Verdict OnWatch();
    void OnPress(const MSG& message);
    bool PassToAnchor(const MSG& message);
    bool MayDispatch(const MSG& message, const CWin* owner) const;
    void ShowAnchorTip();
    void HideTip();
    LPARAM Finish(LPARAM result);

    CArray<btninfo> items_;
    CToolWin strip_;
    std::int32_t chosen_ = 0;
    BYTE vertical_ = 0;
    BYTE tracks_mouse_ = 1;
    LONG button_size_ = 0;
    MenuSide side_ = MenuSide::Below;
    CWin* anchor_ = nullptr;
    // While the loop runs; rectangles and points on the screen.
    RECT menu_rect_{};
    RECT neighbourhood_{}; ///< the menu, longer at both ends by a button
    RECT anchor_rect_{};
    POINT watched_pointer_{};
    bool waits_for_tip_ = false;
    bool shows_tip_ = false;
};

} // namespace kelvo
