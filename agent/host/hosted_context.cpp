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

constexpr VkImageUsageFlags kCopiedUsage =
    VK_IMAGE_USAGE_TRANSFER_DST_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT;

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

/// Fills `bytes` from the file's beginning. Read, not mapped: the sender may still shrink it.
bool readFile(const FileDescriptor& file, std::span<std::uint8_t> bytes) {
    std::size_t taken = 0;
    while (taken < bytes.size()) {
        const ssize_t count = pread(file.get(), bytes.data() + taken, bytes.size() - taken,
                                    static_cast<off_t>(taken));
        if (count <= 0) {
            return false;
        }
        taken += static_cast<std::size_t>(count);
    }
    return true;
}

bool isSide(std::uint32_t side) { return side > 0 && side <= kMaxImageSide; }

} // namespace

HostedContext::HostedContext(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu,
                             FileDescriptor socket, ContextHandlers handlers)
    : gpu_(std::move(gpu)), socket_(std::move(socket)), handlers_(std::move(handlers)),
      watch_(loop.watch(socket_.descriptor(), EPOLLIN, [this](std::uint32_t) { drain(); })) {
    DeviceRecord record{};
    record.header.kind = Kind::device;
    record.deviceUUID = gpu_->deviceUUID();
    record.driverUUID = gpu_->driverUUID();
    // An extension that is gone is noticed by the watch.
    static_cast<void>(socket_.send(record));
}

HostedContext::~HostedContext() = default;

std::span<const LayerState> HostedContext::layers() const {
    return std::span(tree_.layers).first(tree_.layerCount);
}

HostedFrame* HostedContext::frame(std::uint32_t layerID) const {
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
    if (framed) {
        handlers_.frameArrived();
    }
    if (changed) {
        handlers_.changed();
    }
}

bool HostedContext::handle(Received& received) {
    switch (received.kind()) {
    case Kind::tree:
        return takeTree(received.as<TreeRecord>());
    case Kind::image:
        return takeImage(received.as<ImageRecord>(), std::move(received.descriptor));
    case Kind::memory:
        return takeMemory(received.as<MemoryRecord>(), std::move(received.descriptor));
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
    case Kind::device:
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

bool HostedContext::isWelcome(std::uint32_t imageID, std::uint32_t width, std::uint32_t height) {
    if (!isSide(width) || !isSide(height)) {
        return refuse("an image of " + std::to_string(width) + " x " + std::to_string(height) +
                      " pixels exceeds the limit of " + std::to_string(kMaxImageSide) + " a side");
    }
    if (images_.size() >= kMaxImages || imageID == kNoImage || images_.contains(imageID)) {
        return refuse("a context shares more images than a host keeps");
    }
    return true;
}

bool HostedContext::takeImage(const ImageRecord& record, FileDescriptor memory) {
    if (!isWelcome(record.imageID, record.width, record.height)) {
        return false;
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
    auto frame = std::make_unique<HostedFrame>();
    frame->image = std::move(image);
    images_.emplace(record.imageID, std::move(frame));
    return true;
}

bool HostedContext::takeMemory(const MemoryRecord& record, FileDescriptor memory) {
    if (!isWelcome(record.imageID, record.width, record.height)) {
        return false;
    }
    auto frame = std::make_unique<HostedFrame>();
    frame->image = vulkan::DeviceImage::create(gpu_, {.format = VK_FORMAT_B8G8R8A8_UNORM,
                                                      .width = record.width,
                                                      .height = record.height,
                                                      .usage = kCopiedUsage});
    frame->bytes = vulkan::Buffer::create(gpu_, std::size_t{record.width} * record.height * 4,
                                          VK_BUFFER_USAGE_TRANSFER_SRC_BIT);
    frame->memory = std::move(memory);
    if (!frame->image || !frame->bytes) {
        return refuse("the GPU has no memory for a frame");
    }
    images_.emplace(record.imageID, std::move(frame));
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
    Picture picture{.width = record.width, .height = record.height, .bytes = {}};
    picture.bytes.resize(size);
    if (!readFile(pixels, picture.bytes)) {
        return refuse("a picture's memory cannot be read");
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
    HostedFrame& frame = *image->second;
    if (!frame.bytes) {
        // The extension released it in this layout.
        frame.image->setLayout(VK_IMAGE_LAYOUT_GENERAL);
    } else if (!readFile(frame.memory, frame.bytes->bytes())) {
        return refuse("a frame's memory cannot be read");
    } else {
        frame.bytesAreNew = true;
    }
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
