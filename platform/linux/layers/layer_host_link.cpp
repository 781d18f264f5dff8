#include "platform/linux/layers/layer_host_link.h"

#include "platform/linux/system/linux_images.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace vantor {
namespace {

using namespace layerwire;

template <typename Record>
Record recordOf(Kind kind) {
    // Zeroed whole, so that no padding of ours reaches another process and trees compare as bytes.
    Record record;
    std::memset(&record, 0, sizeof(record));
    record.header.kind = kind;
    return record;
}

bool contains(const std::vector<std::uint32_t>& numbers, std::uint32_t number) {
    return std::find(numbers.begin(), numbers.end(), number) != numbers.end();
}

/// The pixels in a sealed memory file.
FileDescriptor memoryFile(std::span<const std::uint8_t> bytes) {
    FileDescriptor file(memfd_create("vantor-picture", MFD_CLOEXEC | MFD_ALLOW_SEALING));
    std::size_t written = 0;
    while (file && written < bytes.size()) {
        const ssize_t count = write(file.get(), bytes.data() + written, bytes.size() - written);
        if (count <= 0) {
            return {};
        }
        written += static_cast<std::size_t>(count);
    }
    return file;
}

bool asksForMemory() {
    const char* const forced = std::getenv("VANTOR_FORCE_SHM");
    return forced != nullptr && std::string_view(forced) == "1";
}

LayerState stateOf(LinuxLayer& layer, std::uint32_t parent) {
    LayerState state;
    std::memset(&state, 0, sizeof(state));
    const Rect frame = layer.frame();
    state.layerID = layer.layerID();
    state.parent = parent;
    state.kind = layer.metal() != nullptr ? LayerKind::metal : LayerKind::plain;
    state.gravity = layer.gravity() == ContentsGravity::resizeAspectFill ? Gravity::aspectFill
                                                                         : Gravity::resize;
    state.x = frame.origin.x;
    state.y = frame.origin.y;
    state.width = frame.size.width;
    state.height = frame.size.height;
    state.contentsScale = layer.contentsScale();
    if (const auto color = layer.backgroundColor()) {
        state.background = {static_cast<float>(color->red), static_cast<float>(color->green),
                            static_cast<float>(color->blue), static_cast<float>(color->alpha)};
    }
    state.picture = layer.picture();
    state.masksToBounds = layer.masksToBounds() ? 1 : 0;
    return state;
}

} // namespace

LayerHostLink::LayerHostLink(FileDescriptor socket)
    : socket_(std::move(socket)), isMemoryForced_(asksForMemory()) {}

LayerHostLink::~LayerHostLink() {
    for (const auto& drawable : held_) {
        drawable->removeHolder();
    }
    for (Shown& shown : shown_) {
        dropCopy(shown);
    }
}

void LayerHostLink::dropCopy(Shown& shown) {
    if (const auto drawable = std::exchange(shown.copying, nullptr)) {
        drawable->removeHolder();
    }
}

void LayerHostLink::collect(LinuxLayer& layer, std::uint32_t parent) {
    if (tree_.layerCount == kMaxLayers) {
        return;
    }
    const std::uint32_t index = tree_.layerCount++;
    tree_.layers[index] = stateOf(layer, parent);
    layers_.push_back(&layer);
    for (const auto& sublayer : layer.sublayers()) {
        collect(*sublayer, index);
    }
}

bool LayerHostLink::update(LinuxLayer* root) {
    tree_ = recordOf<TreeRecord>(Kind::tree);
    layers_.clear();
    if (root != nullptr) {
        collect(*root, kNoParent);
    }
    if (!sendPictures() || !sendTree()) {
        return false;
    }
    for (LinuxLayer* layer : layers_) {
        if (LinuxMetalLayer* metal = layer->metal(); metal != nullptr && !sendFrame(*metal)) {
            return false;
        }
    }
    return forgetUnused();
}

bool LayerHostLink::sendPictures() {
    for (LinuxLayer* layer : layers_) {
        const std::uint32_t number = layer->picture();
        if (number == kNoImage || contains(sharedPictures_, number)) {
            continue;
        }
        // Every image of this platform is one of ours.
        const auto& image = static_cast<const LinuxImage&>(*layer->contents());
        const FileDescriptor pixels = memoryFile(image.bytes());
        auto record = recordOf<PictureRecord>(Kind::picture);
        record.imageID = number;
        record.width = static_cast<std::uint32_t>(image.width());
        record.height = static_cast<std::uint32_t>(image.height());
        if (!pixels || !socket_.send(record, pixels.get())) {
            return false;
        }
        sharedPictures_.push_back(number);
    }
    return true;
}

bool LayerHostLink::sendTree() {
    // NOLINTNEXTLINE(bugprone-suspicious-memory-comparison): both were zeroed whole
    if (treeSent_ && std::memcmp(&tree_, &sentTree_, sizeof(tree_)) == 0) {
        return true;
    }
    sentTree_ = tree_;
    treeSent_ = true;
    return socket_.send(tree_);
}

bool LayerHostLink::shareImage(const LinuxMetalLayer& layer, const LayerDrawable& drawable) {
    if (contains(sharedImages_, drawable.imageID())) {
        return true;
    }
    const vulkan::Context& context = *drawable.image().context();
    auto record = recordOf<ImageRecord>(Kind::image);
    record.layerID = layer.layerID();
    record.imageID = drawable.imageID();
    record.width = drawable.image().width();
    record.height = drawable.image().height();
    record.memorySize = drawable.image().memorySize();
    record.deviceUUID = context.deviceUUID();
    record.driverUUID = context.driverUUID();
    const FileDescriptor memory = drawable.image().exportMemory();
    if (!memory || !socket_.send(record, memory.get())) {
        return false;
    }
    sharedImages_.push_back(drawable.imageID());
    return true;
}

