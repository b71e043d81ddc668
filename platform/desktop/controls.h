#pragma once
// The standard controls: their classes, styles, messages and notifications. A control is a window
// of one of the classes below, made with CreateWindowExA; it looks and works as the desktop's own.
//
// A control takes its input from the messages that reach its window procedure, so a procedure put
// in its place (SetWindowLongPtrA with GWLP_WNDPROC, the rest by CallWindowProcA) sees all of it
// first and may swallow it. What it reports is sent to the parent before the message that caused it
// is answered; what no message of the program caused (a choice in an open list, an assistive
// program) is posted. The parent may destroy the control in answer.

#include "platform/base/types.h"
#include "platform/desktop/messages.h"
#include "platform/desktop/windows.h"

// ---- classes ----

inline constexpr char WC_BUTTON[] = "BUTTON";
inline constexpr char WC_STATIC[] = "STATIC";
inline constexpr char WC_EDIT[] = "EDIT";
inline constexpr char WC_LISTBOX[] = "LISTBOX";
inline constexpr char WC_COMBOBOX[] = "COMBOBOX";
inline constexpr char WC_SCROLLBAR[] = "SCROLLBAR";
inline constexpr char TRACKBAR_CLASS[] = "msctls_trackbar32";

/// Makes sure that the trackbar's class is there. It is from the start of the desktop, as those of
/// the other controls are.
void InitCommonControls();

// ---- what all controls understand ----

/// wParam: the font (0: the desktop's), lParam: whether to repaint.
inline constexpr UINT WM_SETFONT = 0x0030;
/// @return the font of the last WM_SETFONT, 0 without.
inline constexpr UINT WM_GETFONT = 0x0031;
/// @return the DLGC_ bits: which keys the control wants for itself, and what it is.
inline constexpr UINT WM_GETDLGCODE = 0x0087;
inline constexpr LRESULT DLGC_WANTARROWS = 0x0001;
inline constexpr LRESULT DLGC_WANTTAB = 0x0002;
inline constexpr LRESULT DLGC_WANTALLKEYS = 0x0004;
inline constexpr LRESULT DLGC_HASSETSEL = 0x0008;
inline constexpr LRESULT DLGC_DEFPUSHBUTTON = 0x0010;
inline constexpr LRESULT DLGC_UNDEFPUSHBUTTON = 0x0020;
inline constexpr LRESULT DLGC_RADIOBUTTON = 0x0040;
inline constexpr LRESULT DLGC_WANTCHARS = 0x0080;
inline constexpr LRESULT DLGC_STATIC = 0x0100;
inline constexpr LRESULT DLGC_BUTTON = 0x2000;

/// Of every child window: the first of a group; reachable with the tabulator.
inline constexpr DWORD WS_GROUP = 0x00020000;
inline constexpr DWORD WS_TABSTOP = 0x00010000;
inline constexpr DWORD WS_VSCROLL = 0x00200000;
inline constexpr DWORD WS_HSCROLL = 0x00100000;
inline constexpr DWORD WS_EX_CLIENTEDGE = 0x00000200;

// ---- colours ----

// Sent to the parent whenever a control is painted: wParam is a device context to set the text and
// background colours in, lParam the control; the answer is the brush of the background, or 0 for
// the desktop's own. A text colour that was set counts also without a brush. NULL_BRUSH lets the
// parent show through.
inline constexpr UINT WM_CTLCOLORMSGBOX = 0x0132;
inline constexpr UINT WM_CTLCOLOREDIT = 0x0133;
inline constexpr UINT WM_CTLCOLORLISTBOX = 0x0134;
inline constexpr UINT WM_CTLCOLORBTN = 0x0135;
inline constexpr UINT WM_CTLCOLORDLG = 0x0136;
inline constexpr UINT WM_CTLCOLORSCROLLBAR = 0x0137;
/// Also of check boxes, radio buttons, group boxes, trackbars, and edit controls that are read-only
/// or disabled.
inline constexpr UINT WM_CTLCOLORSTATIC = 0x0138;

// ---- drawn by the owner ----

