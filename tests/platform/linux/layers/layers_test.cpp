// The whole road of a layer tree, from the extension's side to the host's composited picture, over
// a real GPU and a real socket.

#include "agent/host/compositor.h"
#include "agent/host/hosted_context.h"
#include "agent/host/memory_canvas.h"
#include "platform/linux/layers/layer_wire.h"
#include "platform/linux/layers/linux_layers.h"
#include "platform/linux/system/linux_images.h"
#include "tests/support/losable_gpu.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <semaphore>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace vantor {
namespace {

class LayersTest : public testing::Test {
  protected:
    static constexpr std::uint32_t kWidth = 32;
    static constexpr std::uint32_t kHeight = 16;

    static void SetUpTestSuite() {
        auto made = vulkan::VulkanDevice::create();
        ASSERT_TRUE(made) << made.error();
        device = std::move(*made);
        queue = device->newCommandQueue();
        auto context = vulkan::Context::create();
        ASSERT_TRUE(context) << context.error();
        hostGPU = std::move(*context);
    }
    static void TearDownTestSuite() {
        queue.reset();
        device.reset();
        hostGPU.reset();
    }

    LayersTest() {
        root = layers.makeLayer();
        root->setFrame({.origin = {}, .size = {.width = kWidth, .height = kHeight}});
        root->setBackgroundColor(Color::gray(0, 1));
        context = layers.remoteContextClass().perform("remoteContextWithOptions:", {});
        context->perform("setLayer:", root);
        contextID = static_cast<std::uint32_t>(*context->valueForKey("contextId")->integer());
    }

    std::shared_ptr<MetalLayer> addMetalLayer() {
        auto metal = layers.makeMetalLayer();
        metal->setDevice(device);
        metal->setPixelFormat(gpu::PixelFormat::bgra8Unorm);
        metal->setFrame(root->frame());
        metal->setDrawableSize({.width = kWidth, .height = kHeight});
        root->addSublayer(metal);
        return metal;
    }

    /// Fills the layer's next drawable with a colour and presents it. False without a drawable.
    static bool present(MetalLayer& layer, double red, double green, double blue,
                        gpu::CommandQueue& on = *queue) {
        gpu::DrawableRef drawable = layer.nextDrawable();
        gpu::CommandBuffer* const commands = drawable ? on.commandBuffer() : nullptr;
        if (commands == nullptr) {
            return false;
        }
        commands
            ->renderCommandEncoder(
                {.texture = &drawable->texture(),
                 .clearColor = {.red = red, .green = green, .blue = blue, .alpha = 1}})
            ->endEncoding();
        commands->presentDrawable(std::move(drawable));
        commands->commit();
        return true;
    }

    /// Runs the loop for a moment: long enough for a tiny frame to be drawn and announced.
    void settle(double seconds = 0.05) {
        loop.asyncAfter(seconds, [this] { loop.stop(0); });
        loop.run();
    }

    std::unique_ptr<agent::HostedContext> host() {
        auto socket = layers.attach(contextID);
        EXPECT_TRUE(socket);
        return std::make_unique<agent::HostedContext>(
            loop, hostGPU, std::move(*socket),
            agent::ContextHandlers{.frameArrived = [this] { ++frames; },
                                   .changed = [this] { ++changes; },
                                   .ended = [this](const std::string& why) { ended = why; }});
    }

    /// The composited picture.
    std::vector<std::uint8_t> picture(const agent::HostedContext& hosted, double scale = 1) {
        auto compositor = agent::Compositor::create(hostGPU);
        auto canvas = agent::MemoryCanvas::create(hostGPU, kWidth, kHeight);
        EXPECT_TRUE(compositor->compose(*canvas->begin(), {.context = &hosted, .scale = scale}));
        std::vector<std::uint8_t> bytes(std::size_t{kWidth} * kHeight * 4);
        EXPECT_TRUE(canvas->read(bytes));
        return bytes;
    }
    /// Its pixel as red, green, blue.
    std::vector<int> pixel(const agent::HostedContext& hosted, std::size_t x, std::size_t y,
                           double scale = 1) {
        const std::vector<std::uint8_t> bytes = picture(hosted, scale);
        const std::uint8_t* p = bytes.data() + (y * kWidth + x) * 4;
        return {p[2], p[1], p[0]};
    }

