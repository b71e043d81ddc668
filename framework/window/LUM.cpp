#include "framework/window/LUM.h"

#include "framework/base/CString.h"
#include "framework/base/PendingMessages.h"
#include "framework/window/WindowProcedures.h"
#include "platform/base/message_boxes.h"
#include "platform/desktop/accelerators.h"
#include "platform/desktop/controls.h"
#include "platform/desktop/drawing.h"
#include "platform/desktop/messages.h"

namespace kelvo {
namespace {

constexpr std::uint32_t kKernelClassId = 25030100;
constexpr char kDialogClass[] = "LUMDIALOG";
constexpr UINT kRedrawOnResize = CS_VREDRAW | CS_HREDRAW;

constexpr int kDialogClassRegistered = 1;
constexpr int kBaseClassRegistered = 2;

constexpr char kNamelessClass[] =
    "LUM::RegisterNewClass() - Tentativo di registrare una classe senza nome";
constexpr char kNamelessDialogClass[] =
    "LUM::RegisterNewDialogClass() - Tentativo di registrare una classe senza nome";

constexpr char kTableMissing[] = "Risorsa Accellerator: <%s> non trovata!";

constexpr DWORD kInformationStyle = WS_VISIBLE | WS_DLGFRAME;
constexpr SIZE kInformationSize{300, 100};

constexpr std::array<const char*, LUM::kBitmapCount> kBitmapNames = {
    "lumBtmpPanOn",        "lumBtmpPanOff",        "lumBtmpZoomPlusOn", "lumBtmpZoomPlusOff",
    "lumBtmpZoomMinusOn",  "lumBtmpZoomMinusOff",  "lumBtmpZoomWinOn",  "lumBtmpZoomWinOff",
    "lumBtmpZoomCustomOn", "lumBtmpZoomCustomOff", "lum32Bitmpap"};
constexpr std::array<const char*, LUM::kCursorCount> kCursorNames = {
    "lumCurZoomWin", "lumCurCustom", "lumCurPan", "lumCurBox"};

/// The order of the framework's own colour indices; references are 0x00BBGGRR.
constexpr std::array<COLORREF, 16> kIndexColours = {
    0x000000, 0xFF0000, 0x008000, 0xFFFF00, 0x0000FF, 0xFF0080, 0x004080, 0xC0C0C0,
    0x808080, 0xFF8000, 0x80FF00, 0xFFFF80, 0x7D7D7D, 0xC080FF, 0x00FFFF, 0xFFFFFF};

/// What every class of the framework has in common.
WNDCLASSA ClassOf(HINSTANCE instance, LPCSTR class_name, HBRUSH background, UINT class_style) {
    WNDCLASSA window_class{};
    window_class.style = class_style;
    window_class.hInstance = instance;
    window_class.hbrBackground =
        background != nullptr ? background
                              : reinterpret_cast<HBRUSH>(static_cast<INT_PTR>(COLOR_WINDOW + 1));
    window_class.lpszClassName = class_name;
    return window_class;
}

void PumpForLongWork() {
    lum.ProcessMessages();
}

} // namespace

LUM lum;

LUM::LUM() : CObj(kKernelClassId) {}

LUM::~LUM() {
    // The last one, the general picture, belongs to the module.
    for (std::size_t number = 0; number + 1 < bitmaps_.size(); ++number) {
        if (bitmaps_[number] != nullptr) DeleteObject(bitmaps_[number]);
    }
}

int LUM::StartDefaultKernel(HINSTANCE instance, LPCSTR icon_name) {
    instance_ = instance;
    SetDllIst(instance);
    return RegisterDefaultClasses(icon_name != nullptr ? LoadIconA(instance, icon_name) : nullptr);
}

int LUM::Start(HINSTANCE instance) {
    instance_ = instance;
    return RegisterDefaultClasses(nullptr);
}

void LUM::SetDllIst(HMODULE module) {
    resource_module_ = module;
    LoadDefaults(module);
}

void LUM::LoadDefaults(HMODULE module) {
    for (std::size_t number = 0; number < bitmaps_.size(); ++number) {
        if (bitmaps_[number] != nullptr) DeleteObject(bitmaps_[number]);
        bitmaps_[number] = LoadBitmapA(module, kBitmapNames[number]);
    }
    for (std::size_t number = 0; number < cursors_.size(); ++number) {
        cursors_[number] = LoadCursorA(module, kCursorNames[number]);
    }
}

int LUM::RegisterDefaultClasses(HICON icon) {
    desktop_.SetWindow(GetDesktopWindow());
    desktop_.SetInstance(instance_);
    SetPendingMessagesHook(PumpForLongWork);
    int registered = 0;
    if (RegisterNewDialogClass(instance_, nullptr, kDialogClass, nullptr, kRedrawOnResize) != 0) {
        registered |= kDialogClassRegistered;
    }
    if (RegisterNewClass(instance_, nullptr, kBaseWindowClass, nullptr, kRedrawOnResize, nullptr,
                         icon) != 0) {
        registered |= kBaseClassRegistered;
    }
    return registered;
}

ATOM LUM::RegisterNewClass(HINSTANCE instance, LPCSTR menu_name, LPCSTR class_name,
                           HBRUSH background, UINT class_style, HCURSOR cursor, HICON icon) {
    if (class_name == nullptr) {
        MessageBoxA(nullptr, kNamelessClass, nullptr, MB_OK);
        return 0;
    }
    WNDCLASSA window_class = ClassOf(instance, class_name, background, class_style);
    window_class.lpfnWndProc = CWinWndProc;
    window_class.cbWndExtra = kWindowExtraBytes;
    window_class.hIcon = icon != nullptr ? icon : LoadIconA(nullptr, IDI_APPLICATION);
    window_class.hCursor = cursor != nullptr ? cursor : LoadCursorA(nullptr, IDC_ARROW);
    window_class.lpszMenuName = menu_name;
    return RegisterClassA(&window_class);
}

ATOM LUM::RegisterNewDialogClass(HINSTANCE instance, LPCSTR /*menu_name*/, LPCSTR class_name,
                                 HBRUSH background, UINT class_style) {
    if (class_name == nullptr) {
        MessageBoxA(nullptr, kNamelessDialogClass, nullptr, MB_OK);
        return 0;
    }
    WNDCLASSA window_class = ClassOf(instance, class_name, background, class_style);
    window_class.lpfnWndProc = CDialogWndProc;
    window_class.cbWndExtra = kDialogExtraBytes;
    return RegisterClassA(&window_class);
}

WPARAM LUM::MessageLoop() {
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) != 0) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return message.wParam;
}

