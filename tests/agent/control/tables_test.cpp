#include "agent/control/tables.h"

#include "tests/agent/control/fake_controller.h"

#include <gtest/gtest.h>

namespace vantor::agent {
namespace {

TEST(StatusTable, SaysWhatRunsWhereAndWhatIsWrong) {
    EXPECT_EQ(statusTable(fullStatus()),
              R"(vantor-agent 1.2, pid 4711, background, locked, on battery, 50 MiB
extension, pid 4712, 100 MiB, 3 restarts, it was ended by signal 9

DISPLAY  OUTPUT    SIZE              HZ  ENTRY                      MODE     STATE       FPS  FRAMES  PAUSED BY
1        DP-1      3840x2160@1.5  59.94  builtin.smoke (set aside)  locked   active     29.5   12345  asked, battery
2        HDMI-A-1  1920x1080         60  match-desktop              default  suspended   0.0       0

DP-1: "builtin.smoke" ended the extension 5 times.
DP-1: no picture since 3 s
agent.toml:1:11: max_fps is 0, but must be above 0
)");
}

TEST(StatusTable, IsShortWhereThereIsLittleToSay) {
    AgentStatus status;
    status.version = "0.1.0";
    status.pid = 5;
    status.outputKind = "window";
    status.isPaused = true;
    status.memory = (3U << 20U) + (1U << 19U);
    status.extension.restarts = 1;
    EXPECT_EQ(statusTable(status), "vantor-agent 0.1.0, pid 5, window, unlocked, paused, 4 MiB\n"
                                   "extension, not running, 1 restart\n"
                                   "\n"
                                   "no output\n");
}

TEST(PickerTable, HasALineForEachEntryOfTheDesktop) {
    Picker picker = fullPicker();
    PickerItem& item = picker.desktop[0].items.emplace_back();
    item.id = "x";
    item.name = "X";
    item.thumbnail = "file:///x.png";
    EXPECT_EQ(pickerTable(picker), "Engine (engine)\n"
                                   "  plasma  Plasma \"€\"  file:///pictures/a%20b.png\n"
                                   "  x       X           file:///x.png\n");
    EXPECT_EQ(pickerTable({}), "");
}

} // namespace
} // namespace vantor::agent