    static std::shared_ptr<vulkan::VulkanDevice> device;
    static std::shared_ptr<gpu::CommandQueue> queue;
    static std::shared_ptr<vulkan::Context> hostGPU;
    MainLoop loop;
    LinuxLayers layers{loop};
    LayerRef root;
    ObjectRef context;
    std::uint32_t contextID = 0;
    int changes = 0;
    int frames = 0;
    std::string ended;
};

std::shared_ptr<vulkan::VulkanDevice> LayersTest::device;
std::shared_ptr<gpu::CommandQueue> LayersTest::queue;
std::shared_ptr<vulkan::Context> LayersTest::hostGPU;

TEST_F(LayersTest, ContextsHaveNumbersOfTheirOwnThatAreNeverZero) {
    const auto other = layers.remoteContextClass().perform("remoteContextWithOptions:", {});
    EXPECT_NE(contextID, 0U);
    EXPECT_NE(*other->valueForKey("contextId")->integer(), contextID);
    EXPECT_EQ(other->valueForKey("layer"), std::nullopt);
    EXPECT_EQ(layers.remoteContextClass().perform("localContext", {}), nullptr);
    EXPECT_FALSE(other->perform("unknown", nullptr));
}

TEST_F(LayersTest, AFrameThatWasDrawnBeforeAnyoneLookedIsShownToTheHostThatComes) {
    const auto metal = addMetalLayer();
    ASSERT_TRUE(present(*metal, 1, 0.5, 0));
    settle();
    const auto hosted = host();
    settle();
    EXPECT_EQ(frames, 1);
    EXPECT_EQ(pixel(*hosted, 0, 0), (std::vector<int>{255, 128, 0}));
    EXPECT_EQ(pixel(*hosted, kWidth - 1, kHeight - 1), (std::vector<int>{255, 128, 0}));
}

TEST_F(LayersTest, FramesFollowEachOtherThroughTwoDrawables) {
    const auto metal = addMetalLayer();
    const auto hosted = host();
    for (int i = 1; i <= 6; ++i) {
        ASSERT_TRUE(present(*metal, i / 255.0, 0, 0)) << i;
        settle();
        EXPECT_EQ(frames, i);
        EXPECT_EQ(pixel(*hosted, 3, 3)[0], i);
        hosted->releaseReplaced();
        settle(0.01);
    }
}

TEST_F(LayersTest, ThereIsNoThirdDrawableWhileTheHostHoldsOneAndTheGPUTheOther) {
    const auto metal = addMetalLayer();
    const auto hosted = host();
    ASSERT_TRUE(present(*metal, 1, 0, 0));
    settle();
    ASSERT_TRUE(present(*metal, 0, 1, 0));
    settle();
    // The host has not given the first frame back.
    EXPECT_TRUE(hosted->hasReplaced());
    EXPECT_FALSE(present(*metal, 0, 0, 1));
    hosted->releaseReplaced();
    settle();
    EXPECT_TRUE(present(*metal, 0, 0, 1));
}

TEST_F(LayersTest, ADrawableThatComesBackWithATickIsThereForIt) {
    const auto metal = addMetalLayer();
    const auto hosted = host();
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends), 0);
    const FileDescriptor ticks(ends[0]);
    const FileDescriptor ticker(ends[1]);
    int drawn = 0;
    // As urgent as the socket that ticks come from.
    const auto watch = loop.watch(ticks.get(), EPOLLIN, [&](std::uint32_t) {
        char byte = 0;
        EXPECT_EQ(read(ticks.get(), &byte, 1), 1);
        drawn += present(*metal, 1, 0, 0) ? 1 : 0;
    });
    watch->setUrgency(Urgency::urgent);
    ASSERT_TRUE(present(*metal, 1, 0, 0));
    settle();
    ASSERT_TRUE(present(*metal, 0, 1, 0));
    settle();
    for (int i = 1; i <= 10; ++i) {
        ASSERT_TRUE(hosted->hasReplaced());
        ASSERT_FALSE(present(*metal, 0, 0, 1));
        // Both wait when the loop turns.
        hosted->releaseReplaced();
        ASSERT_EQ(write(ticker.get(), "t", 1), 1);
        settle();
        EXPECT_EQ(drawn, i);
    }
}

TEST_F(LayersTest, ADrawableThatIsDroppedCanBeTakenAgain) {
    const auto metal = addMetalLayer();
    for (int i = 0; i < 5; ++i) {
        const gpu::DrawableRef one = metal->nextDrawable();
        const gpu::DrawableRef other = metal->nextDrawable();
        EXPECT_NE(one, nullptr);
        EXPECT_NE(other, nullptr);
        EXPECT_EQ(metal->nextDrawable(), nullptr);
    }
}

