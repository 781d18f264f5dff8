#pragma once
// One agent's view of one remote context: what it has been told, and which images it holds. Main
// thread.

#include "platform/linux/layers/linux_metal_layer.h"
#include "platform/linux/layers/record_socket.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

namespace vantor {

class LayerHostLink {
  public:
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

  private:
    struct Shown {
        std::uint32_t layerID;
        std::uint64_t sequence;
    };

    void collect(LinuxLayer& layer, std::uint32_t parent);
    bool sendPictures();
    bool sendTree();
    bool sendFrame(LinuxMetalLayer& layer);
    bool shareImage(const LinuxMetalLayer& layer, const LayerDrawable& drawable);
    bool forgetUnused();

    layerwire::RecordSocket socket_;
    layerwire::TreeRecord tree_{};
    layerwire::TreeRecord sentTree_{};
    bool treeSent_ = false;
    /// The tree's layers in its order; valid during update.
    std::vector<LinuxLayer*> layers_;
    std::vector<std::uint32_t> sharedImages_;
    std::vector<std::uint32_t> sharedPictures_;
    std::vector<Shown> shown_;
    std::vector<std::shared_ptr<LayerDrawable>> held_;
};

} // namespace vantor
