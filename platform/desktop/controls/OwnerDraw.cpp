#include "platform/desktop/controls/OwnerDraw.h"

#include "platform/desktop/GraphicsObject.h"
#include "platform/desktop/WindowTable.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/drawing.h"

namespace kelvo::desktop {

namespace {

UINT NumberOf(HWND window) {
    LockedWindows windows;
    const WindowData* data = windows.Find(window);
    return data == nullptr ? 0 : static_cast<UINT>(data->id);
}

void FillBackground(HWND window, HDC dc, const RECT& area) {
    const WindowView* view = ViewOf(window);
    if (view == nullptr || !view->client) return;
    const QBrush background = view->client->ControlBackground();
    if (background.style() == Qt::NoBrush) return;
    const HBRUSH brush = ::CreateSolidBrush(ColourFrom(background.color().rgb()));
    ::FillRect(dc, &area, brush);
    ::DeleteObject(brush);
}

} // namespace

void SendDrawItem(HWND window, HWND parent, UINT type, UINT state, HDC dc) {
    DRAWITEMSTRUCT item{};
    item.CtlType = type;
    item.CtlID = NumberOf(window);
    item.itemAction = ODA_DRAWENTIRE;
    item.itemState = state;
    if (::IsWindowEnabled(window) == FALSE) item.itemState |= ODS_DISABLED;
    item.hwndItem = window;
    item.hDC = dc;
    ::GetClientRect(window, &item.rcItem);
    FillBackground(window, dc, item.rcItem);
    ::SendMessageA(parent, WM_DRAWITEM, item.CtlID, reinterpret_cast<LPARAM>(&item));
}

void SendMeasureItem(HWND window, HWND parent, UINT type) {
    RECT area{};
    ::GetClientRect(window, &area);
    MEASUREITEMSTRUCT item{};
    item.CtlType = type;
    item.CtlID = NumberOf(window);
    item.itemWidth = static_cast<UINT>(area.right);
    item.itemHeight = static_cast<UINT>(area.bottom);
    ::SendMessageA(parent, WM_MEASUREITEM, item.CtlID, reinterpret_cast<LPARAM>(&item));
}

} // namespace kelvo::desktop