WPARAM LUM::AcceleratorLoop(const CWin& window, LPCSTR table_name) {
    const HACCEL table = LoadAcceleratorsA(instance_, table_name);
    if (table == nullptr) ErrorBoxFormat(kTableMissing, table_name);
    MSG message{};
    while (GetMessageA(&message, nullptr, 0, 0) != 0) {
        if (TranslateAcceleratorA(window.Window(), table, &message) != 0) continue;
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return message.wParam;
}

int LUM::ProcessMessages() {
    MSG message{};
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE) != FALSE) {
        TranslateMessage(&message);
        DispatchMessageA(&message);
    }
    return 1;
}

void LUM::ShowInformation(const CString& text) {
    if (IsWindow(information_window_) == FALSE) {
        information_window_ = CreateWindowExA(
            WS_EX_TOPMOST, WC_EDIT, text.Text(), kInformationStyle, CW_USEDEFAULT, CW_USEDEFAULT,
            kInformationSize.cx, kInformationSize.cy, nullptr, nullptr, instance_, nullptr);
        return;
    }
    SetWindowTextA(information_window_, "");
    SetWindowTextA(information_window_, text.Text());
}

void LUM::HideInformation() {
    if (information_window_ != nullptr) DestroyWindow(information_window_);
    information_window_ = nullptr;
}

COLORREF LUM::IndexColor(int index) {
    if (index < 0 || index >= static_cast<int>(kIndexColours.size())) return 0;
    return kIndexColours[static_cast<std::size_t>(index)];
}

} // namespace kelvo
