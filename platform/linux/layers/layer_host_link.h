#pragma once
// One agent's view of one remote context: what it has been told, and which images it holds. Main
// thread.

#include "platform/linux/layers/linux_metal_layer.h"
#include "platform/linux/layers/record_socket.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantor {

class LayerHostLink {
  public:
    /// With the environment variable VANTOR_FORCE_SHM set to 1 every frame goes through shared
    /// memory; otherwise those of a device that the host does not draw on.
    explicit LayerHostLink(FileDescriptor socket);
    /// What the host holds goes back to its layers.
    ~LayerHostLink();
    LayerHostLink(const LayerHostLink&) = delete;
    LayerHostLink& operator=(const LayerHostLink&) = delete;

    int descriptor() const { return socket_.descriptor(); }

    /// Tells the host what differs from what it knows: tree, pictures, images, frames. With an
    /// unchanged tree this allocates nothing. False when the host is gone or does not keep up.
    [[nodiscard]] bool update(LinuxLayer* root);

    /// Takes what the host says. False when it is gone or broke the wire.
    [[nodiscard]] bool receive();

    /// Whether the host has said which device it draws on, before which it is sent no frames.
    bool knowsDevice() const { return device_.has_value(); }

  private:
    struct Shown {
        std::uint32_t layerID = 0;
        /// Of the frame that the host was told of last.
        std::uint64_t sequence = 0;
        /// On its way into memory, to be told of then.
        std::shared_ptr<LayerDrawable> copying{};
    };
    struct Device {
        vulkan::DeviceUUID device;
        vulkan::DeviceUUID driver;
    };

    void collect(LinuxLayer& layer, std::uint32_t parent);
    bool sendPictures();
    bool sendTree();
    bool sendFrame(LinuxMetalLayer& layer);
    bool sendFrameInMemory(LinuxMetalLayer& layer, Shown& shown);
    bool announce(const LinuxMetalLayer& layer, Shown& shown,
                  const std::shared_ptr<LayerDrawable>& drawable);
    bool canImportFrom(const vulkan::Context& context) const;
    bool shareImage(const LinuxMetalLayer& layer, const LayerDrawable& drawable);
    bool shareMemory(const LayerDrawable& drawable);
    static void dropCopy(Shown& shown);
    bool forgetUnused();

    layerwire::RecordSocket socket_;
    bool isMemoryForced_;
    layerwire::TreeRecord tree_{};
    layerwire::TreeRecord sentTree_{};
    bool treeSent_ = false;
    std::optional<Device> device_;
    /// The tree's layers in its order; valid during update.
    std::vector<LinuxLayer*> layers_;
    std::vector<std::uint32_t> sharedImages_;
    std::vector<std::uint32_t> sharedPictures_;
    std::vector<Shown> shown_;
    std::vector<std::shared_ptr<LayerDrawable>> held_;
};

} // namespace vantor