TEST_F(LayersTest, AHostThatDiesGivesEverythingBack) {
    const auto metal = addMetalLayer();
    auto hosted = host();
    ASSERT_TRUE(present(*metal, 1, 0, 0));
    settle();
    ASSERT_TRUE(present(*metal, 0, 1, 0));
    settle();
    ASSERT_FALSE(present(*metal, 0, 0, 1));
    hosted.reset();
    settle();
    EXPECT_TRUE(present(*metal, 0, 0, 1));
}

TEST_F(LayersTest, TwoHostsSeeTheSameFrame) {
    const auto metal = addMetalLayer();
    const auto one = host();
    const auto other = host();
    ASSERT_TRUE(present(*metal, 0, 0, 1));
    settle();
    EXPECT_EQ(pixel(*one, 5, 5), (std::vector<int>{0, 0, 255}));
    EXPECT_EQ(pixel(*other, 5, 5), (std::vector<int>{0, 0, 255}));
}

TEST_F(LayersTest, HostsComeAndGoWithoutTheOthersNoticing) {
    const auto metal = addMetalLayer();
    const auto staying = host();
    settle(0.01);
    for (int i = 1; i <= 8; ++i) {
        auto passing = host();
        ASSERT_TRUE(present(*metal, 0, i / 255.0, 0)) << i;
        settle();
        EXPECT_EQ(pixel(*passing, 4, 4), (std::vector<int>{0, i, 0}));
        EXPECT_EQ(pixel(*staying, 4, 4), (std::vector<int>{0, i, 0}));
        staying->releaseReplaced();
        // Gone with the frame in its hands.
        passing.reset();
        settle(0.01);
    }
    EXPECT_EQ(ended, "");
}

TEST_F(LayersTest, AContextThatIsReleasedWhileHostedLeavesItsLastPicture) {
    const auto metal = addMetalLayer();
    const auto hosted = host();
    ASSERT_TRUE(present(*metal, 1, 0.5, 0));
    settle();
    context.reset();
    settle();
    EXPECT_EQ(ended, "the other process closed the socket");
    EXPECT_EQ(pixel(*hosted, 1, 1), (std::vector<int>{255, 128, 0}));
    // What the host held is free again.
    EXPECT_TRUE(present(*metal, 0, 0, 1));
}

TEST_F(LayersTest, AResizeWhileFramesAreOutTakesEffectWithTheNextDrawable) {
    const auto metal = addMetalLayer();
    const auto hosted = host();
    ASSERT_TRUE(present(*metal, 1, 0, 0));
    settle();
    metal->setDrawableSize({.width = kWidth / 2.0, .height = kHeight / 2.0});
    {
        const gpu::DrawableRef next = metal->nextDrawable();
        ASSERT_NE(next, nullptr);
        EXPECT_EQ(next->texture().width(), kWidth / 2);
        EXPECT_EQ(next->texture().height(), kHeight / 2);
    }
    ASSERT_TRUE(present(*metal, 0, 1, 0));
    settle();
    // The layer is still of the old size: its smaller frame is stretched over it.
    EXPECT_EQ(pixel(*hosted, kWidth - 1, kHeight - 1), (std::vector<int>{0, 255, 0}));
    hosted->releaseReplaced();
    settle();
    ASSERT_TRUE(present(*metal, 0, 0, 1));
    settle();
    EXPECT_EQ(pixel(*hosted, 0, 0), (std::vector<int>{0, 0, 255}));
    EXPECT_EQ(ended, "");
}

TEST_F(LayersTest, ALayerWithoutPixelsHasNoDrawable) {
    const auto metal = addMetalLayer();
    for (const Size& size : {Size{.width = 0, .height = 9}, Size{.width = 9, .height = -1},
                             Size{.width = 0.5, .height = 9}, Size{.width = 1e9, .height = 1}}) {
        metal->setDrawableSize(size);
        EXPECT_EQ(metal->nextDrawable(), nullptr) << size.width << " x " << size.height;
    }
}

TEST_F(LayersTest, ALayerThatGoesWhileItsFrameIsDrawnIsNotShown) {
    auto metal = addMetalLayer();
    const auto hosted = host();
    ASSERT_TRUE(present(*metal, 1, 0, 0));
    metal->removeFromSuperlayer();
    metal.reset();
    settle();
    EXPECT_EQ(pixel(*hosted, 1, 1), (std::vector<int>{0, 0, 0}));
}

