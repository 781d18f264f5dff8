// The one file that knows which platform this is.

#include "platform/linux/archive/archive_keyed_archiving.h"
#include "platform/linux/archive/class_registry.h"
#include "platform/linux/archive/property_list_codec.h"
#include "platform/linux/gpu/vulkan_device.h"
#include "platform/linux/layers/linux_layers.h"
#include "platform/linux/layers/linux_screens.h"
#include "platform/linux/main_loop.h"
#include "platform/linux/system/linux_app_extension.h"
#include "platform/linux/system/linux_bundle.h"
#include "platform/linux/system/linux_code_identity.h"
#include "platform/linux/system/linux_images.h"
#include "platform/linux/system/linux_loader.h"
#include "platform/linux/system/linux_media_clock.h"
#include "platform/linux/system/linux_notifications.h"
#include "platform/linux/system/linux_unified_log.h"
#include "platform/linux/system/linux_workspace.h"
#include "platform/linux/system/system_root.h"
#include "platform/platform.h"

namespace vantor {
namespace {

/// Everything is cheap until it is used: the GPU is opened with the first device, the session bus
/// with the first observer.
class LinuxPlatform : public Platform {
  public:
    LinuxPlatform() { registry_.registerClass(layers_.remoteContextClass()); }

    AppExtensionRuntime& appExtensionRuntime() override { return appExtension_; }
    Bundle& bundle() override { return bundle_; }
    CodeIdentity& codeIdentity() override { return codeIdentity_; }
    gpu::System& gpu() override { return gpu_; }
    Images& images() override { return images_; }
    KeyedArchiving& keyedArchiving() override { return keyedArchiving_; }
    Layers& layers() override { return layers_; }
    Loader& loader() override { return loader_; }
    MainQueue& mainQueue() override { return loop_; }
    MediaClock& mediaClock() override { return mediaClock_; }
    Notifications& notifications() override { return notifications_; }
    ObjectRuntime& objectRuntime() override { return registry_; }
    PropertyListSerialization& propertyLists() override { return propertyLists_; }
    Screens& screens() override { return screens_; }
    UnifiedLog& unifiedLog() override { return unifiedLog_; }
    Workspace& workspace() override { return workspace_; }

  private:
    vulkan::DeviceOptions gpuOptions() {
        vulkan::DeviceOptions options;
        if (const auto identifier = bundle_.identifier()) {
            options.pipelineCache =
                bundle_.homeDirectory() / "Library/Caches" / *identifier / "pipelines.cache";
        }
        const std::shared_ptr<UnifiedLogger> logger =
            unifiedLog_.logger("com.nimbara.vantor", "gpu");
        options.report = [logger](const std::string& sentence) { logger->write(sentence); };
        return options;
    }

    MainLoop loop_;
    ClassRegistry registry_;
    PropertyListCodec propertyLists_;
    ArchiveKeyedArchiving keyedArchiving_;
    LinuxUnifiedLog unifiedLog_;
    LinuxMediaClock mediaClock_;
    LinuxImages images_;
    LinuxWorkspace workspace_;
    LinuxBundle bundle_{runningProgram().parent_path(), propertyLists_};
    LinuxCodeIdentity codeIdentity_{installationPrefix(), installationOwner()};
    LinuxLoader loader_{systemRoot(), registry_};
    LinuxNotifications notifications_{loop_, unifiedLog_};
    vulkan::VulkanSystem gpu_{[this] { return gpuOptions(); }};
    LinuxLayers layers_{loop_};
    LinuxScreens screens_{mediaClock_};
    LinuxAppExtensionRuntime appExtension_{
        loop_,
        registry_,
        {.attach = [this](std::uint32_t contextID) { return layers_.attach(contextID); },
         .screens =
             [this](std::span<const launch::ScreenRecord> records) {
                 screens_.setScreens(records);
             },
         .tick = [this](std::uint32_t displayID) { screens_.tick(displayID); },
         .openThrough =
             [this](std::function<void(const std::string&)> opener) {
                 workspace_.openThrough(std::move(opener));
             },
         .tellLinksThrough =
             [this](LinuxScreens::LinksChanged told) {
                 screens_.setLinksChanged(std::move(told));
             }}};
};

} // namespace

Platform& systemPlatform() {
    // Never destroyed: what it made may be in use until the process ends.
    static Platform& instance = *new LinuxPlatform;
    return instance;
}

} // namespace vantor
