#pragma once
// One object per window: the fields it is created from, the handler its messages reach, the modal
// loop that runs a window until it ends, and the anchors that hold a child to its parent's edges.
// The window procedures that find the object behind a handle stand in WindowProcedures.

#include "framework/base/CObj.h"
#include "framework/base/CString.h"
#include "platform/desktop/windows.h"

#include <cstdint>
#include <vector>

struct MSG;

namespace kelvo {

class Stream;

/// Message that ends a window's modal loop; lParam carries the result.
inline constexpr UINT kEndModalMessage = 0x1414;

/// The class that windows are of unless they name another; the kernel registers it.
inline constexpr char kBaseWindowClass[] = "LUMBASECLS";

/// Distances that hold a child's edges to its parent's client area, in pixels; a negative margin
/// leaves that side free.
struct AnchorMargins {
    LONG left = 0;
    LONG right = 0;
    LONG top = 0;
    LONG bottom = 0;
};

/// A window and its object. A derived window sets the fields before Create, overrides
/// HandleMessage, and calls CWin's handler for what it does not consume.
class CWin : public CObj {
public:
    static constexpr std::uint32_t kClassId = 8040100;

    explicit CWin(std::uint32_t class_id = kClassId);
    CWin(const CWin&) = delete;
    CWin& operator=(const CWin&) = delete;

    /// Background colour, extended style, place, size and the paint-background flag: 25 bytes.
    bool Save(Stream& stream) override;
    bool Load(Stream& stream) override;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;
    ~CWin() override;

    /// Makes the window from the fields. @return 1, or 0 after a box that says why not.
    virtual int Create();
    /// Makes the window if there is none and runs a message loop until it ends. The owner and its
    /// ancestors only repaint meanwhile; unrelated windows stay live.
    /// @return the result given to EndModal; 0 when the window was closed.
    virtual LPARAM ModalRun(CWin* owner);

    /// The same with a bare handle as parent and no parent object.
    int Create(HWND parent);
    /// Asks the modal loop to end; takes effect when the loop reads the message.
    void EndModal(LPARAM result);
    /// Ends the modal loop with 0 if one runs for this window, else destroys the window.
    void Close();
    /// Posts WM_QUIT to the program's loop; a modal loop does not end by it.
    static void Quit();

    void SetTitle(LPCSTR title);
    /// Sends WM_SETTEXT to a created window; the stored title stays.
    void SetText(LPCSTR text);
    void SetLeft(LONG left);
    void SetTop(LONG top);
    void SetWidth(LONG width);
    void SetHeight(LONG height);
    void SetPosition(LONG left, LONG top);
    void SetSize(LONG width, LONG height);
    void SetPlacement(LONG left, LONG top, LONG width, LONG height);
    void SetTopmost();
    void SetNotTopmost();
    /// Client width in the low 16 bits, client height in the high 16 bits.
    DWORD ClientSize() const;
    LRESULT Send(UINT message, WPARAM wparam, LPARAM lparam) const;
    bool Post(UINT message, WPARAM wparam, LPARAM lparam) const;

    /// Stores the margins and marks the window anchored: WM_SIZE then leaves the stored size alone.
    int SetAnchors(const AnchorMargins& margins);
    /// Stores the margins and places the window by them. @return 0 unless this is a created child
    /// of a parent object.
    int ApplyAnchors(const AnchorMargins& margins);
    /// Applies the stored margins if the window is anchored.
    int ReapplyAnchors();
    /// Centres the window on the screen; a size below 1 means the window's own, and none exceeds
    /// the screen. @return 0 when the screen could not be asked.
    int CentreOnScreen(LONG width, LONG height);