TEST_F(LayersTest, BackgroundsLieWhereTheirLayersAre) {
    const auto hosted = host();
    const LayerRef patch = layers.makeLayer();
    patch->setFrame({.origin = {.x = 4, .y = 2}, .size = {.width = 8, .height = 4}});
    patch->setBackgroundColor(Color{.red = 0, .green = 1, .blue = 0, .alpha = 1});
    root->addSublayer(patch);
    root->setBackgroundColor(Color::gray(0.2, 1));
    layers.flush();
    settle();
    EXPECT_EQ(pixel(*hosted, 3, 2), (std::vector<int>{51, 51, 51}));
    EXPECT_EQ(pixel(*hosted, 4, 2), (std::vector<int>{0, 255, 0}));
    EXPECT_EQ(pixel(*hosted, 11, 5), (std::vector<int>{0, 255, 0}));
    EXPECT_EQ(pixel(*hosted, 12, 5), (std::vector<int>{51, 51, 51}));
    // Twice the pixels per point.
    EXPECT_EQ(pixel(*hosted, 8, 4, 2), (std::vector<int>{0, 255, 0}));
    EXPECT_EQ(pixel(*hosted, 7, 4, 2), (std::vector<int>{51, 51, 51}));
}

TEST_F(LayersTest, AStillFillsItsLayerKeepingItsAspectAndIsMasked) {
    // Twice as tall as the layer's aspect: the upper and lower quarters are cut off.
    constexpr std::size_t kSide = 32;
    std::vector<std::uint8_t> bytes(kSide * kSide * 4, 255);
    for (std::size_t y = 0; y < kSide; ++y) {
        for (std::size_t x = 0; x < kSide; ++x) {
            std::uint8_t* p = bytes.data() + (y * kSide + x) * 4;
            p[0] = 0;
            p[1] = y < kSide / 4 || y >= kSide * 3 / 4 ? 255 : 0;
            p[2] = y < kSide / 2 ? 255 : 0;
        }
    }
    const LayerRef still = layers.makeLayer();
    still->setFrame(root->frame());
    still->setContents(std::make_shared<LinuxImage>(kSide, kSide, bytes));
    still->setContentsGravity(ContentsGravity::resizeAspectFill);
    still->setMasksToBounds(true);
    root->addSublayer(still);
    const auto hosted = host();
    settle();
    EXPECT_EQ(pixel(*hosted, 9, 2), (std::vector<int>{255, 0, 0}));
    EXPECT_EQ(pixel(*hosted, 9, 13), (std::vector<int>{0, 0, 0}));
}

TEST_F(LayersTest, AnOpenTransactionIsNotSent) {
    const auto hosted = host();
    settle();
    changes = 0;
    layers.begin();
    root->setBackgroundColor(Color::gray(1, 1));
    layers.flush();
    settle();
    EXPECT_EQ(changes, 0);
    layers.commit();
    settle();
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(pixel(*hosted, 0, 0), (std::vector<int>{255, 255, 255}));
}

TEST_F(LayersTest, AnInvalidatedContextEndsItsHostsAndCannotBeAttached) {
    const auto hosted = host();
    settle();
    context->perform("invalidate", nullptr);
    settle();
    EXPECT_EQ(ended, "the other process closed the socket");
    EXPECT_EQ(layers.attach(contextID), std::nullopt);
    EXPECT_EQ(layers.attach(0), std::nullopt);
}

class MemoryLayersTest : public LayersTest {
  protected:
    MemoryLayersTest() {
        auto library = device->newLibrary(
            "#include <metal_stdlib>\nusing namespace metal;\n"
            "struct VOut { float4 position [[position]]; };\n"
            "vertex VOut v_main(uint vid [[vertex_id]]) {\n"
            "    float2 p = float2((vid << 1) & 2, vid & 2);\n"
            "    return VOut{float4(p * 2.0 - 1.0, 0.0, 1.0)};\n}\n"
            "fragment float4 f_main(VOut in [[stage_in]], constant float& t [[buffer(0)]]) {\n"
            "    return float4(in.position.x / 32.0, in.position.y / 16.0, t, 1.0);\n}\n");
        EXPECT_TRUE(library) << library.error().message;
        auto made = device->newRenderPipelineState(
            {.vertexFunction = library.value()->newFunction("v_main"),
             .fragmentFunction = library.value()->newFunction("f_main")});
        EXPECT_TRUE(made) << made.error().message;
        gradient = *std::move(made);
    }

