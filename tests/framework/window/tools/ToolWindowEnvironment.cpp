// Starts the desktop and the framework, and on the way does what only works, or fails, before.

#include "framework/window/tools/ButtonsMenu.h"
#include "tests/framework/window/tools/ToolWindowFixture.h"

#include <cstdint>

namespace kelvo {

EarlyBoxes& Early() {
    static EarlyBoxes boxes;
    return boxes;
}

namespace {

constexpr WORD kBitmapType = 2;

void Append16(std::vector<std::uint8_t>& bytes, unsigned value) {
    bytes.push_back(static_cast<std::uint8_t>(value));
    bytes.push_back(static_cast<std::uint8_t>(value >> 8U));
}

/// A packed bitmap of 24 bits, from rows from the top down.
std::vector<std::uint8_t> PackedBitmap(const std::vector<std::vector<COLORREF>>& rows) {
    const auto width = static_cast<std::uint32_t>(rows.front().size());
    std::vector<std::uint8_t> bytes;
    desktop::Append32(bytes, 40);
    desktop::Append32(bytes, width);
    desktop::Append32(bytes, static_cast<std::uint32_t>(rows.size()));
    Append16(bytes, 1);
    Append16(bytes, 24);
    for (int field = 0; field < 6; ++field)
        desktop::Append32(bytes, 0);
    for (auto row = rows.rbegin(); row != rows.rend(); ++row) {
        for (const COLORREF colour : *row) {
            bytes.push_back(GetBValue(colour));
            bytes.push_back(GetGValue(colour));
            bytes.push_back(GetRValue(colour));
        }
        while (bytes.size() % 4 != 0)
            bytes.push_back(0);
    }
    return bytes;
}

HMODULE ModuleWithPictures() {
    const std::vector<std::vector<COLORREF>> square(16, std::vector<COLORREF>(16, kSquareColour));
    return desktop::ModuleWith({
        {kBitmapType, "PICTURE", 0, PackedBitmap({{1, 2, 3}, {4, 5, 6}})},
        {kBitmapType, "OTHER", 0, PackedBitmap({{7, 7, 7}, {7, 7, 7}})},
        {kBitmapType, "SQUARE", 0, PackedBitmap(square)},
    });
}

/// Takes a class name, so that nobody else can register it meanwhile.
class TakenClass {
public:
    explicit TakenClass(const char* name) : name_(name) {
        WNDCLASSA values{};
        values.lpfnWndProc = DefWindowProcA;
        values.lpszClassName = name;
        RegisterClassA(&values);
    }
    TakenClass(const TakenClass&) = delete;
    TakenClass& operator=(const TakenClass&) = delete;
    ~TakenClass() { UnregisterClassA(name_, nullptr); }

private:
    const char* name_;
};

class ToolWindowEnvironment : public testing::Environment {
public:
    void SetUp() override {
        setenv("QT_QPA_PLATFORM", "offscreen", 0);
        ASSERT_TRUE(platform::StartDesktop("tool_windows_tests"));
        {
            const TakenClass taken("Lum32LittleToolWin");
            const platform::MessageBoxRecorder boxes;
            const CLittleWin hint;
            Early().hint_class = boxes.Boxes();
        }
        {
            const platform::MessageBoxRecorder boxes;
            const CLittleWin hint;
            Early().hint_before_kernel = boxes.Boxes();
        }
        ASSERT_EQ(lum.StartDefaultKernel(GetModuleHandleA(nullptr), nullptr), 3);
        {
            const TakenClass taken("Lum32BtnmnuToolWin");
            const platform::MessageBoxRecorder boxes;
            ButtonsMenu menu;
            EXPECT_EQ(menu.newModalRun(nullptr), 0);
            Early().menu_class = boxes.Boxes();
        }
        lum.SetDllIst(ModuleWithPictures());
    }
    void TearDown() override { platform::EndDesktop(); }
};

const auto* const kEnvironment = testing::AddGlobalTestEnvironment(new ToolWindowEnvironment);

} // namespace
} // namespace kelvo
