// The one file that knows which platform this is.

#include "platform/darwin/darwin_layers.h"
#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/darwin_system.h"
#include "platform/darwin/metal_device.h"
#include "platform/platform.h"

namespace vantor {
namespace {

class DarwinPlatform : public Platform {
  public:
    AppExtensionRuntime& appExtensionRuntime() override { return appExtension_; }
    Bundle& bundle() override { return bundle_; }
    CodeIdentity& codeIdentity() override { return codeIdentity_; }
    gpu::System& gpu() override { return gpu_; }
    Images& images() override { return images_; }
    KeyedArchiving& keyedArchiving() override { return keyedArchiving_; }
    Layers& layers() override { return layers_; }
    Loader& loader() override { return loader_; }
    MainQueue& mainQueue() override { return mainQueue_; }
    MediaClock& mediaClock() override { return mediaClock_; }
    Notifications& notifications() override { return notifications_; }
    ObjectRuntime& objectRuntime() override { return objectRuntime_; }
    PropertyListSerialization& propertyLists() override { return propertyLists_; }
    Screens& screens() override { return screens_; }
    UnifiedLog& unifiedLog() override { return unifiedLog_; }
    Workspace& workspace() override { return workspace_; }

  private:
    darwin::DarwinAppExtensionRuntime appExtension_;
    darwin::DarwinBundle bundle_;
    darwin::DarwinCodeIdentity codeIdentity_;
    darwin::MetalSystem gpu_;
    darwin::DarwinImages images_;
    darwin::DarwinKeyedArchiving keyedArchiving_;
    darwin::DarwinLayers layers_;
    darwin::DarwinLoader loader_;
    darwin::DarwinMainQueue mainQueue_;
    darwin::DarwinMediaClock mediaClock_;
    darwin::DarwinNotifications notifications_;
    darwin::DarwinObjectRuntime objectRuntime_;
    darwin::DarwinPropertyLists propertyLists_;
    darwin::DarwinScreens screens_;
    darwin::DarwinUnifiedLog unifiedLog_;
    darwin::DarwinWorkspace workspace_;
};

} // namespace

Platform& systemPlatform() {
    // Never destroyed: what it made may be in use until the process ends.
    static Platform& instance = *new DarwinPlatform;
    return instance;
}

} // namespace vantor