    bool presentGradient(MetalLayer& layer, float blue, gpu::CommandQueue& on = *queue) {
        gpu::DrawableRef drawable = layer.nextDrawable();
        if (!drawable) {
            return false;
        }
        gpu::CommandBuffer* const commands = on.commandBuffer();
        auto* const encoder = commands->renderCommandEncoder({.texture = &drawable->texture()});
        encoder->setRenderPipelineState(gradient);
        std::array<std::uint8_t, sizeof(blue)> bytes{};
        std::memcpy(bytes.data(), &blue, sizeof(blue));
        encoder->setFragmentBytes(bytes, 0);
        encoder->drawPrimitives(gpu::PrimitiveType::triangle, 0, 3);
        encoder->endEncoding();
        commands->presentDrawable(std::move(drawable));
        commands->commit();
        return true;
    }

    /// A host to which every frame goes through memory.
    std::unique_ptr<agent::HostedContext> memoryHost() {
        setenv("VANTOR_FORCE_SHM", "1", 1);
        auto hosted = host();
        unsetenv("VANTOR_FORCE_SHM");
        return hosted;
    }

    std::shared_ptr<gpu::RenderPipelineState> gradient;
};

TEST_F(MemoryLayersTest, FramesThroughMemoryShowTheSamePictures) {
    const auto metal = addMetalLayer();
    const auto direct = host();
    const auto memory = memoryHost();
    settle();
    for (int i = 1; i <= 6; ++i) {
        ASSERT_TRUE(presentGradient(*metal, static_cast<float>(i) / 255.0F)) << i;
        settle();
        EXPECT_EQ(picture(*memory), picture(*direct)) << i;
        EXPECT_EQ(pixel(*memory, 31, 0), (std::vector<int>{251, 8, i}));
        EXPECT_EQ(pixel(*memory, 0, 15), (std::vector<int>{4, 247, i}));
        direct->releaseReplaced();
        memory->releaseReplaced();
        settle(0.01);
    }
    EXPECT_EQ(ended, "");
}

TEST_F(MemoryLayersTest, AFrameThatWasDrawnBeforeReachesAHostThatComesLater) {
    const auto metal = addMetalLayer();
    ASSERT_TRUE(presentGradient(*metal, 1));
    settle();
    const auto memory = memoryHost();
    settle();
    EXPECT_EQ(pixel(*memory, 31, 0), (std::vector<int>{251, 8, 255}));
    // A second one finds the copy that was made for the first.
    const auto other = memoryHost();
    settle();
    EXPECT_EQ(picture(*other), picture(*memory));
}

TEST_F(MemoryLayersTest, AResizeWhileACopyIsUnderWayTakesEffectWithTheNextFrame) {
    const auto metal = addMetalLayer();
    const auto memory = memoryHost();
    settle();
    ASSERT_TRUE(presentGradient(*metal, 0));
    // The frame may be drawn, copied or announced when the size changes.
    loop.turn();
    metal->setDrawableSize({.width = kWidth / 2.0, .height = kHeight / 2.0});
    for (int i = 0; i < 4; ++i) {
        ASSERT_TRUE(presentGradient(*metal, 1)) << i;
        settle();
        memory->releaseReplaced();
        settle(0.01);
    }
    // The smaller frame is stretched over the layer.
    EXPECT_EQ(pixel(*memory, 5, 5)[2], 255);
    EXPECT_EQ(ended, "");
}

TEST_F(MemoryLayersTest, AHostThatDiesDuringACopyGivesEverythingBack) {
    const auto metal = addMetalLayer();
    for (int i = 0; i < 5; ++i) {
        auto memory = memoryHost();
        settle(0.01);
        ASSERT_TRUE(presentGradient(*metal, 0)) << i;
        loop.turn();
        memory.reset();
        settle(0.02);
    }
}

/// A GPU that seems to spend on each piece of work what the test says, and that finishes nothing
/// while the test holds it.
class SlowGPU {
  public:
    SlowGPU() {
        now = 0;
        perPiece = 0;
    }

    static vulkan::DeviceOptions options() {
        vulkan::DeviceOptions options;
        options.clock = [] { return now.load(); };
        options.calls.wait = wait;
        return options;
    }

