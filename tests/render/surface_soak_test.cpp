// Surfaces that come and go over the real platform, with a host that shows each of them: what the
// process holds after the first hundred is all that it ever holds. The environment variable
// VANTOR_SOAK_CYCLES makes the run longer.

#include "agent/host/compositor.h"
#include "agent/host/hosted_context.h"
#include "agent/host/memory_canvas.h"
#include "platform/linux/layers/linux_layers.h"
#include "platform/platform.h"
#include "render/surface_registry.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <unistd.h>

namespace vantor {
namespace {

constexpr int kSettled = 100;
constexpr int kUsualCycles = 400;
constexpr double kGrace = 0.001;
constexpr std::uint32_t kSide = 64;

constexpr const char* kTintShader =
    "#include <metal_stdlib>\nusing namespace metal;\n"
    "struct Uniforms { float2 resolution; float time; float speed; float4 tint; };\n"
    "struct VOut { float4 position [[position]]; };\n"
    "vertex VOut v_main(uint vid [[vertex_id]]) {\n"
    "    float2 p = float2((vid << 1) & 2, vid & 2);\n"
    "    VOut out;\n    out.position = float4(p * 2.0 - 1.0, 0.0, 1.0);\n    return out;\n}\n"
    "fragment float4 f_main(VOut in [[stage_in]], constant Uniforms& u [[buffer(0)]]) {\n"
    "    return float4(u.tint.rgb, 1.0);\n}\n";

class OneShader : public WallpaperResolver {
  public:
    std::optional<Resolved> resolve(const std::optional<std::string>&,
                                    std::optional<std::uint32_t>) override {
        return Resolved{.key = "soak", .source = kTintShader, .still = {}, .uniforms = {}};
    }
    bool isNonShader(std::optional<std::uint32_t>) override { return false; }
};

/// What the process holds.
struct Holdings {
    long descriptors = 0;
    long mappings = 0;
    long residentPages = 0;

    static Holdings now() {
        Holdings held;
        held.descriptors = std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {});
        std::ifstream maps("/proc/self/maps");
        for (std::string line; std::getline(maps, line);) {
            ++held.mappings;
        }
        std::ifstream memory("/proc/self/statm");
        long size = 0;
        memory >> size >> held.residentPages;
        return held;
    }
};

class SurfaceSoakTest : public testing::Test {
  protected:
    SurfaceSoakTest() {
        auto made = vulkan::Context::create();
        EXPECT_TRUE(made) << made.error();
        hostGPU = *std::move(made);
        compositor = agent::Compositor::create(hostGPU);
        canvas = agent::MemoryCanvas::create(hostGPU, kSide, kSide);
    }

    /// Turns the loop until `condition` holds; false when it does not in ten seconds.
    template <typename Condition>
    bool eventually(Condition condition) {
        for (int i = 0; i < 100000 && !condition(); ++i) {
            loop.turn();
            usleep(100);
        }
        return condition();
    }

    void cycle() {
        const UUID id = UUID::random();
        const auto surface = std::make_shared<SurfaceRegistry::Surface>(SurfaceRegistry::Surface{
            .context = PrivateBridge::makeRemoteContext(installed, std::nullopt),
            .root = installed.layers().makeLayer(),
            .displayID = std::nullopt,
            .isPreview = true,
            .presentationMode = "locked",
            .activityState = "active",
            .choice = "soak"});
        ASSERT_NE(surface->context, nullptr);
        surface->root->setFrame({.origin = {}, .size = {.width = kSide, .height = kSide}});
        surface->context->object()->perform("setLayer:", surface->root);
        registry.add(id, surface);
        registry.present(*surface);
        installed.layers().transactions().flush();

        auto socket =
            static_cast<LinuxLayers&>(installed.layers()).attach(surface->context->contextID());
        ASSERT_TRUE(socket);
        int frames = 0;
        agent::HostedContext hosted(loop, hostGPU, *std::move(socket),
                                    {.frameArrived = [&frames] { ++frames; },
                                     .changed = [] {},
                                     .ended = [](const std::string&) {}});
        ASSERT_TRUE(eventually([&] { return frames > 0; }));
        ASSERT_TRUE(compositor->compose(*canvas->begin(), {.context = &hosted}));

        // An update: another size, and a frame of it.
        registry.resize(*surface, {.width = kSide / 2.0, .height = kSide / 2.0}, 1);
        surface->shader->renderFrame();
        ASSERT_TRUE(eventually([&] { return frames > 1; }));
        ASSERT_TRUE(eventually([&] { return compositor->isIdle(); }));
        hosted.releaseReplaced();

        registry.scheduleTeardown(id);
        ASSERT_TRUE(eventually([&] { return registry.surfaces().empty(); }));
    }

    TemporaryFolder home;
    const int homeSet = setenv("HOME", home.path().c_str(), 1);
    Platform& installed = [this]() -> Platform& {
        EXPECT_EQ(homeSet, 0);
        installPlatform(&systemPlatform());
        return platform();
    }();
    MainLoop& loop = static_cast<MainLoop&>(installed.mainQueue());
    ShaderGPU& gpu = ShaderGPU::shared();
    OneShader resolver;
    SurfaceRegistry registry{installed, gpu, resolver, kGrace};
    std::shared_ptr<vulkan::Context> hostGPU;
    std::unique_ptr<agent::Compositor> compositor;
    std::unique_ptr<agent::MemoryCanvas> canvas;
};

TEST_F(SurfaceSoakTest, SurfacesThatComeAndGoLeaveNothingBehind) {
    const char* const asked = std::getenv("VANTOR_SOAK_CYCLES");
    const int cycles = asked != nullptr ? std::atoi(asked) : kUsualCycles;
    Holdings settled;
    for (int i = 0; i < cycles; ++i) {
        ASSERT_NO_FATAL_FAILURE(cycle()) << "cycle " << i;
        if (i + 1 == kSettled) {
            settled = Holdings::now();
        }
    }
    // The completion thread may still be giving up the last surface, or writing a file.
    eventually([&] { return Holdings::now().descriptors <= settled.descriptors; });
    const Holdings held = Holdings::now();
    std::printf("descriptors %ld -> %ld, mappings %ld -> %ld, resident pages %ld -> %ld\n",
                settled.descriptors, held.descriptors, settled.mappings, held.mappings,
                settled.residentPages, held.residentPages);
    EXPECT_LE(held.descriptors, settled.descriptors);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !defined(__clang__)
    // The sanitizers keep memory of their own. Allocators move by a few mappings and pages.
    EXPECT_LE(held.mappings, settled.mappings + 8);
    EXPECT_LE(held.residentPages, settled.residentPages + settled.residentPages / 20);
#endif
}

} // namespace
} // namespace vantor