inline constexpr UINT ODT_LISTBOX = 2;
inline constexpr UINT ODT_COMBOBOX = 3;
inline constexpr UINT ODT_BUTTON = 4;
inline constexpr UINT ODT_STATIC = 5;

inline constexpr UINT ODA_DRAWENTIRE = 0x0001;
inline constexpr UINT ODA_SELECT = 0x0002;
inline constexpr UINT ODA_FOCUS = 0x0004;

inline constexpr UINT ODS_SELECTED = 0x0001;
inline constexpr UINT ODS_GRAYED = 0x0002;
inline constexpr UINT ODS_DISABLED = 0x0004;
inline constexpr UINT ODS_CHECKED = 0x0008;
inline constexpr UINT ODS_FOCUS = 0x0010;
inline constexpr UINT ODS_DEFAULT = 0x0020;

struct MEASUREITEMSTRUCT {
    UINT CtlType;
    UINT CtlID;
    UINT itemID;
    UINT itemWidth;
    UINT itemHeight;
    UINT_PTR itemData;
};

struct DRAWITEMSTRUCT {
    UINT CtlType; ///< ODT_
    UINT CtlID;
    UINT itemID;
    UINT itemAction; ///< ODA_
    UINT itemState;  ///< ODS_
    HWND hwndItem;
    HDC hDC; ///< draws on the control itself
    RECT rcItem;
    UINT_PTR itemData;
};

/// Sent to the parent: wParam the control's number, lParam the DRAWITEMSTRUCT.
inline constexpr UINT WM_DRAWITEM = 0x002B;
/// Sent to the parent once, while the control is being created.
inline constexpr UINT WM_MEASUREITEM = 0x002C;

// ---- scrolling ----

/// Sent to the parent: the low word of wParam is the SB_ or TB_ code, the high word the position
/// for the two THUMB codes, lParam the control.
inline constexpr UINT WM_HSCROLL = 0x0114;
inline constexpr UINT WM_VSCROLL = 0x0115;

inline constexpr int SB_LINEUP = 0;
inline constexpr int SB_LINELEFT = 0;
inline constexpr int SB_LINEDOWN = 1;
inline constexpr int SB_LINERIGHT = 1;
inline constexpr int SB_PAGEUP = 2;
inline constexpr int SB_PAGELEFT = 2;
inline constexpr int SB_PAGEDOWN = 3;
inline constexpr int SB_PAGERIGHT = 3;
inline constexpr int SB_THUMBPOSITION = 4;
inline constexpr int SB_THUMBTRACK = 5;
inline constexpr int SB_TOP = 6;
inline constexpr int SB_BOTTOM = 7;
inline constexpr int SB_ENDSCROLL = 8;

// ---- BUTTON ----

inline constexpr DWORD BS_PUSHBUTTON = 0x0000;
inline constexpr DWORD BS_DEFPUSHBUTTON = 0x0001;
inline constexpr DWORD BS_CHECKBOX = 0x0002;
inline constexpr DWORD BS_AUTOCHECKBOX = 0x0003;
inline constexpr DWORD BS_RADIOBUTTON = 0x0004;
inline constexpr DWORD BS_3STATE = 0x0005;
inline constexpr DWORD BS_AUTO3STATE = 0x0006;
inline constexpr DWORD BS_GROUPBOX = 0x0007;
inline constexpr DWORD BS_AUTORADIOBUTTON = 0x0009;
inline constexpr DWORD BS_OWNERDRAW = 0x000B;
inline constexpr DWORD BS_TYPEMASK = 0x000F;
inline constexpr DWORD BS_LEFTTEXT = 0x0020;
inline constexpr DWORD BS_LEFT = 0x0100;
inline constexpr DWORD BS_RIGHT = 0x0200;
inline constexpr DWORD BS_CENTER = 0x0300;
inline constexpr DWORD BS_PUSHLIKE = 0x1000;
inline constexpr DWORD BS_MULTILINE = 0x2000;
inline constexpr DWORD BS_NOTIFY = 0x4000;

