#include "tests/support/fake_layers.h"

#include <algorithm>
#include <utility>

namespace vantor {

void FakeTransactions::begin() {
    mainThread_.require("transactions are used on the main thread");
    disabled_.push_back(false);
}

void FakeTransactions::setDisableActions(bool disable) {
    fakeRequire(!disabled_.empty(), "a transaction has begun");
    disabled_.back() = disable;
}

void FakeTransactions::commit() {
    fakeRequire(!disabled_.empty(), "a transaction that is committed has begun");
    disabled_.pop_back();
    ++committed;
}

void FakeTransactions::flush() {
    mainThread_.require("transactions are flushed on the main thread");
    fakeRequire(disabled_.empty(), "a flush stands outside of explicit transactions");
    ++flushed;
}

FakeLayer::~FakeLayer() {
    for (const LayerRef& layer : sublayers_) {
        fake(layer).superlayer_ = nullptr;
    }
    std::erase(owner_.alive, this);
}

const ObjectClass& FakeLayer::objectClass() const { return owner_.layerClass(); }

void FakeLayer::noteChange() {
    owner_.requireMainThread();
    if (superlayer_ != nullptr && owner_.transactions().isAnimating()) {
        ++animatedChanges;
    }
}

void FakeLayer::setFrame(const Rect& frame) {
    noteChange();
    frame_ = frame;
}

void FakeLayer::setContentsScale(double scale) {
    noteChange();
    contentsScale_ = scale;
}

void FakeLayer::addSublayer(const LayerRef& layer) {
    owner_.requireMainThread();
    fakeRequire(layer != nullptr, "a sublayer exists");
    for (const FakeLayer* above = this; above != nullptr; above = above->superlayer_) {
        fakeRequire(above != &fake(layer), "a layer is not put below itself");
    }
    layer->removeFromSuperlayer();
    sublayers_.push_back(layer);
    fake(layer).superlayer_ = this;
}

void FakeLayer::removeFromSuperlayer() {
    owner_.requireMainThread();
    FakeLayer* from = std::exchange(superlayer_, nullptr);
    if (from == nullptr) {
        return;
    }
    const auto kept = std::find_if(from->sublayers_.begin(), from->sublayers_.end(),
                                   [&](const LayerRef& layer) { return &fake(layer) == this; });
    from->sublayers_.erase(kept);
}

class FakeMetalLayer::PooledDrawable : public FakePresentable {
  public:
    ~PooledDrawable() override = default;

    gpu::Texture& texture() override { return *texture_; }
    void show() override;

    bool ready(gpu::Device& maker, std::uint64_t width, std::uint64_t height,
               gpu::PixelFormat texelFormat) {
        if (!texture_ || texture_->width() != width || texture_->height() != height) {
            texture_ = maker.newTexture({.pixelFormat = texelFormat,
                                         .width = width,
                                         .height = height,
                                         .usage = gpu::TextureUsage::renderTarget});
        }
        return texture_ != nullptr;
    }

    enum class State { free, handedOut, shown };
    State state = State::free;
    /// Keeps the pool while the drawable is handed out, in case the layer goes first.
    std::shared_ptr<Pool> keepsPool;

  private:
    void giveBack() override {
        state = State::free;
        // Last: it may end this object.
        const std::shared_ptr<Pool> released = std::move(keepsPool);
    }

