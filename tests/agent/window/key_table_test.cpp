#include "agent/output/window/key_table.h"

#include <gtest/gtest.h>

#include <set>

namespace vantor::agent {
namespace {

TEST(KeyTableTest, NoKeyMeansTwoThings) {
    std::set<SDL_Keycode> seen;
    for (const KeyEntry& entry : keyTable()) {
        for (const KeyName& key : entry.keys) {
            EXPECT_TRUE(key.cap.empty() || seen.insert(key.code).second) << key.cap;
        }
    }
}

TEST(KeyTableTest, EveryNamedKeyDoesWhatItsLineSays) {
    for (const KeyEntry& entry : keyTable()) {
        for (const KeyName& key : entry.keys) {
            if (!key.cap.empty()) {
                EXPECT_EQ(actionOf(key.code), entry.action) << key.cap;
            }
        }
    }
}

TEST(KeyTableTest, OtherKeysMeanNothing) {
    EXPECT_EQ(actionOf(SDLK_x), std::nullopt);
    EXPECT_EQ(actionOf(SDLK_UNKNOWN), std::nullopt);
}

} // namespace
} // namespace vantor::agent