bool LayerHostLink::shareMemory(const LayerDrawable& drawable) {
    if (contains(sharedImages_, drawable.imageID())) {
        return true;
    }
    auto record = recordOf<MemoryRecord>(Kind::memory);
    record.imageID = drawable.imageID();
    record.width = drawable.image().width();
    record.height = drawable.image().height();
    sharedImages_.push_back(drawable.imageID());
    return socket_.send(record, drawable.memory()->descriptor());
}

bool LayerHostLink::canImportFrom(const vulkan::Context& context) const {
    return !isMemoryForced_ && context.canShareMemory() &&
           device_->device == context.deviceUUID() && device_->driver == context.driverUUID();
}

bool LayerHostLink::sendFrame(LinuxMetalLayer& layer) {
    auto shown = std::find_if(shown_.begin(), shown_.end(), [&layer](const Shown& entry) {
        return entry.layerID == layer.layerID();
    });
    const auto& latest = layer.latest();
    if (!latest) {
        if (shown == shown_.end()) {
            return true;
        }
        auto record = recordOf<FrameRecord>(Kind::frame);
        record.layerID = layer.layerID();
        record.imageID = kNoImage;
        dropCopy(*shown);
        shown_.erase(shown);
        return socket_.send(record);
    }
    if (!device_) {
        return true;
    }
    if (shown == shown_.end()) {
        shown = shown_.insert(shown_.end(), {.layerID = layer.layerID()});
    }
    if (shown->copying || !canImportFrom(*latest->image().context())) {
        return sendFrameInMemory(layer, *shown);
    }
    return shown->sequence == latest->sequence() ||
           (shareImage(layer, *latest) && announce(layer, *shown, latest));
}

bool LayerHostLink::sendFrameInMemory(LinuxMetalLayer& layer, Shown& shown) {
    while (shown.copying || shown.sequence != layer.latest()->sequence()) {
        if (!shown.copying) {
            const auto parts = layer.device()->parts();
            if (!parts || !layer.latest()->copyToMemory(*parts)) {
                // The device is lost or has no memory left: the host keeps what it shows.
                return true;
            }
            shown.copying = layer.latest();
            shown.copying->addHolder();
        }
        if (!shown.copying->isInMemory()) {
            return true;
        }
        const std::shared_ptr<LayerDrawable> copied = shown.copying;
        const bool sent = shareMemory(*copied) && announce(layer, shown, copied);
        dropCopy(shown);
        if (!sent) {
            return false;
        }
    }
    return true;
}

bool LayerHostLink::announce(const LinuxMetalLayer& layer, Shown& shown,
                             const std::shared_ptr<LayerDrawable>& drawable) {
    auto record = recordOf<FrameRecord>(Kind::frame);
    record.layerID = layer.layerID();
    record.imageID = drawable->imageID();
    shown.sequence = drawable->sequence();
    drawable->addHolder();
    held_.push_back(drawable);
    return socket_.send(record);
}

bool LayerHostLink::forgetUnused() {
    const auto forget = [this](std::uint32_t number) {
        auto record = recordOf<ForgetRecord>(Kind::forget);
        record.imageID = number;
        return socket_.send(record);
    };
    bool sent = true;
    std::erase_if(sharedPictures_, [&](std::uint32_t number) {
        const bool used = std::any_of(layers_.begin(), layers_.end(),
                                      [number](auto* layer) { return layer->picture() == number; });
        sent = sent && (used || forget(number));
        return !used;
    });
    std::erase_if(sharedImages_, [&](std::uint32_t number) {
        const bool used =
            std::any_of(held_.begin(), held_.end(),
                        [number](const auto& held) { return held->imageID() == number; }) ||
            std::any_of(layers_.begin(), layers_.end(), [number](LinuxLayer* layer) {
                const LinuxMetalLayer* metal = layer->metal();
                return metal != nullptr &&
                       std::any_of(metal->drawables().begin(), metal->drawables().end(),
                                   [number](const auto& drawable) {
                                       return drawable && drawable->imageID() == number;
                                   });
            });
        sent = sent && (used || forget(number));
        return !used;
    });
    std::erase_if(shown_, [this](Shown& entry) {
        const bool gone = std::none_of(layers_.begin(), layers_.end(), [&entry](auto* layer) {
            return layer->layerID() == entry.layerID;
        });
        if (gone) {
            dropCopy(entry);
        }
        return gone;
    });
    return sent;
}

bool LayerHostLink::receive() {
    while (true) {
        const auto next = socket_.receive();
        if (std::holds_alternative<Nothing>(next)) {
            return true;
        }
        const auto* received = std::get_if<Received>(&next);
        if (received != nullptr && received->kind() == Kind::device && !device_) {
            const auto record = received->as<DeviceRecord>();
            device_ = {.device = record.deviceUUID, .driver = record.driverUUID};
            continue;
        }
        if (received == nullptr || received->kind() != Kind::release) {
            return false;
        }
        const std::uint32_t number = received->as<ReleaseRecord>().imageID;
        const auto found = std::find_if(held_.begin(), held_.end(), [number](const auto& drawable) {
            return drawable->imageID() == number;
        });
        if (found == held_.end()) {
            return false;
        }
        (*found)->removeHolder();
        held_.erase(found);
    }
}

} // namespace vantor
