#include "platform/desktop/dialogs/TemplatedFileWindow.h"

#include "platform/base/resources.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/WindowViews.h"
#include "platform/desktop/dialogs.h"
#include "platform/desktop/dialogs/DialogOwner.h"
#include "platform/desktop/windows.h"

#include <QLineEdit>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <cstring>
#include <utility>

namespace kelvo::desktop {

namespace {

constexpr char kClassName[] = "KelvoFileDialog";
constexpr char kObjectProperty[] = "TemplatedFileWindow";
constexpr DWORD kStyle = WS_POPUP | WS_CAPTION | WS_SYSMENU | WS_THICKFRAME | WS_CLIPCHILDREN;
constexpr int kButtonFace = 15;

void RegisterWindowClass(WNDPROC procedure) {
    WNDCLASSA window_class{};
    window_class.lpfnWndProc = procedure;
    window_class.hCursor = ::LoadCursorA(nullptr, IDC_ARROW);
    window_class.hbrBackground = reinterpret_cast<HBRUSH>(INT_PTR{kButtonFace + 1});
    window_class.lpszClassName = kClassName;
    ::RegisterClassA(&window_class); // every time but the first it is there already
}

SIZE ClientSizeOf(HWND window) {
    RECT client{};
    ::GetClientRect(window, &client);
    return {client.right, client.bottom};
}

const void* FindTemplate(HINSTANCE module, LPCSTR name) {
    return ::LockResource(::LoadResource(module, ::FindResourceA(module, name, RT_DIALOG)));
}

} // namespace

TemplatedFileWindow::TemplatedFileWindow(OPENFILENAMEA& request,
                                         const FileChooser::Settings& settings)
    : request_(request), settings_(settings) {}

TemplatedFileWindow::~TemplatedFileWindow() {
    delete chooser_.data(); // it calls back; its parent may live a moment longer
    if (const HWND window = std::exchange(window_, nullptr)) ::DestroyWindow(window);
}

// ---- making ----

DWORD TemplatedFileWindow::Create() {
    const void* const dialog_template = FindTemplate(request_.hInstance, request_.lpTemplateName);
    if (dialog_template == nullptr) return CDERR_FINDRESFAILURE;
    if (!CreateWindowFor(settings_.title)) return CDERR_INITIALIZATION;
    CreateChooser(settings_);
    if (!CreateTemplate(dialog_template)) return CDERR_INITIALIZATION;
    TakeMeasures();
    SizeAndPlace();
    return 0;
}

bool TemplatedFileWindow::CreateWindowFor(const QString& title) {
    RegisterWindowClass(&WindowProcedure);
    window_ = ::CreateWindowExA(0, kClassName, title.toUtf8().constData(), kStyle, 0, 0, 0, 0,
                                request_.hwndOwner, nullptr, request_.hInstance, nullptr);
    return window_ != nullptr && ::SetPropA(window_, kObjectProperty, this) != FALSE;
}

bool TemplatedFileWindow::CreateTemplate(const void* dialog_template) {
    dialog_ = ::CreateDialogIndirectParamA(
        request_.hInstance, static_cast<const DLGTEMPLATE*>(dialog_template), window_,
        &TemplateProcedure, reinterpret_cast<LPARAM>(this));
    return dialog_ != nullptr;
}

void TemplatedFileWindow::CreateChooser(const FileChooser::Settings& settings) {
    chooser_ = new FileChooser(settings);
    if (settings.title.isEmpty()) {
        ::SetWindowTextA(window_, chooser_->windowTitle().toUtf8().constData());
    }
    chooser_->setSizeGripEnabled(false);
    chooser_->setParent(WidgetOf(window_), Qt::Widget);
    QObject::connect(chooser_, &QDialog::finished, &loop_,
                     [this](int result) { End(result == QDialog::Accepted); });
    chooser_->on_selected = [this] { Notify(CDN_SELCHANGE); };
    chooser_->on_folder_entered = [this] { Notify(CDN_FOLDERCHANGE); };
    chooser_->may_accept = [this] { return Notify(CDN_FILEOK) == 0; };
}

// Without a placeholder all of the template lies below the standard part.
void TemplatedFileWindow::TakeMeasures() {
    template_size_ = ClientSizeOf(dialog_);
    placeholder_end_ = {template_size_.cx, 0};
    const HWND placeholder = ::GetDlgItem(dialog_, stc32);
    RECT rect{};
    if (placeholder == nullptr || ::GetWindowRect(placeholder, &rect) == FALSE) return;
    POINT end{rect.right, rect.bottom};
    ::ScreenToClient(dialog_, &end);
    placeholder_end_ = {end.x, end.y};
    ::ShowWindow(placeholder, SW_HIDE);
}

// As large as the standard part likes to be, unless the screen is too small for that.
void TemplatedFileWindow::SizeAndPlace() {
    const QSize least =
        chooser_->minimumSizeHint().expandedTo(QSize(placeholder_end_.cx, placeholder_end_.cy));
    const QSize extra(std::max<LONG>(template_size_.cx - placeholder_end_.cx, 0),
                      std::max<LONG>(template_size_.cy - placeholder_end_.cy, 0));
    const QRect screen = FrameOf(window_)->screen()->availableGeometry();
    RECT edges{0, 0, 0, 0};
    ::AdjustWindowRectEx(&edges, kStyle, FALSE, 0);
    const QSize frame(edges.right - edges.left, edges.bottom - edges.top);
    const QSize standard =
        chooser_->sizeHint().boundedTo(screen.size() - extra - frame).expandedTo(least);
    const QSize size = standard + extra + frame;
    ::SetWindowPos(window_, nullptr, screen.x() + std::max((screen.width() - size.width()) / 2, 0),
                   screen.y() + std::max((screen.height() - size.height()) / 2, 0), size.width(),
                   size.height(), SWP_NOZORDER);
    LayOut();
}

// The template's part keeps its size at the right edge; the standard part takes the rest and lies
// over the placeholder.
void TemplatedFileWindow::LayOut() {
    if (dialog_ == nullptr || !chooser_) return;
    const SIZE client = ClientSizeOf(window_);
    const LONG width =
        std::max<LONG>(client.cx - std::max<LONG>(template_size_.cx - placeholder_end_.cx, 0), 0);
    const LONG height =
        std::max<LONG>(client.cy - std::max<LONG>(template_size_.cy - placeholder_end_.cy, 0), 0);
    ::SetWindowPos(dialog_, nullptr, width - placeholder_end_.cx, 0, template_size_.cx, client.cy,
                   SWP_NOZORDER);
    chooser_->setGeometry(0, 0, width, height);
    chooser_->raise();
}

// ---- running ----

bool TemplatedFileWindow::Run() {
    FrameWidget* const frame = FrameOf(window_);
    MakeModalFor(*frame, request_.hwndOwner);
    ::ShowWindow(dialog_, SW_SHOW);
    chooser_->show();
    ::ShowWindow(window_, SW_SHOW);
    LayOut();
    frame->activateWindow();
    if (auto* const edit = chooser_->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))) {
        edit->setFocus();
    }
    Notify(CDN_INITDONE);
    if (!chooser_->Selected().empty()) Notify(CDN_SELCHANGE);
    loop_.exec();
    return chosen_;
}