    void spend(double seconds) { perPiece = seconds; }
    void hold() { gate.acquire(); }
    void letGo() { gate.release(); }

  private:
    static inline std::atomic<double> now = 0;
    static inline std::atomic<double> perPiece = 0;
    static inline std::binary_semaphore gate{1};

    static VkResult wait(VkDevice device, const VkSemaphoreWaitInfo* info, std::uint64_t timeout) {
        gate.acquire();
        gate.release();
        now = now + perPiece;
        return vkWaitSemaphores(device, info, timeout);
    }
};

class SlowLayersTest : public MemoryLayersTest {
  protected:
    SlowLayersTest() {
        auto made = vulkan::VulkanDevice::create(SlowGPU::options());
        EXPECT_TRUE(made) << made.error();
        ownDevice = *std::move(made);
        ownQueue = ownDevice->newCommandQueue();
        slow = std::dynamic_pointer_cast<LinuxMetalLayer>(addMetalLayer());
        slow->setDevice(ownDevice);
    }

    std::uint64_t submissions() const { return ownDevice->parts()->context->lastPoint(); }

    SlowGPU gpu;
    std::shared_ptr<vulkan::VulkanDevice> ownDevice;
    std::shared_ptr<gpu::CommandQueue> ownQueue;
    std::shared_ptr<LinuxMetalLayer> slow;
};

TEST_F(SlowLayersTest, AFrameOfMoreThanTwoSecondsMarksItsLayerAsSlow) {
    gpu.spend(2.0);
    ASSERT_TRUE(present(*slow, 1, 0, 0, *ownQueue));
    settle();
    EXPECT_FALSE(slow->isSlow());
    gpu.spend(2.5);
    ASSERT_TRUE(present(*slow, 1, 0, 0, *ownQueue));
    settle();
    EXPECT_TRUE(slow->isSlow());
}

TEST_F(SlowLayersTest, ASlowLayerIsDrawnInBandsThatMakeTheSamePicture) {
    const auto hosted = host();
    gpu.spend(3);
    ASSERT_TRUE(presentGradient(*slow, 0.5F, *ownQueue));
    settle();
    const auto whole = picture(*hosted);
    hosted->releaseReplaced();
    const std::uint64_t before = submissions();
    ASSERT_TRUE(presentGradient(*slow, 0.5F, *ownQueue));
    settle(0.2);
    // No more bands than rows.
    EXPECT_EQ(submissions() - before, kHeight);
    EXPECT_EQ(frames, 2);
    EXPECT_EQ(picture(*hosted), whole);
    EXPECT_TRUE(slow->isSlow());
}

TEST_F(SlowLayersTest, OthersComeInBetweenTheBands) {
    const auto other = addMetalLayer();
    other->setDevice(ownDevice);
    gpu.spend(3);
    ASSERT_TRUE(present(*slow, 1, 0, 0, *ownQueue));
    settle();
    gpu.spend(0);
    const std::uint64_t before = submissions();
    gpu.hold();
    ASSERT_TRUE(present(*slow, 1, 0, 0, *ownQueue));
    EXPECT_EQ(slow->nextDrawable(), nullptr);
    ASSERT_TRUE(present(*other, 0, 1, 0, *ownQueue));
    // One band, and then already the other's frame.
    EXPECT_EQ(submissions() - before, 2U);
    gpu.letGo();
    settle(0.2);
    EXPECT_EQ(submissions() - before, kHeight + 1U);
}

TEST_F(SlowLayersTest, ALayerThatIsFastAgainIsDrawnAsAWhole) {
    gpu.spend(3);
    ASSERT_TRUE(present(*slow, 1, 0, 0, *ownQueue));
    settle();
    gpu.spend(0.001);
    ASSERT_TRUE(present(*slow, 1, 0, 0, *ownQueue));
    settle(0.2);
    EXPECT_FALSE(slow->isSlow());
    const std::uint64_t before = submissions();
    ASSERT_TRUE(present(*slow, 1, 0, 0, *ownQueue));
    EXPECT_EQ(submissions() - before, 1U);
}

TEST_F(SlowLayersTest, AQueueThatGoesBetweenBandsTakesTheRestWithIt) {
    gpu.spend(3);
    ASSERT_TRUE(present(*slow, 1, 0, 0, *ownQueue));
    settle();
    gpu.hold();
    ASSERT_TRUE(present(*slow, 0, 1, 0, *ownQueue));
    const std::uint64_t before = submissions();
    std::thread release([this] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        gpu.letGo();
    });
    ownQueue.reset();
    release.join();
    settle();
    EXPECT_EQ(submissions(), before);
}