    // The fields that Create uses; each has its default until it is set.
    void SetBackgroundColour(COLORREF colour) { background_colour_ = colour; }
    COLORREF BackgroundColour() const { return background_colour_; }
    void SetPaintBackground(bool paint) { paint_background_ = paint ? 1 : 0; }
    bool PaintsBackground() const { return paint_background_ != 0; }
    void SetInstance(HINSTANCE instance) { instance_ = instance; }
    HINSTANCE Instance() const { return instance_; }
    void SetWindowClass(LPCSTR class_name) { class_name_ = class_name; }
    const CString& WindowClass() const { return class_name_; }
    void SetParent(CWin* parent) { parent_ = parent; }
    CWin* Parent() const { return parent_; }
    /// The menu of a top-level window.
    void SetMenuHandle(HMENU menu) { menu_ = menu; }
    /// The id of a child control, which stands in the same place.
    void SetChildId(int id) { menu_ = reinterpret_cast<HMENU>(static_cast<INT_PTR>(id)); }
    HMENU MenuHandle() const { return menu_; }
    void SetStyle(DWORD style) { style_ = style; }
    DWORD Style() const { return style_; }
    void SetExtendedStyle(DWORD style) { extended_style_ = style; }
    DWORD ExtendedStyle() const { return extended_style_; }

    HWND Window() const { return window_; }
    /// Adopts a window that the framework did not create, such as the desktop's.
    void SetWindow(HWND window) { window_ = window; }
    bool HasWindow() const { return no_window_ == 0; }
    bool WasCreated() const { return (state_ & kCreatedState) != 0; }
    bool RunsModally() const { return modal_running_; }
    LONG Left() const { return left_; }
    LONG Top() const { return top_; }
    LONG Width() const { return width_; }
    LONG Height() const { return height_; }
    const CString& Title() const { return title_; }

protected:
    /// What the window procedure returns for a message that the handler reports handled; 1 until
    /// a handler sets it.
    void SetMessageResult(LRESULT result) { message_result_ = result; }
    LRESULT MessageResult() const { return message_result_; }

    // For windows that are created or run in a way of their own.

    /// The window exists now; whoever calls this has bound it to the object.
    void MarkCreated();
    void StoreSize(LONG width, LONG height) {
        width_ = width;
        height_ = height;
    }
    /// Forgets an earlier request to end.
    void BeginModalLoop();
    void EndModalLoop() { modal_running_ = false; }
    void RequestEnd(LPARAM result) {
        end_requested_ = true;
        end_result_ = result;
    }
    /// Whether the loop shall end: it was asked to, or WM_CLOSE or the end message came.
    bool IsEndRequested() const { return end_requested_; }
    LPARAM EndResult() const { return end_result_; }

private:
    friend LRESULT CWinWndProc(HWND window, UINT message, WPARAM wparam, LPARAM lparam);
    friend UINT_PTR FileDialogHook(HWND dialog, UINT message, WPARAM wparam, LPARAM lparam);

    static constexpr BYTE kCreatedState = 1;

    bool HasInstance();
    bool CreateIn(HWND parent);
    int FinishCreation();
    bool OnMove();
    bool OnEraseBackground(HDC context) const;
    void Place(UINT flags) const;
    std::vector<HWND> OwnerSide(const CWin* owner) const;
    bool MayDispatch(const MSG& message, const CWin* owner,
                     const std::vector<HWND>& owner_side) const;
    void LoopUntilEnd(const CWin* owner, const std::vector<HWND>& owner_side);

    // Field order is the order in which Save writes what it keeps.
    COLORREF background_colour_ = 0;
    HINSTANCE instance_ = nullptr; ///< none: the kernel's, filled in at creation
    LRESULT message_result_ = 0;
    CString class_name_;
    CWin* parent_ = nullptr;
    HWND window_ = nullptr;
    HMENU menu_ = nullptr;
    DWORD style_;
    DWORD extended_style_ = 0;
    LONG left_;
    LONG top_;
    LONG height_;
    LONG width_;
    CString title_;
    AnchorMargins anchors_;
    BYTE paint_background_ = 0;
    BYTE no_window_ = 1; ///< 0 from successful creation until WM_DESTROY
    BYTE state_ = 2;     ///< bit 0: the window has been created once
    bool end_requested_ = false;
    bool modal_running_ = false;
    bool anchored_ = false;
    LPARAM end_result_ = 0; ///< lParam of the message that ended it, whichever loop took that
};

} // namespace kelvo