inline constexpr UINT BM_GETCHECK = 0x00F0;
/// wParam: BST_; sends no notification.
inline constexpr UINT BM_SETCHECK = 0x00F1;
inline constexpr UINT BM_GETSTATE = 0x00F2;
inline constexpr UINT BM_SETSTATE = 0x00F3;
/// wParam: the new BS_ type and style, lParam: whether to repaint.
inline constexpr UINT BM_SETSTYLE = 0x00F4;
/// As a press and release of the mouse.
inline constexpr UINT BM_CLICK = 0x00F5;

inline constexpr UINT BST_UNCHECKED = 0x0000;
inline constexpr UINT BST_CHECKED = 0x0001;
inline constexpr UINT BST_INDETERMINATE = 0x0002;
inline constexpr UINT BST_PUSHED = 0x0004;
inline constexpr UINT BST_FOCUS = 0x0008;

// Notifications are WM_COMMAND: low word of wParam the control's number, high word the code, lParam
// the control.
inline constexpr UINT BN_CLICKED = 0;
inline constexpr UINT BN_DOUBLECLICKED = 5; ///< with BS_NOTIFY; the press counts as a click, too
inline constexpr UINT BN_SETFOCUS = 6;      ///< with BS_NOTIFY
inline constexpr UINT BN_KILLFOCUS = 7;     ///< with BS_NOTIFY

// ---- STATIC ----

inline constexpr DWORD SS_LEFT = 0x0000;
inline constexpr DWORD SS_CENTER = 0x0001;
inline constexpr DWORD SS_RIGHT = 0x0002;
inline constexpr DWORD SS_ICON = 0x0003;
inline constexpr DWORD SS_BLACKRECT = 0x0004;
inline constexpr DWORD SS_GRAYRECT = 0x0005;
inline constexpr DWORD SS_WHITERECT = 0x0006;
inline constexpr DWORD SS_BLACKFRAME = 0x0007;
inline constexpr DWORD SS_GRAYFRAME = 0x0008;
inline constexpr DWORD SS_WHITEFRAME = 0x0009;
inline constexpr DWORD SS_SIMPLE = 0x000B;
inline constexpr DWORD SS_LEFTNOWORDWRAP = 0x000C;
inline constexpr DWORD SS_OWNERDRAW = 0x000D;
inline constexpr DWORD SS_BITMAP = 0x000E;
inline constexpr DWORD SS_ETCHEDHORZ = 0x0010;
inline constexpr DWORD SS_ETCHEDVERT = 0x0011;
inline constexpr DWORD SS_ETCHEDFRAME = 0x0012;
inline constexpr DWORD SS_TYPEMASK = 0x001F;
inline constexpr DWORD SS_NOPREFIX = 0x0080;
inline constexpr DWORD SS_NOTIFY = 0x0100;
inline constexpr DWORD SS_CENTERIMAGE = 0x0200;
inline constexpr DWORD SS_SUNKEN = 0x1000;

inline constexpr UINT IMAGE_BITMAP = 0;
inline constexpr UINT IMAGE_ICON = 1;
/// wParam: IMAGE_, lParam: the handle; the picture is copied. @return the handle before.
inline constexpr UINT STM_SETIMAGE = 0x0172;
inline constexpr UINT STM_GETIMAGE = 0x0173;

inline constexpr UINT STN_CLICKED = 0; ///< all with SS_NOTIFY
inline constexpr UINT STN_DBLCLK = 1;

// ---- EDIT ----

inline constexpr DWORD ES_LEFT = 0x0000;
inline constexpr DWORD ES_CENTER = 0x0001;
inline constexpr DWORD ES_RIGHT = 0x0002;
inline constexpr DWORD ES_MULTILINE = 0x0004;
inline constexpr DWORD ES_UPPERCASE = 0x0008;
inline constexpr DWORD ES_LOWERCASE = 0x0010;
inline constexpr DWORD ES_PASSWORD = 0x0020;
inline constexpr DWORD ES_AUTOVSCROLL = 0x0040;
inline constexpr DWORD ES_AUTOHSCROLL = 0x0080;
inline constexpr DWORD ES_NOHIDESEL = 0x0100;
inline constexpr DWORD ES_READONLY = 0x0800;
inline constexpr DWORD ES_WANTRETURN = 0x1000;
inline constexpr DWORD ES_NUMBER = 0x2000;

