#include "agent/display.h"

#include "platform/linux/layers/layer_wire.h"
#include "platform/linux/layers/record_socket.h"

#include <gtest/gtest.h>

#include <array>
#include <sys/socket.h>

namespace vantor::agent {
namespace {

using namespace layerwire;

constexpr std::uint32_t kSide = 16;

/// An output in memory whose refreshes a test gives.
class FakeOutput : public Output {
  public:
    FakeOutput() : description_{.connector = "fake-1", .width = kSide, .height = kSide} {}

    const OutputDescription& description() const override { return description_; }
    Visibility visibility() const override { return Visibility::visible; }
    VkSurfaceKHR makeSurface(VkInstance) override { return VK_NULL_HANDLE; }
    bool isInMemory() const override { return true; }
    void requestRefresh() override { isAwaited = true; }
    void willPresent() override {
        isAwaited = true;
        ++presented;
    }

    bool isAwaited = false;
    int presented = 0;

  private:
    OutputDescription description_;
};

class DisplayTest : public testing::Test {
  protected:
    DisplayTest() {
        auto gpu = vulkan::Context::create();
        EXPECT_TRUE(gpu);
        auto made = Display::create(loop, *gpu, output, [this] { ++ticks; });
        EXPECT_TRUE(made);
        display = std::move(*made);
        // What an output in memory shows from the start.
        rest();
        output.presented = 0;
    }

    /// Gives the refreshes that are asked for until none is, or so many.
    void rest(int most = 1000) {
        for (int i = 0; i < most && output.isAwaited; ++i) {
            output.isAwaited = false;
            display->refresh();
            settle();
        }
    }
    /// Lets the loop take what is on its way.
    void settle() {
        loop.asyncAfter(0.002, [this] { loop.stop(0); });
        loop.run();
    }
    /// Gives the display a context; the result is the extension's end of it.
    RecordSocket host() {
        int ends[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
        display->host(FileDescriptor(ends[0]));
        return RecordSocket(FileDescriptor(ends[1]));
    }
    /// A root of one colour, with a Metal layer in it or not.
    static void sendTree(const RecordSocket& context, std::array<float, 4> color, bool metal) {
        TreeRecord tree{};
        tree.header.kind = Kind::tree;
        tree.layerCount = metal ? 2 : 1;
        for (std::uint32_t i = 0; i < tree.layerCount; ++i) {
            LayerState& layer = tree.layers[i];
            layer.layerID = i + 1;
            layer.parent = i == 0 ? kNoParent : 0;
            layer.kind = i == 0 ? LayerKind::plain : LayerKind::metal;
            layer.width = kSide;
            layer.height = kSide;
            layer.contentsScale = 1;
        }
        tree.layers[0].background = color;
        EXPECT_TRUE(context.send(tree));
    }
    /// Blue, green and red of the middle.
    std::array<int, 3> middle() {
        const auto bytes = display->pixels();
        EXPECT_TRUE(bytes);
        const std::size_t at = (kSide / 2 * kSide + kSide / 2) * 4;
        return {(*bytes)[at], (*bytes)[at + 1], (*bytes)[at + 2]};
    }

    MainLoop loop;
    FakeOutput output;
    std::unique_ptr<Display> display;
    int ticks = 0;
};

constexpr std::array<float, 4> kRed{1, 0, 0, 1};
constexpr std::array<float, 4> kGreen{0, 1, 0, 1};

TEST_F(DisplayTest, AsksForNothingWhileNothingChangesAndNoLinkRuns) {
    EXPECT_FALSE(output.isAwaited);
    const auto context = host();
    sendTree(context, kRed, false);
    settle();
    rest();
    EXPECT_EQ(middle(), (std::array<int, 3>{0, 0, 255}));
    EXPECT_FALSE(output.isAwaited);
    EXPECT_EQ(ticks, 0);
}

TEST_F(DisplayTest, TicksOnceARefreshWhileLinksRunAndTheDisplayDoes) {
    display->setLinkRate(60);
    for (int refresh = 0; refresh < 3; ++refresh) {
        ASSERT_TRUE(output.isAwaited);
        output.isAwaited = false;
        display->refresh();
        EXPECT_EQ(ticks, refresh + 1);
        // A refresh comes no sooner than the output's.
        std::this_thread::sleep_for(std::chrono::milliseconds(17));
    }
    display->setRunning(false);
    rest(1);
    EXPECT_FALSE(output.isAwaited);
    const int before = ticks;
    display->setRunning(true);
    rest(1);
    EXPECT_EQ(ticks, before + 1);
    display->setLinkRate(0);
    rest(1);
    EXPECT_FALSE(output.isAwaited);
}

TEST_F(DisplayTest, ARefreshThatComesBeforeTheNextTickIsDueTicksNothingAndAsksForNone) {
    display->setMaxFps(0.5);
    display->setLinkRate(60);
    rest(1);
    EXPECT_EQ(ticks, 1);
    // The next is asked for when it is time.
    EXPECT_FALSE(output.isAwaited);
    display->refresh();
    EXPECT_EQ(ticks, 1);
}

TEST_F(DisplayTest, WhatWasShownStaysUntilTheNextContextHasAWholePicture) {
    auto first = host();
    sendTree(first, kRed, false);
    settle();
    rest();
    const auto second = host();
    // Its Metal layer has shown nothing yet.
    sendTree(second, kGreen, true);
    settle();
    rest();
    EXPECT_EQ(middle(), (std::array<int, 3>{0, 0, 255}));
    sendTree(second, kGreen, false);
    settle();
    rest();
    EXPECT_EQ(middle(), (std::array<int, 3>{0, 255, 0}));
    EXPECT_EQ(display->trouble(), "");
}

TEST_F(DisplayTest, AContextThatEndsIsTroubleUnlessItWasGivenUpAndItsPictureStays) {
    {
        const auto context = host();
        sendTree(context, kRed, false);
        settle();
        rest();
    }
    settle();
    EXPECT_NE(display->trouble(), "");
    EXPECT_EQ(middle(), (std::array<int, 3>{0, 0, 255}));
    {
        const auto context = host();
        sendTree(context, kGreen, false);
        settle();
        rest();
        EXPECT_EQ(display->trouble(), "");
        display->release();
    }
    settle();
    EXPECT_EQ(display->trouble(), "");
}

} // namespace
} // namespace vantor::agent
