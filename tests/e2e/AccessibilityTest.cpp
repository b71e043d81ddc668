// What a screen reader gets to know of a dialog: windows, controls, their names and contents.

#include "tests/e2e/GalleryVisit.h"
#include "tests/e2e/StageForTests.h"

#include <atspi/atspi.h>
#include <gmock/gmock.h>

#include <cstdlib>
#include <memory>

namespace kelvo::test {
namespace {

using testing::Contains;

template <class T>
using Referenced = std::unique_ptr<T, decltype(&g_object_unref)>;

template <class T>
Referenced<T> Take(T* object) {
    return {object, &g_object_unref};
}

std::string Take(char* text) {
    const std::string taken = text == nullptr ? "" : text;
    g_free(text);
    return taken;
}

/// A session bus of the test's own, from which the toolkit and the test get the bus of assistive
/// programs.
class SessionBus {
public:
    explicit SessionBus(const std::string& home)
        : daemon_({"dbus-daemon", "--session", "--nofork", "--nopidfile", "--print-address=1"},
                  {{"HOME", home}, {"DISPLAY", std::nullopt}}) {
        WaitUntil([this] { return daemon_.Output().ends_with('\n') || !daemon_.IsRunning(); });
        address_ = daemon_.Output().substr(0, daemon_.Output().find('\n'));
    }
    const std::string& Address() const { return address_; }

private:
    ChildProcess daemon_;
    std::string address_;
};

/// "role: name" or "role: name = content" of everything below.
void Describe(AtspiAccessible* object, std::vector<std::string>& lines) {
    if (object == nullptr) return;
    std::string line = Take(atspi_accessible_get_role_name(object, nullptr)) + ": " +
                       Take(atspi_accessible_get_name(object, nullptr));
    if (AtspiText* text = atspi_accessible_get_text_iface(object); text != nullptr) {
        const auto owned = Take(text);
        line += " = " + Take(atspi_text_get_text(text, 0, -1, nullptr));
    }
    lines.push_back(line);
    const int count = atspi_accessible_get_child_count(object, nullptr);
    for (int i = 0; i < count; ++i) {
        const auto child = Take(atspi_accessible_get_child_at_index(object, i, nullptr));
        Describe(child.get(), lines);
    }
}

std::vector<std::string> DescribeProgram(const std::string& name) {
    const auto desktop = Take(atspi_get_desktop(0));
    atspi_accessible_clear_cache(desktop.get());
    std::vector<std::string> lines;
    const int count = atspi_accessible_get_child_count(desktop.get(), nullptr);
    for (int i = 0; i < count; ++i) {
        const auto program = Take(atspi_accessible_get_child_at_index(desktop.get(), i, nullptr));
        if (program && Take(atspi_accessible_get_name(program.get(), nullptr)) == name) {
            Describe(program.get(), lines);
        }
    }
    return lines;
}

TEST_F(OnStage, AccessibilityTreeTellsADialogsControls) {
    const SessionBus bus(TheStage().Home());
    ASSERT_NE(bus.Address(), "");
    setenv("DBUS_SESSION_BUS_ADDRESS", bus.Address().c_str(), 1);
    unsetenv("DISPLAY");
    ASSERT_EQ(atspi_init(), 0);

    GalleryVisit visit(
        TheStage(), "input-box",
        {{"DBUS_SESSION_BUS_ADDRESS", bus.Address()}, {"QT_LINUX_ACCESSIBILITY_ALWAYS_ON", "1"}});
    ASSERT_TRUE(visit.WaitFor("Nuovo nome"));
    std::vector<std::string> lines;
    WaitUntil([&] {
        lines = DescribeProgram("gallery");
        return lines.size() > 5;
    });
    EXPECT_THAT(lines, Contains(testing::EndsWith(": Nuovo nome")));
    EXPECT_THAT(lines, Contains(testing::StartsWith("label: Nome della traccia:")));
    EXPECT_THAT(lines, Contains(testing::MatchesRegex("text: .*= Senza titolo")));
    EXPECT_THAT(lines, Contains("push button: Conferma"));
    EXPECT_THAT(lines, Contains("push button: Lascia com'è"));
    visit.Press("Escape");
    EXPECT_EQ(visit.End(), std::vector<std::string>{"value Senza titolo"});
    atspi_exit();
}

} // namespace
} // namespace kelvo::test