// Positions and lengths are bytes of the text, as WM_GETTEXT gives it; lines of several end with
// CR LF.
inline constexpr UINT EM_GETSEL = 0x00B0;
/// wParam, lParam: start and end, (0, -1) for all, start -1 for none.
inline constexpr UINT EM_SETSEL = 0x00B1;
inline constexpr UINT EM_SCROLLCARET = 0x00B7;
inline constexpr UINT EM_GETMODIFY = 0x00B8;
inline constexpr UINT EM_SETMODIFY = 0x00B9;
inline constexpr UINT EM_GETLINECOUNT = 0x00BA;
/// wParam: the line, or -1 for that of the caret. @return the position of its first byte, or -1.
inline constexpr UINT EM_LINEINDEX = 0x00BB;
/// wParam: a position. @return the length of the line that it lies in.
inline constexpr UINT EM_LINELENGTH = 0x00C1;
/// wParam: whether it can be undone, lParam: the text.
inline constexpr UINT EM_REPLACESEL = 0x00C2;
/// wParam: the line, lParam: a buffer whose first WORD says how much it holds; no 0 is added.
inline constexpr UINT EM_GETLINE = 0x00C4;
/// wParam: how many bytes may be typed; 0: as many as there can be.
inline constexpr UINT EM_LIMITTEXT = 0x00C5;
inline constexpr UINT EM_SETLIMITTEXT = 0x00C5;
inline constexpr UINT EM_CANUNDO = 0x00C6;
inline constexpr UINT EM_UNDO = 0x00C7;
inline constexpr UINT EM_LINEFROMCHAR = 0x00C9;
inline constexpr UINT EM_SETPASSWORDCHAR = 0x00CC;
inline constexpr UINT EM_EMPTYUNDOBUFFER = 0x00CD;
inline constexpr UINT EM_GETFIRSTVISIBLELINE = 0x00CE;
inline constexpr UINT EM_SETREADONLY = 0x00CF;
inline constexpr UINT EM_GETPASSWORDCHAR = 0x00D2;
inline constexpr UINT EM_GETLIMITTEXT = 0x00D5;

inline constexpr UINT WM_CUT = 0x0300;
inline constexpr UINT WM_COPY = 0x0301;
inline constexpr UINT WM_PASTE = 0x0302;
inline constexpr UINT WM_CLEAR = 0x0303;
inline constexpr UINT WM_UNDO = 0x0304;

inline constexpr UINT EN_SETFOCUS = 0x0100;
inline constexpr UINT EN_KILLFOCUS = 0x0200;
inline constexpr UINT EN_CHANGE = 0x0300;
inline constexpr UINT EN_UPDATE = 0x0400;
inline constexpr UINT EN_MAXTEXT = 0x0501;

// ---- LISTBOX ----

inline constexpr DWORD LBS_NOTIFY = 0x0001;
inline constexpr DWORD LBS_SORT = 0x0002;
inline constexpr DWORD LBS_MULTIPLESEL = 0x0008;
inline constexpr DWORD LBS_HASSTRINGS = 0x0040;
inline constexpr DWORD LBS_NOINTEGRALHEIGHT = 0x0100;
inline constexpr DWORD LBS_EXTENDEDSEL = 0x0800;
inline constexpr DWORD LBS_NOSEL = 0x4000;
inline constexpr DWORD LBS_STANDARD = LBS_NOTIFY | LBS_SORT | WS_VSCROLL | WS_BORDER;