    std::shared_ptr<gpu::Texture> texture_;
};

struct FakeMetalLayer::Pool {
    /// Null when the layer is gone.
    FakeMetalLayer* layer = nullptr;
    std::vector<std::unique_ptr<PooledDrawable>> drawables;
};

void FakeMetalLayer::PooledDrawable::show() {
    state = State::shown;
    const std::shared_ptr<Pool> kept = std::move(keepsPool);
    if (kept->layer == nullptr) {
        return;
    }
    ++kept->layer->presented;
    if (!kept->layer->hostIsSlow) {
        kept->layer->composite();
    }
}

FakeMetalLayer::FakeMetalLayer(FakeLayers& owner)
    : FakeLayer(owner), pool_(std::make_shared<Pool>()) {
    pool_->layer = this;
}

FakeMetalLayer::~FakeMetalLayer() { pool_->layer = nullptr; }

const ObjectClass& FakeMetalLayer::objectClass() const {
    return const_cast<FakeMetalLayer*>(this)->owner().metalLayerClass();
}

void FakeMetalLayer::setMaximumDrawableCount(int count) {
    fakeRequire(count == 2 || count == 3, "a layer has two or three drawables");
    maximumDrawableCount = count;
}

void FakeMetalLayer::setDrawableSize(const Size& size) {
    noteChange();
    drawableSize_ = size;
}

gpu::DrawableRef FakeMetalLayer::nextDrawable() {
    owner().requireMainThread();
    constexpr double kMaxSide = 16384;
    const bool hasPixels = drawableSize_.width >= 1 && drawableSize_.height >= 1 &&
                           drawableSize_.width <= kMaxSide && drawableSize_.height <= kMaxSide;
    if (!device || refusesDrawables || !hasPixels) {
        return nullptr;
    }
    auto found = std::find_if(pool_->drawables.begin(), pool_->drawables.end(), [](auto& each) {
        return each->state == PooledDrawable::State::free;
    });
    if (found == pool_->drawables.end()) {
        if (pool_->drawables.size() >= static_cast<std::size_t>(maximumDrawableCount)) {
            return nullptr;
        }
        pool_->drawables.push_back(std::make_unique<PooledDrawable>());
        found = std::prev(pool_->drawables.end());
    }
    PooledDrawable& drawable = **found;
    if (!drawable.ready(*device, static_cast<std::uint64_t>(drawableSize_.width),
                        static_cast<std::uint64_t>(drawableSize_.height), pixelFormat)) {
        return nullptr;
    }
    drawable.state = PooledDrawable::State::handedOut;
    drawable.keepsPool = pool_;
    return gpu::DrawableRef(&drawable);
}

void FakeMetalLayer::composite() {
    for (const auto& drawable : pool_->drawables) {
        if (drawable->state == PooledDrawable::State::shown) {
            drawable->state = PooledDrawable::State::free;
        }
    }
}

FakeLayers::FakeLayers() = default;

FakeLayers::~FakeLayers() { fakeRequire(alive.empty(), "no layer outlives the platform"); }

LayerRef FakeLayers::makeLayer() {
    requireMainThread();
    auto layer = std::make_shared<FakeLayer>(*this);
    alive.push_back(layer.get());
    return layer;
}

std::shared_ptr<MetalLayer> FakeLayers::makeMetalLayer() {
    requireMainThread();
    auto layer = std::make_shared<FakeMetalLayer>(*this);
    alive.push_back(layer.get());
    return layer;
}

FakeMetalLayer* FakeLayers::lastMetalLayer() const {
    for (auto layer = alive.rbegin(); layer != alive.rend(); ++layer) {
        if (auto* metal = dynamic_cast<FakeMetalLayer*>(*layer)) {
            return metal;
        }
    }
    return nullptr;
}

FakeLayer& fake(const LayerRef& layer) {
    auto* own = dynamic_cast<FakeLayer*>(layer.get());
    fakeRequire(own != nullptr, "a layer is used on its own platform");
    return *own;
}

FakeMetalLayer& onlyMetalSublayer(const LayerRef& layer) {
    const std::vector<LayerRef>& sublayers = fake(layer).sublayers();
    fakeRequire(sublayers.size() == 1, "the layer has one sublayer");
    auto* metal = dynamic_cast<FakeMetalLayer*>(sublayers.front().get());
    fakeRequire(metal != nullptr, "the sublayer is a Metal layer");
    return *metal;
}

} // namespace vantor