class LostLayersTest : public LayersTest {
  protected:
    LostLayersTest() {
        auto made = vulkan::VulkanDevice::create({.report = [](const std::string&) {},
                                                  .recoveryInterval = std::chrono::milliseconds(0),
                                                  .calls = LosableGPU::calls()});
        EXPECT_TRUE(made) << made.error();
        ownDevice = *std::move(made);
        ownQueue = ownDevice->newCommandQueue();
        metal = addMetalLayer();
        metal->setDevice(ownDevice);
    }

    LosableGPU gpu;
    std::shared_ptr<vulkan::VulkanDevice> ownDevice;
    std::shared_ptr<gpu::CommandQueue> ownQueue;
    std::shared_ptr<MetalLayer> metal;
};

TEST_F(LostLayersTest, ALayerGoesOnWhenItsGPUIsReplaced) {
    const auto hosted = host();
    ASSERT_TRUE(present(*metal, 1, 0, 0, *ownQueue));
    settle();
    EXPECT_EQ(pixel(*hosted, 2, 2), (std::vector<int>{255, 0, 0}));
    gpu.lose();
    present(*metal, 0, 1, 0, *ownQueue);
    settle();
    hosted->releaseReplaced();
    settle();
    for (int i = 1; i <= 4; ++i) {
        ASSERT_TRUE(present(*metal, 0, 0, i / 255.0, *ownQueue)) << i;
        settle();
        EXPECT_EQ(pixel(*hosted, 2, 2), (std::vector<int>{0, 0, i}));
        hosted->releaseReplaced();
        settle();
    }
    EXPECT_EQ(ended, "");
}

TEST_F(LostLayersTest, EveryLayerOfAGPUThatIsNotReplacedTurnsBlack) {
    // Paused: it asks for no frame by itself.
    const auto paused = addMetalLayer();
    paused->setDevice(ownDevice);
    paused->setFrame({.origin = {}, .size = {.width = kWidth / 2.0, .height = kHeight}});
    const auto hosted = host();
    ASSERT_TRUE(present(*metal, 1, 0, 0, *ownQueue));
    ASSERT_TRUE(present(*paused, 0, 1, 0, *ownQueue));
    settle();
    EXPECT_EQ(pixel(*hosted, 1, 1), (std::vector<int>{0, 255, 0}));
    EXPECT_EQ(pixel(*hosted, kWidth - 1, 1), (std::vector<int>{255, 0, 0}));
    gpu.setReplaceable(false);
    gpu.lose();
    present(*metal, 0, 0, 1, *ownQueue);
    EXPECT_FALSE(present(*metal, 0, 0, 1, *ownQueue));
    settle();
    EXPECT_EQ(pixel(*hosted, 1, 1), (std::vector<int>{0, 0, 0}));
    EXPECT_EQ(pixel(*hosted, kWidth - 1, 1), (std::vector<int>{0, 0, 0}));
    hosted->releaseReplaced();
    settle();
    EXPECT_EQ(ended, "");
    gpu.setReplaceable(true);
    ASSERT_TRUE(present(*metal, 0, 0, 1, *ownQueue));
    settle();
    EXPECT_EQ(pixel(*hosted, 1, 1), (std::vector<int>{0, 0, 255}));
}