inline constexpr LRESULT LB_OKAY = 0;
inline constexpr LRESULT LB_ERR = -1;
inline constexpr UINT LB_ADDSTRING = 0x0180;
inline constexpr UINT LB_INSERTSTRING = 0x0181;
inline constexpr UINT LB_DELETESTRING = 0x0182;
inline constexpr UINT LB_RESETCONTENT = 0x0184;
inline constexpr UINT LB_SETSEL = 0x0185;
/// wParam: the item, -1 for none; sends no notification.
inline constexpr UINT LB_SETCURSEL = 0x0186;
inline constexpr UINT LB_GETSEL = 0x0187;
inline constexpr UINT LB_GETCURSEL = 0x0188;
/// wParam: the item, lParam: a buffer for LB_GETTEXTLEN bytes and a 0.
inline constexpr UINT LB_GETTEXT = 0x0189;
inline constexpr UINT LB_GETTEXTLEN = 0x018A;
inline constexpr UINT LB_GETCOUNT = 0x018B;
inline constexpr UINT LB_SELECTSTRING = 0x018C;
inline constexpr UINT LB_GETTOPINDEX = 0x018E;
inline constexpr UINT LB_FINDSTRING = 0x018F;
inline constexpr UINT LB_GETSELCOUNT = 0x0190;
inline constexpr UINT LB_GETSELITEMS = 0x0191;
inline constexpr UINT LB_SETTOPINDEX = 0x0197;
inline constexpr UINT LB_GETITEMRECT = 0x0198;
inline constexpr UINT LB_GETITEMDATA = 0x0199;
inline constexpr UINT LB_SETITEMDATA = 0x019A;
inline constexpr UINT LB_FINDSTRINGEXACT = 0x01A2;

inline constexpr UINT LBN_SELCHANGE = 1; ///< all with LBS_NOTIFY
inline constexpr UINT LBN_DBLCLK = 2;
inline constexpr UINT LBN_SETFOCUS = 4;
inline constexpr UINT LBN_KILLFOCUS = 5;

// ---- COMBOBOX ----

// The height asked for is that of the open list: the window itself is as high as its field.
inline constexpr DWORD CBS_SIMPLE = 0x0001; ///< shown as CBS_DROPDOWN
inline constexpr DWORD CBS_DROPDOWN = 0x0002;
inline constexpr DWORD CBS_DROPDOWNLIST = 0x0003;
inline constexpr DWORD CBS_AUTOHSCROLL = 0x0040;
inline constexpr DWORD CBS_SORT = 0x0100;
inline constexpr DWORD CBS_HASSTRINGS = 0x0200;

inline constexpr LRESULT CB_OKAY = 0;
inline constexpr LRESULT CB_ERR = -1;
inline constexpr UINT CB_GETEDITSEL = 0x0140;
inline constexpr UINT CB_LIMITTEXT = 0x0141;
inline constexpr UINT CB_SETEDITSEL = 0x0142;
inline constexpr UINT CB_ADDSTRING = 0x0143;
inline constexpr UINT CB_DELETESTRING = 0x0144;
inline constexpr UINT CB_GETCOUNT = 0x0146;
inline constexpr UINT CB_GETCURSEL = 0x0147;
inline constexpr UINT CB_GETLBTEXT = 0x0148;
inline constexpr UINT CB_GETLBTEXTLEN = 0x0149;
inline constexpr UINT CB_INSERTSTRING = 0x014A;
inline constexpr UINT CB_RESETCONTENT = 0x014B;
inline constexpr UINT CB_FINDSTRING = 0x014C;
inline constexpr UINT CB_SELECTSTRING = 0x014D;
inline constexpr UINT CB_SETCURSEL = 0x014E;
inline constexpr UINT CB_SHOWDROPDOWN = 0x014F;
inline constexpr UINT CB_GETITEMDATA = 0x0150;
inline constexpr UINT CB_SETITEMDATA = 0x0151;
inline constexpr UINT CB_GETDROPPEDSTATE = 0x0157;
inline constexpr UINT CB_FINDSTRINGEXACT = 0x0158;

inline constexpr UINT CBN_SELCHANGE = 1;
inline constexpr UINT CBN_DBLCLK = 2;
inline constexpr UINT CBN_SETFOCUS = 3;
inline constexpr UINT CBN_KILLFOCUS = 4;
inline constexpr UINT CBN_EDITCHANGE = 5;
inline constexpr UINT CBN_DROPDOWN = 7;
inline constexpr UINT CBN_CLOSEUP = 8;
inline constexpr UINT CBN_SELENDOK = 9;

