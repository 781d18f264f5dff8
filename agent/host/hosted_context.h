#pragma once
// A remote context as its host sees it: the layer tree, the pictures and the frames that the
// extension tells over the context's private socket. Everything that arrives is checked; a peer
// that breaks the wire is closed. Main thread.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/gpu/vulkan_resources.h"
#include "platform/linux/layers/layer_wire.h"
#include "platform/linux/layers/record_socket.h"
#include "platform/linux/main_loop.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vantor::agent {

/// A still picture: BGRA rows without padding.
struct Picture {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::vector<std::uint8_t> bytes;
};

/// An image that the extension draws frames into, or one of the host's own for frames that come
/// through shared memory.
struct HostedFrame {
    std::unique_ptr<vulkan::DeviceImage> image;
    /// A frame that came through memory, for the GPU to copy; null for shared images.
    std::unique_ptr<vulkan::Buffer> bytes;
    /// The image does not hold them yet.
    bool bytesAreNew = false;
    FileDescriptor memory;
};

struct ContextHandlers {
    /// The Metal layers show a new frame (`changed` follows).
    std::function<void()> frameArrived;
    /// The tree, a picture or a frame changed.
    std::function<void()> changed;
    /// The extension closed the context, or broke the wire. Called once; the last state stays.
    std::function<void(const std::string& reason)> ended;
};

class HostedContext {
  public:
    HostedContext(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu, FileDescriptor socket,
                  ContextHandlers handlers);
    ~HostedContext();
    HostedContext(const HostedContext&) = delete;
    HostedContext& operator=(const HostedContext&) = delete;

    /// The layers in drawing order, parents before children.
    std::span<const layerwire::LayerState> layers() const;
    /// What a Metal layer shows; null before its first frame. Valid until it is released.
    HostedFrame* frame(std::uint32_t layerID) const;
    /// Null when there is none.
    const Picture* picture(std::uint32_t imageID) const;

    /// Frames that are no longer shown go back to the extension. The caller has made sure that the
    /// GPU has done with them.
    void releaseReplaced();
    bool hasReplaced() const { return !replaced_.empty(); }

  private:
    void drain();
    /// False with `refusal_` set when the record breaks the wire.
    bool handle(layerwire::Received& received);
    /// Whether an image of that number and size may be added.
    bool isWelcome(std::uint32_t imageID, std::uint32_t width, std::uint32_t height);
    bool takeTree(const layerwire::TreeRecord& record);
    bool takeImage(const layerwire::ImageRecord& record, FileDescriptor memory);
    bool takeMemory(const layerwire::MemoryRecord& record, FileDescriptor memory);
    bool takePicture(const layerwire::PictureRecord& record, const FileDescriptor& pixels);
    bool takeFrame(const layerwire::FrameRecord& record);
    bool refuse(std::string reason);
    void close(const std::string& reason);

    std::shared_ptr<vulkan::Context> gpu_;
    layerwire::RecordSocket socket_;
    ContextHandlers handlers_;
    std::unique_ptr<DescriptorWatch> watch_;
    layerwire::TreeRecord tree_{};
    std::map<std::uint32_t, std::unique_ptr<HostedFrame>> images_;
    std::map<std::uint32_t, Picture> pictures_;
    /// Image by Metal layer.
    std::map<std::uint32_t, std::uint32_t> frames_;
    std::vector<std::uint32_t> replaced_;
    std::string refusal_;
};

} // namespace vantor::agent