/// A host at the mercy of a test that plays the extension.
class HostedContextTest : public LayersTest {
  protected:
    HostedContextTest() {
        int ends[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
        socket = std::make_unique<layerwire::RecordSocket>(FileDescriptor(ends[0]));
        hosted = std::make_unique<agent::HostedContext>(
            loop, hostGPU, FileDescriptor(ends[1]),
            agent::ContextHandlers{.frameArrived = [] {},
                                   .changed = [] {},
                                   .ended = [this](const std::string& why) { ended = why; }});
    }

    template <typename Record>
    static Record recordOf(layerwire::Kind kind) {
        Record record{};
        record.header.kind = kind;
        return record;
    }

    std::unique_ptr<layerwire::RecordSocket> socket;
    std::unique_ptr<agent::HostedContext> hosted;
};

TEST_F(HostedContextTest, ATreeOutOfRangeEndsTheExtension) {
    auto tree = recordOf<layerwire::TreeRecord>(layerwire::Kind::tree);
    tree.layerCount = 17;
    ASSERT_TRUE(socket->send(tree));
    settle(0.01);
    EXPECT_EQ(ended, "a tree of 17 layers exceeds the limit of 16");
}

TEST_F(HostedContextTest, ALayerThatIsItsOwnParentEndsTheExtension) {
    auto tree = recordOf<layerwire::TreeRecord>(layerwire::Kind::tree);
    tree.layerCount = 2;
    for (auto& layer : tree.layers) {
        layer.contentsScale = 1;
        layer.parent = 1;
    }
    tree.layers[0].parent = layerwire::kNoParent;
    ASSERT_TRUE(socket->send(tree));
    settle(0.01);
    EXPECT_EQ(ended, "layer 1 of a tree is out of range");
}

TEST_F(HostedContextTest, AFrameOfAnImageThatWasNotSharedEndsTheExtension) {
    auto frame = recordOf<layerwire::FrameRecord>(layerwire::Kind::frame);
    frame.imageID = 5;
    ASSERT_TRUE(socket->send(frame));
    settle(0.01);
    EXPECT_EQ(ended, "a frame names image 5, which was not shared");
}

TEST_F(HostedContextTest, AnImageThatIsTooLargeEndsTheExtension) {
    auto image = recordOf<layerwire::ImageRecord>(layerwire::Kind::image);
    image.width = 20000;
    image.height = 4;
    ASSERT_TRUE(socket->send(image, STDIN_FILENO));
    settle(0.01);
    EXPECT_EQ(ended, "an image of 20000 x 4 pixels exceeds the limit of 16384 a side");
}

TEST_F(HostedContextTest, AnImageOfAnotherGPUEndsTheExtensionWithAReasonForThePerson) {
    auto image = recordOf<layerwire::ImageRecord>(layerwire::Kind::image);
    image.imageID = 1;
    image.width = 4;
    image.height = 4;
    ASSERT_TRUE(socket->send(image, STDIN_FILENO));
    settle(0.01);
    EXPECT_EQ(ended, "the extension draws on another GPU than the agent (" + hostGPU->name() + ")");
}

TEST_F(HostedContextTest, ADescriptorThatIsNoMemoryEndsTheExtension) {
    auto picture = recordOf<layerwire::PictureRecord>(layerwire::Kind::picture);
    picture.imageID = 1;
    picture.width = 4;
    picture.height = 4;
    ASSERT_TRUE(socket->send(picture, STDIN_FILENO));
    settle(0.01);
    EXPECT_EQ(ended, "a picture's memory has another size than its 64 bytes");
}

TEST_F(HostedContextTest, MemoryThatIsShorterThanItsFrameEndsTheExtension) {
    const FileDescriptor file(memfd_create("short", MFD_CLOEXEC));
    ASSERT_EQ(ftruncate(file.get(), 63), 0);
    auto memory = recordOf<layerwire::MemoryRecord>(layerwire::Kind::memory);
    memory.imageID = 7;
    memory.width = 4;
    memory.height = 4;
    ASSERT_TRUE(socket->send(memory, file.get()));
    settle(0.01);
    EXPECT_EQ(ended, "");
    auto frame = recordOf<layerwire::FrameRecord>(layerwire::Kind::frame);
    frame.imageID = 7;
    ASSERT_TRUE(socket->send(frame));
    settle(0.01);
    EXPECT_EQ(ended, "a frame's memory cannot be read");
}

TEST_F(HostedContextTest, AHostSaysFirstWhichDeviceItDrawsOn) {
    const auto first = socket->receive();
    const auto* received = std::get_if<layerwire::Received>(&first);
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(received->kind(), layerwire::Kind::device);
    EXPECT_EQ(received->as<layerwire::DeviceRecord>().deviceUUID, hostGPU->deviceUUID());
}

TEST_F(HostedContextTest, ARecordWithoutItsDescriptorEndsTheExtension) {
    ASSERT_TRUE(socket->send(recordOf<layerwire::ImageRecord>(layerwire::Kind::image)));
    settle(0.01);
    EXPECT_EQ(ended, "a layer record carries 0 descriptors where 1 belong");
}

TEST_F(HostedContextTest, AHostsOwnRecordEndsTheExtension) {
    ASSERT_TRUE(socket->send(recordOf<layerwire::ReleaseRecord>(layerwire::Kind::release)));
    settle(0.01);
    EXPECT_EQ(ended, "the extension sent a record that only a host sends");
}

} // namespace
} // namespace vantor
