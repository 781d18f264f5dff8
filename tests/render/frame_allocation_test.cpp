// What a steady frame asks of the heap. A program of its own, since it replaces the allocator.

#include "render/shader_surface.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> counting = false;
std::atomic<int> allocations = 0;

void* allocate(std::size_t size) {
    if (counting) {
        ++allocations;
    }
    if (void* const memory = std::malloc(size != 0 ? size : 1)) {
        return memory;
    }
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size) { return allocate(size); }
void* operator new[](std::size_t size) { return allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

namespace vantor {
namespace {

class FrameAllocationTest : public FakePlatformTest {
  protected:
    ShaderGPU shaderGPU{platform.gpu(), platform.images()};
    LayerRef root = platform.layers().makeLayer();
};

TEST_F(FrameAllocationTest, ASteadyFrameAllocatesNothing) {
    FakeScreen& screen = platform.screens().add(1);
    const auto surface = ShaderSurface::create(platform, shaderGPU,
                                               {.entryID = "plasma",
                                                .source = "vertex v_main fragment f_main",
                                                .look = {},
                                                .in = root,
                                                .size = {.width = 64, .height = 64},
                                                .displayID = 1});
    surface->setPlaying(true);
    screen.refresh();
    auto& layer = onlyMetalSublayer(root);
    platform.gpu().device->records = false;

    const int before = layer.presented;
    counting = true;
    for (int i = 0; i < 100; ++i) {
        platform.mediaClock().advance(1.0 / 60);
        screen.refresh();
    }
    counting = false;
    EXPECT_EQ(layer.presented, before + 100);
    EXPECT_EQ(allocations, 0);
}

TEST_F(FrameAllocationTest, TheCounterCounts) {
    counting = true;
    const auto memory = std::make_unique<std::string>(100, 'x');
    counting = false;
    EXPECT_GE(allocations, 2);
    EXPECT_EQ(memory->size(), 100U);
    allocations = 0;
}

} // namespace
} // namespace vantor
