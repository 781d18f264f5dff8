#include "agent/host/hosted_context.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <sys/epoll.h>
#include <sys/mman.h>
#include <sys/stat.h>

namespace vantor::agent {
namespace {

using namespace layerwire;

constexpr VkImageUsageFlags kSharedUsage =
    VK_IMAGE_USAGE_COLOR_ATTACHMENT_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT;

/// Beyond any display; keeps later sums of coordinates finite and small.
constexpr double kMaxCoordinate = 1e6;

bool isCoordinate(double value) {
    return std::isfinite(value) && std::abs(value) <= kMaxCoordinate;
}

bool isSound(const LayerState& layer, std::uint32_t index) {
    const bool placed = index == 0 ? layer.parent == kNoParent : layer.parent < index;
    const bool colored = std::all_of(layer.background.begin(), layer.background.end(),
                                     [](float component) { return std::isfinite(component); });
    return placed && colored && isCoordinate(layer.x) && isCoordinate(layer.y) &&
           isCoordinate(layer.width) && isCoordinate(layer.height) && layer.width >= 0 &&
           layer.height >= 0 && isCoordinate(layer.contentsScale) && layer.contentsScale > 0 &&
           (layer.kind == LayerKind::plain || layer.kind == LayerKind::metal) &&
           (layer.gravity == Gravity::resize || layer.gravity == Gravity::aspectFill);
}

bool isSide(std::uint32_t side) { return side > 0 && side <= kMaxImageSide; }

} // namespace

HostedContext::HostedContext(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu,
                             FileDescriptor socket, ContextHandlers handlers)
    : gpu_(std::move(gpu)), socket_(std::move(socket)), handlers_(std::move(handlers)),
      watch_(loop.watch(socket_.descriptor(), EPOLLIN, [this](std::uint32_t) { drain(); })) {}

HostedContext::~HostedContext() = default;

std::span<const LayerState> HostedContext::layers() const {
    return std::span(tree_.layers).first(tree_.layerCount);
}

vulkan::DeviceImage* HostedContext::frame(std::uint32_t layerID) const {
    const auto shown = frames_.find(layerID);
    if (shown == frames_.end()) {
        return nullptr;
    }
    const auto image = images_.find(shown->second);
    return image != images_.end() ? image->second.get() : nullptr;
}

const Picture* HostedContext::picture(std::uint32_t imageID) const {
    const auto found = pictures_.find(imageID);
    return found != pictures_.end() ? &found->second : nullptr;
}

void HostedContext::releaseReplaced() {
    for (const std::uint32_t imageID : std::exchange(replaced_, {})) {
        ReleaseRecord record{};
        record.header.kind = Kind::release;
        record.imageID = imageID;
        if (watch_ && !socket_.send(record)) {
            close("the extension takes no more records");
        }
    }
}

void HostedContext::drain() {
    bool changed = false;
    bool framed = false;
    while (watch_) {
        auto next = socket_.receive();
        if (std::holds_alternative<Nothing>(next)) {
            break;
        }
        if (const auto* ended = std::get_if<Ended>(&next)) {
            close(ended->reason);
            break;
        }
        auto& received = std::get<Received>(next);
        const bool isFrame = received.kind() == Kind::frame;
        if (!handle(received)) {
            close(refusal_);
            break;
        }
        changed = true;
        framed = framed || isFrame;
    }
    if (changed) {
        handlers_.changed();
    }
    if (framed) {
        handlers_.frameArrived();
    }
}

bool HostedContext::handle(Received& received) {
    switch (received.kind()) {
    case Kind::tree:
        return takeTree(received.as<TreeRecord>());
    case Kind::image:
        return takeImage(received.as<ImageRecord>(), std::move(received.descriptor));
    case Kind::picture:
        return takePicture(received.as<PictureRecord>(), received.descriptor);
    case Kind::forget: {
        const std::uint32_t imageID = received.as<ForgetRecord>().imageID;
        pictures_.erase(imageID);
        const bool shown =
            std::any_of(frames_.begin(), frames_.end(),
                        [imageID](const auto& entry) { return entry.second == imageID; });
        const bool held = std::find(replaced_.begin(), replaced_.end(), imageID) != replaced_.end();
        if (shown || held) {
            return refuse("an image is withdrawn while it is shown");
        }
        images_.erase(imageID);
        return true;
    }
    case Kind::frame:
        return takeFrame(received.as<FrameRecord>());
    case Kind::release:
        break;
    }
    return refuse("the extension sent a record that only a host sends");
}

bool HostedContext::takeTree(const TreeRecord& record) {
    if (record.layerCount > kMaxLayers) {
        return refuse("a tree of " + std::to_string(record.layerCount) +
                      " layers exceeds the limit of " + std::to_string(kMaxLayers));
    }
    for (std::uint32_t i = 0; i < record.layerCount; ++i) {
        if (!isSound(record.layers[i], i)) {
            return refuse("layer " + std::to_string(i) + " of a tree is out of range");
        }
    }
    tree_ = record;
    // A layer that went gives back what it showed.
    std::erase_if(frames_, [this](const auto& entry) {
        const auto present = layers();
        const bool gone =
            std::none_of(present.begin(), present.end(), [&entry](const LayerState& layer) {
                return layer.layerID == entry.first;
            });
        if (gone) {
            replaced_.push_back(entry.second);
        }
        return gone;
    });
    return true;
}

bool HostedContext::takeImage(const ImageRecord& record, FileDescriptor memory) {
    if (!isSide(record.width) || !isSide(record.height)) {
        return refuse("an image of " + std::to_string(record.width) + " x " +
                      std::to_string(record.height) + " pixels exceeds the limit of " +
                      std::to_string(kMaxImageSide) + " a side");
    }
    if (images_.size() >= kMaxImages || images_.contains(record.imageID)) {
        return refuse("a context shares more images than a host keeps");
    }
    if (record.deviceUUID != gpu_->deviceUUID() || record.driverUUID != gpu_->driverUUID()) {
        return refuse("the extension draws on another GPU than the agent (" + gpu_->name() + ")");
    }
    auto image = vulkan::DeviceImage::import(gpu_,
                                             {.format = VK_FORMAT_B8G8R8A8_UNORM,
                                              .width = record.width,
                                              .height = record.height,
                                              .usage = kSharedUsage,
                                              .sharing = vulkan::Sharing::exported},
                                             std::move(memory), record.memorySize);
    if (!image) {
        return refuse("a shared image cannot be imported");
    }
    images_.emplace(record.imageID, std::move(image));
    return true;
}

bool HostedContext::takePicture(const PictureRecord& record, const FileDescriptor& pixels) {
    if (!isSide(record.width) || !isSide(record.height) || record.imageID == kNoImage ||
        pictures_.size() >= kMaxImages) {
        return refuse("a picture is out of range");
    }
    const std::size_t size = std::size_t{record.width} * record.height * 4;
    struct stat status {};
    if (fstat(pixels.get(), &status) != 0 || static_cast<std::size_t>(status.st_size) != size) {
        return refuse("a picture's memory has another size than its " + std::to_string(size) +
                      " bytes");
    }
    // Read, not mapped: the sender may still shrink the file.
    Picture picture{.width = record.width, .height = record.height, .bytes = {}};
    picture.bytes.resize(size);
    std::size_t taken = 0;
    while (taken < size) {
        const ssize_t count = pread(pixels.get(), picture.bytes.data() + taken, size - taken,
                                    static_cast<off_t>(taken));
        if (count <= 0) {
            return refuse("a picture's memory cannot be read");
        }
        taken += static_cast<std::size_t>(count);
    }
    pictures_[record.imageID] = std::move(picture);
    return true;
}

bool HostedContext::takeFrame(const FrameRecord& record) {
    if (record.imageID == kNoImage) {
        if (const auto shown = frames_.find(record.layerID); shown != frames_.end()) {
            replaced_.push_back(shown->second);
            frames_.erase(shown);
        }
        return true;
    }
    const auto image = images_.find(record.imageID);
    if (image == images_.end() || frames_.size() > kMaxLayers) {
        return refuse("a frame names image " + std::to_string(record.imageID) +
                      ", which was not shared");
    }
    // The extension released it in this layout.
    image->second->setLayout(VK_IMAGE_LAYOUT_GENERAL);
    const auto [shown, isNew] = frames_.try_emplace(record.layerID, record.imageID);
    if (!isNew) {
        replaced_.push_back(std::exchange(shown->second, record.imageID));
    }
    return true;
}

bool HostedContext::refuse(std::string reason) {
    refusal_ = std::move(reason);
    return false;
}

void HostedContext::close(const std::string& reason) {
    watch_.reset();
    handlers_.ended(reason);
}

} // namespace vantor::agent
