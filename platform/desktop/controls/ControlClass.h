#pragma once
// What a control class is made of: a Control stands behind each window of such a class, owns the
// toolkit's widget that fills the window, answers the messages, and reports to the parent. A
// further class derives from Control and is registered with RegisterControlClass. UI thread only.

#include "platform/desktop/controls.h"
#include "platform/desktop/controls/ControlFace.h"

#include <QColor>
#include <QEvent>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <memory>
#include <optional>
#include <string>
#include <utility>

class QKeyEvent;

namespace kelvo::desktop {

/// What CreateWindowExA was asked for.
struct ControlSetup {
    HWND window = nullptr;
    HWND parent = nullptr;
    DWORD style = 0; ///< as asked for, WS_VISIBLE included
    DWORD extended_style = 0;
    HINSTANCE instance = nullptr;
    const char* title = nullptr; ///< a text, or MAKEINTRESOURCE; null: none
    QWidget* host = nullptr;     ///< the window's client area: the parent of the control's widget
};

/// What the parent answered to WM_CTLCOLOR; what is not set is the desktop's own.
struct ControlColours {
    std::optional<QColor> text;
    std::optional<QColor> background;
    bool transparent = false; ///< NULL_BRUSH: the parent shows through
    bool operator==(const ControlColours&) const = default;
};

class Control {
public:
    explicit Control(const ControlSetup& setup);
    virtual ~Control();
    Control(const Control&) = delete;
    Control& operator=(const Control&) = delete;

    /// The class's window procedure.
    LRESULT Answer(UINT message, WPARAM wparam, LPARAM lparam);
    /// GWL_STYLE was set from outside.
    virtual void OnStyleChanged(DWORD /*before*/, DWORD /*now*/) {}

protected:
    /// Makes the control's widget, Painted<W> of one of the toolkit's, and lets it fill the window.
    template <class W, class... Arguments>
    Painted<W>* MakeWidget(Arguments&&... arguments) {
        auto* const made = new Painted<W>(face_, host_, std::forward<Arguments>(arguments)...);
        Adopt(made);
        return made;
    }

    // For the derived class to override.

    /// Messages of the class itself. @return nothing to have the common answer.
    virtual std::optional<LRESULT> Handle(UINT message, WPARAM wparam, LPARAM lparam);
    /// A key on its way to the widget. @return false when the widget shall not see it.
    virtual bool WantsKey(const QKeyEvent& /*event*/) { return true; }
    /// The text has been set by WM_SETTEXT, and is kept with the window; in UTF-8.
    virtual void ShowText(const std::string& /*text*/) {}
    /// Which WM_CTLCOLOR is asked of the parent; 0: none.
    virtual UINT ColourMessage() const { return 0; }
    /// The default sets the palette of the widget and the background behind it.
    virtual void ShowColours(const ControlColours& colours);
    virtual void ShowFont(const QFont& font);
    /// Draws in place of the widget, on the whole surface. @return false: the widget draws.
    virtual bool DrawItself(HDC /*dc*/) { return false; }

    // For the derived class to use.

    HWND Window() const { return window_; }
    HWND Parent() const { return parent_; }
    QWidget* Host() const { return host_; }
    QWidget* Widget() const { return widget_; }
    ControlFace& Face() { return *face_; }
    /// A context for connections: they end with the control, whose widget lives on a while.
    QObject* Connections() { return &connections_; }
    DWORD Style() const;
    UINT Number() const;
    bool HasFocus() const;
    /// WM_COMMAND to the parent. The window may be gone afterwards, `this` lives on until the
    /// message in hand is answered.
    void Notify(UINT code);
    /// The same for another message: sent if a message is in hand, else posted.
    void Report(UINT message, WPARAM wparam);
    /// Lets the parent show through, until ShowColours says otherwise.
    void SeeThrough();
    /// Has the control painted anew, by WM_PAINT.
    void Repaint();
    /// An event that no message brings, such as the key for a character.
    void Give(QEvent& event);
    /// Answers WM_IME_COMPOSITION of a field that is typed in by WM_CHAR: what is unfinished is
    /// shown in the field, what is finished comes as that message.
    void ShowComposition();
    /// Gives back the mouse: what follows a press is somebody else's.
    void EndPress();
    /// Names the widget for assistive programs after the STATIC before it.
    void NameAfterLabel();

private:
    void Adopt(QWidget* widget);
    LRESULT AnswerCommon(UINT message, WPARAM wparam, LPARAM lparam);
    LRESULT Paint();
    void AskColours();
    LRESULT SetFont(HFONT font, bool repaint);
    void GiveMouse(UINT message, WPARAM wparam, LPARAM lparam);
    void GiveKey(UINT message, WPARAM wparam);
    LRESULT GiveWheel(WPARAM wparam, LPARAM lparam);
    QWidget* ReceiverAt(const QPoint& position) const;

    const HWND window_;
    const HWND parent_;
    const QPointer<QWidget> host_;
    const std::shared_ptr<ControlFace> face_;
    QPointer<QWidget> widget_;
    QPointer<QWidget> pressed_; ///< part of the widget that gets what follows a press
    QObject connections_;
    HFONT font_ = nullptr;
    ControlColours colours_;
    int answering_ = 0;
    bool releasing_ = false; ///< gives back the mouse that it took itself
};

using MakeControl = std::unique_ptr<Control> (*)(const ControlSetup& setup);

/// From now on windows of this class are controls; a class that is there already stays as it is.
void RegisterControlClass(const char* name, UINT class_style, MakeControl make);

/// The classes of controls.h.
void RegisterStandardControls();

/// The window procedure of all control classes.
LRESULT ControlProcedure(HWND window, UINT message, WPARAM wparam, LPARAM lparam);

/// The text without the ampersands that mark a letter; "&&" is one ampersand.
QString WithoutPrefix(const QString& text);

/// The picture of a bitmap's handle, empty for none.
QImage PictureOf(HBITMAP bitmap);

} // namespace kelvo::desktop
