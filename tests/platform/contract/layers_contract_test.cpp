#include "platform/layers.h"
#include "platform/object_runtime.h"
#include "platform/screens.h"
#include "tests/platform/contract/contract_subject.h"

namespace vantor {
namespace {

class LayersContract : public Contract {
  protected:
    Layers& layers = platform.layers();
};
VANTOR_CONTRACT(LayersContract);

TEST_P(LayersContract, AFreshLayerIsEmptyAndTransparent) {
    const LayerRef layer = layers.makeLayer();
    EXPECT_EQ(layer->frame(), Rect());
    EXPECT_EQ(layer->contentsScale(), 1.0);
    EXPECT_EQ(layer->backgroundColor(), std::nullopt);
    EXPECT_EQ(layer->objectClass().name(), "CALayer");
}

TEST_P(LayersContract, ALayerKeepsWhatItIsGiven) {
    const LayerRef layer = layers.makeLayer();
    const Rect frame{.origin = {.x = 3, .y = 4}, .size = {.width = 640.5, .height = 360}};
    {
        const UnanimatedTransaction transaction(layers.transactions());
        layer->setFrame(frame);
        layer->setContentsScale(2);
        layer->setBackgroundColor(Color::gray(0.5, 0.25));
    }
    layers.transactions().flush();
    EXPECT_EQ(layer->frame(), frame);
    EXPECT_EQ(layer->bounds(), (Rect{.origin = {}, .size = frame.size}));
    EXPECT_EQ(layer->contentsScale(), 2.0);
    EXPECT_EQ(layer->backgroundColor(), Color::gray(0.5, 0.25));
    layer->setBackgroundColor(std::nullopt);
    EXPECT_EQ(layer->backgroundColor(), std::nullopt);
}

TEST_P(LayersContract, ASuperlayerKeepsItsLayers) {
    const LayerRef root = layers.makeLayer();
    const LayerRef other = layers.makeLayer();
    LayerRef layer = layers.makeLayer();
    root->addSublayer(layer);
    other->addSublayer(layer);
    layer->setFrame({.origin = {}, .size = {.width = 1, .height = 2}});
    EXPECT_EQ(layer->frame().size.height, 2);
    layer->removeFromSuperlayer();
    layer->removeFromSuperlayer();
}

TEST_P(LayersContract, AMetalLayerHasTheDrawableSizeThatItIsGiven) {
    const auto layer = layers.makeMetalLayer();
    layer->setDevice(platform.gpu().createSystemDefaultDevice());
    layer->setPixelFormat(gpu::PixelFormat::bgra8Unorm);
    layer->setFramebufferOnly(true);
    layer->setOpaque(true);
    layer->setMaximumDrawableCount(2);
    layer->setDrawableSize({.width = 64, .height = 32});
    EXPECT_EQ(layer->drawableSize(), (Size{.width = 64, .height = 32}));
    EXPECT_EQ(layer->objectClass().name(), "CAMetalLayer");
}

TEST_P(LayersContract, ADrawableHasTheDrawableSizeAndGoesBackUnpresented) {
    const auto layer = layers.makeMetalLayer();
    layer->setDevice(platform.gpu().createSystemDefaultDevice());
    layer->setPixelFormat(gpu::PixelFormat::bgra8Unorm);
    layer->setMaximumDrawableCount(2);
    layer->setDrawableSize({.width = 64, .height = 32});
    for (int i = 0; i < 5; ++i) {
        const gpu::DrawableRef drawable = layer->nextDrawable();
        ASSERT_NE(drawable, nullptr) << i;
        EXPECT_EQ(drawable->texture().width(), 64U);
        EXPECT_EQ(drawable->texture().height(), 32U);
        EXPECT_EQ(drawable->texture().pixelFormat(), gpu::PixelFormat::bgra8Unorm);
    }
}

TEST_P(LayersContract, ARemoteContextTakesALayerAndHasANumber) {
    const ObjectClass* contexts = platform.objectRuntime().classNamed("CAContext");
    ASSERT_NE(contexts, nullptr);
    ASSERT_TRUE(contexts->respondsTo("remoteContextWithOptions:"));
    const ObjectRef context = contexts->perform("remoteContextWithOptions:", {});
    ASSERT_NE(context, nullptr);
    const auto number = context->valueForKey("contextId");
    ASSERT_TRUE(number && number->integer() != nullptr);
    EXPECT_NE(*number->integer(), 0);
    EXPECT_EQ(context->valueForKey("vantorNoSuchKey"), std::nullopt);
    EXPECT_TRUE(context->perform("setLayer:", layers.makeLayer()));
    EXPECT_TRUE(context->perform("invalidate", nullptr));
    EXPECT_FALSE(context->perform("vantorNoSuchMethod:", nullptr));
}

TEST_P(LayersContract, TheListOfScreensHoldsUntilTheLoopRuns) {
    const auto screens = platform.screens().screens();
    EXPECT_EQ(platform.screens().screens(), screens);
    for (Screen* screen : screens) {
        int ticks = 0;
        const auto link = screen->displayLink([&ticks] { ++ticks; });
        ASSERT_NE(link, nullptr);
        link->setPreferredFrameRateRange({.minimum = 30, .maximum = 60, .preferred = 60});
        link->setPaused(true);
        link->addToMainRunLoop();
        link->invalidate();
        EXPECT_EQ(ticks, 0);
    }
}

} // namespace
} // namespace vantor
