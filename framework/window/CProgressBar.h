#pragma once
// A small child window that draws a bar and tells its owner where it was clicked.
//
// Two threads update a bar: the UI thread and the thread that plays a film. What they share is
// guarded by one mutex, held while the bar is drawn, so that the newest values are drawn last;
// drawing takes the pixels' own lock and calls nobody back.

#include "framework/window/CWin.h"
#include "framework/window/ProgressBarData.h"

#include <mutex>

namespace kelvo {

/// What the owner's notification handler receives for a click: the position, and 0.
inline constexpr int kPositionClicked = 0x130F;

class CProgressBar : public CWin {
public:
    static constexpr LONG kDefaultWidth = 100;
    static constexpr LONG kDefaultHeight = 10;

    CProgressBar();
    ~CProgressBar() override;
    bool HandleMessage(UINT message, WPARAM wparam, LPARAM lparam) override;

    void SetColours(COLORREF background, COLORREF bar, COLORREF marker);
    void SetBackgroundColour(COLORREF colour);
    void SetBarColour(COLORREF colour);
    void SetMarkerColour(COLORREF colour);
    COLORREF BackgroundColour() const;
    COLORREF BarColour() const;
    COLORREF MarkerColour() const;
    void SetHorizontal(bool horizontal);
    ProgressValues Values() const;

    /// Stores the values and repaints at once, without a message; does nothing while the bar has no
    /// window. Any thread.
    void Update(const ProgressValues& values);
    /// The same for long work on the UI thread, which answers messages meanwhile: those of the bar
    /// and of windows that have nothing to do with its owner. A left click on the owner asks
    /// whether to stop; all else that the owner gets is dropped.
    /// @return 0 when the person chose to stop (the values are then the old ones), else 1
    int UpdateWithAbort(const ProgressValues& values);

private:
    bool IsOnOwnerSide(HWND window) const;
    bool OnPaint();
    bool OnClick(LONG x, LONG y);
    void PaintOn(HDC context);

    mutable std::mutex mutex_;
    ProgressBarData data_;          // under mutex_
    HWND painted_window_ = nullptr; // under mutex_: none before creation and after destruction
    SIZE painted_size_{};           // under mutex_
};

} // namespace kelvo
