#pragma once
// The layer system of the extension's process: trees, transactions, the remote contexts that show
// trees elsewhere, and the class "CAContext" through which the core makes them. Main thread.

#include "platform/layers.h"
#include "platform/linux/file_descriptor.h"
#include "platform/linux/layers/layer_host_link.h"
#include "platform/linux/layers/linux_metal_layer.h"
#include "platform/linux/main_loop.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace vantor {

class LinuxLayers final : public Layers, public LayerTransactions {
  public:
    explicit LinuxLayers(MainLoop& loop);
    ~LinuxLayers() override;
    LinuxLayers(const LinuxLayers&) = delete;
    LinuxLayers& operator=(const LinuxLayers&) = delete;

    LayerRef makeLayer() override;
    std::shared_ptr<MetalLayer> makeMetalLayer() override;
    LayerTransactions& transactions() override { return *this; }

    void begin() override { ++depth_; }
    void setDisableActions(bool) override {}
    void commit() override { --depth_; }
    void flush() override;

    /// "CAContext", for the object runtime. Lives as long as this.
    const ObjectClass& remoteContextClass() const { return *contextClass_; }

    /// A host for that remote context: the host's end of its private socket, or nothing when there
    /// is no such context.
    std::optional<FileDescriptor> attach(std::uint32_t contextID);

    // For the context's object.
    std::uint32_t addContext();
    void setRoot(std::uint32_t contextID, std::shared_ptr<LinuxLayer> root);
    void removeContext(std::uint32_t contextID);

  private:
    struct Hosting {
        std::unique_ptr<LayerHostLink> link;
        std::unique_ptr<DescriptorWatch> watch;
    };
    struct Context {
        std::shared_ptr<LinuxLayer> root;
        std::vector<std::unique_ptr<Hosting>> hostings;
    };

    void update(Context& context);
    void hostSpoke(std::uint32_t contextID, const Hosting* hosting);
    void framesFinished();
    static void takeFinished(LinuxLayer& layer);

    MainLoop& loop_;
    std::shared_ptr<LayerChanges> changes_ = std::make_shared<LayerChanges>();
    std::shared_ptr<FrameSignal> signal_ = std::make_shared<FrameSignal>();
    std::unique_ptr<DescriptorWatch> signalWatch_;
    std::unique_ptr<ObjectClass> contextClass_;
    std::map<std::uint32_t, Context> contexts_;
    /// Open transactions.
    int depth_ = 0;
};

} // namespace vantor