// ---- SCROLLBAR ----

inline constexpr DWORD SBS_HORZ = 0x0000;
inline constexpr DWORD SBS_VERT = 0x0001;

// A scroll bar reports what the user wishes; it moves when the parent says so.
/// wParam: the position, lParam: whether to repaint. @return the position before.
inline constexpr UINT SBM_SETPOS = 0x00E0;
inline constexpr UINT SBM_GETPOS = 0x00E1;
/// wParam, lParam: least and greatest position. @return the position before.
inline constexpr UINT SBM_SETRANGE = 0x00E2;
/// wParam, lParam: where to store them (int*).
inline constexpr UINT SBM_GETRANGE = 0x00E3;
/// wParam: whether to repaint, lParam: the SCROLLINFO. @return the position now.
inline constexpr UINT SBM_SETSCROLLINFO = 0x00E9;
inline constexpr UINT SBM_GETSCROLLINFO = 0x00EA;

inline constexpr UINT SIF_RANGE = 0x0001;
inline constexpr UINT SIF_PAGE = 0x0002;
inline constexpr UINT SIF_POS = 0x0004;
inline constexpr UINT SIF_TRACKPOS = 0x0010;
inline constexpr UINT SIF_ALL = SIF_RANGE | SIF_PAGE | SIF_POS | SIF_TRACKPOS;

struct SCROLLINFO {
    UINT cbSize;
    UINT fMask; ///< SIF_
    int nMin;
    int nMax;
    UINT nPage;
    int nPos;
    int nTrackPos;
};

// ---- trackbar ----

inline constexpr DWORD TBS_AUTOTICKS = 0x0001;
inline constexpr DWORD TBS_HORZ = 0x0000;
inline constexpr DWORD TBS_VERT = 0x0002; ///< the least position is at the top
inline constexpr DWORD TBS_TOP = 0x0004;
inline constexpr DWORD TBS_BOTH = 0x0008;
inline constexpr DWORD TBS_NOTICKS = 0x0010;

// Positions are 32-bit; the range is 0 to 100 at first. None of these sends a notification.
inline constexpr UINT TBM_GETPOS = WM_USER;
inline constexpr UINT TBM_GETRANGEMIN = WM_USER + 1;
inline constexpr UINT TBM_GETRANGEMAX = WM_USER + 2;
/// wParam: whether to repaint, lParam: the position.
inline constexpr UINT TBM_SETPOS = WM_USER + 5;
/// wParam: whether to repaint, lParam: MAKELPARAM(least, greatest), 16 bits each.
inline constexpr UINT TBM_SETRANGE = WM_USER + 6;
inline constexpr UINT TBM_SETRANGEMIN = WM_USER + 7;
inline constexpr UINT TBM_SETRANGEMAX = WM_USER + 8;
inline constexpr UINT TBM_SETTICFREQ = WM_USER + 20;
/// lParam: the size, -1 for a fifth of the range. @return the size before.
inline constexpr UINT TBM_SETPAGESIZE = WM_USER + 21;
inline constexpr UINT TBM_GETPAGESIZE = WM_USER + 22;
inline constexpr UINT TBM_SETLINESIZE = WM_USER + 23;
inline constexpr UINT TBM_GETLINESIZE = WM_USER + 24;

// Codes of WM_HSCROLL and WM_VSCROLL.
inline constexpr int TB_LINEUP = 0;
inline constexpr int TB_LINEDOWN = 1;
inline constexpr int TB_PAGEUP = 2;
inline constexpr int TB_PAGEDOWN = 3;
inline constexpr int TB_THUMBPOSITION = 4;
inline constexpr int TB_THUMBTRACK = 5;
inline constexpr int TB_TOP = 6;
inline constexpr int TB_BOTTOM = 7;
inline constexpr int TB_ENDTRACK = 8;