void TemplatedFileWindow::End(bool chosen) {
    chosen_ = chosen;
    loop_.quit();
}

// ---- messages ----

LRESULT TemplatedFileWindow::WindowProcedure(HWND window, UINT message, WPARAM wparam,
                                             LPARAM lparam) {
    auto* const object = static_cast<TemplatedFileWindow*>(::GetPropA(window, kObjectProperty));
    if (object == nullptr || object->window_ != window) {
        return ::DefWindowProcA(window, message, wparam, lparam);
    }
    return object->OnMessage(message, wparam, lparam);
}

LRESULT TemplatedFileWindow::OnMessage(UINT message, WPARAM wparam, LPARAM lparam) {
    switch (message) {
    case WM_SIZE:
        LayOut();
        return 0;
    case WM_CLOSE:
        if (chooser_) chooser_->reject();
        return 0;
    case WM_DESTROY: // by somebody else, with the owner
        window_ = dialog_ = nullptr;
        End(false);
        return 0;
    case CDM_GETFILEPATH:
        return OnGetFilePath(wparam, lparam);
    default:
        return ::DefWindowProcA(window_, message, wparam, lparam);
    }
}

LRESULT TemplatedFileWindow::OnGetFilePath(WPARAM capacity, LPARAM buffer) const {
    const std::string path = chooser_ ? chooser_->Selected() : std::string();
    if (path.empty()) return -1;
    auto* const text = reinterpret_cast<char*>(buffer);
    if (text != nullptr && capacity > 0) {
        const std::size_t length = std::min(path.size(), capacity - 1);
        std::memcpy(text, path.data(), length);
        text[length] = '\0';
    }
    return static_cast<LRESULT>(path.size() + 1);
}

INT_PTR TemplatedFileWindow::TemplateProcedure(HWND dialog, UINT message, WPARAM wparam,
                                               LPARAM lparam) {
    if (message == WM_INITDIALOG) {
        auto* const object = reinterpret_cast<TemplatedFileWindow*>(lparam);
        object->dialog_ = dialog;
        ::SetPropA(dialog, kObjectProperty, object);
        lparam = reinterpret_cast<LPARAM>(&object->request_);
    }
    const auto* const object =
        static_cast<TemplatedFileWindow*>(::GetPropA(dialog, kObjectProperty));
    if (object == nullptr || (object->request_.Flags & OFN_ENABLEHOOK) == 0) return FALSE;
    return static_cast<INT_PTR>(object->request_.lpfnHook(dialog, message, wparam, lparam));
}

UINT_PTR TemplatedFileWindow::Notify(UINT code) {
    if (dialog_ == nullptr || (request_.Flags & OFN_ENABLEHOOK) == 0) return 0;
    OFNOTIFYA report{};
    report.hdr.hwndFrom = window_;
    report.hdr.code = code;
    report.lpOFN = &request_;
    return request_.lpfnHook(dialog_, WM_NOTIFY, 0, reinterpret_cast<LPARAM>(&report));
}

} // namespace kelvo::desktop
