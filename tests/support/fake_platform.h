#pragma once
// The whole seam as fakes. One stands for the test program's life; between tests it is reset. What
// is portable in the real platform (property lists, keyed archives, the table of classes) is real.

#include "platform/linux/archive/archive_keyed_archiving.h"
#include "platform/linux/archive/class_registry.h"
#include "platform/linux/archive/property_list_codec.h"
#include "platform/platform.h"
#include "tests/support/fake_gpu.h"
#include "tests/support/fake_layers.h"
#include "tests/support/fake_main_queue.h"
#include "tests/support/fake_objects.h"
#include "tests/support/fake_screens.h"
#include "tests/support/fake_system.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {

class FakePlatform : public Platform {
  public:
    /// The program's one, made and installed on first use.
    static FakePlatform& shared();

    /// Facilities as new; references to the old ones end here. The log keeps taking lines.
    void reset();

    FakeAppExtensionRuntime& appExtensionRuntime() override { return parts_->appExtensionRuntime; }
    FakeBundle& bundle() override { return parts_->bundle; }
    FakeCodeIdentity& codeIdentity() override { return parts_->codeIdentity; }
    FakeGPUSystem& gpu() override { return parts_->gpu; }
    FakeImages& images() override { return parts_->images; }
    KeyedArchiving& keyedArchiving() override { return parts_->keyedArchiving; }
    FakeLayers& layers() override { return parts_->layers; }
    FakeLoader& loader() override { return parts_->loader; }
    FakeMainQueue& mainQueue() override { return parts_->mainQueue; }
    FakeMediaClock& mediaClock() override { return parts_->mediaClock; }
    FakeNotifications& notifications() override { return parts_->notifications; }
    ClassRegistry& objectRuntime() override { return parts_->objectRuntime; }
    PropertyListSerialization& propertyLists() override { return parts_->propertyLists; }
    FakeScreens& screens() override { return parts_->screens; }
    FakeUnifiedLog& unifiedLog() override { return unifiedLog_; }
    FakeWorkspace& workspace() override { return parts_->workspace; }

    /// Makes a class of that name known, decoding itself from `payloadKey`.
    FakeObjectClass& addClass(std::string name, std::string payloadKey = {});
    /// Makes remote layer contexts available.
    FakeRemoteContextClass& addRemoteContexts();
    /// Makes the fifteen classes of the agent known.
    void addAgentClasses();
    /// One that was added, for a test to change.
    FakeObjectClass& addedClass(std::string_view name);

  private:
    FakePlatform() = default;

    /// In an order in which each is destroyed before what it uses.
    struct Parts {
        FakeMediaClock mediaClock;
        FakeMainQueue mainQueue{mediaClock};
        FakeBundle bundle;
        FakeCodeIdentity codeIdentity;
        FakeGPUSystem gpu;
        FakeImages images;
        ArchiveKeyedArchiving keyedArchiving;
        PropertyListCodec propertyLists;
        FakeLayers layers;
        std::vector<std::unique_ptr<FakeObjectClass>> classes;
        ClassRegistry objectRuntime;
        FakeLoader loader;
        FakeNotifications notifications{mainQueue};
        FakeScreens screens;
        FakeWorkspace workspace;
        FakeAppExtensionRuntime appExtensionRuntime;
    };

    FakeUnifiedLog unifiedLog_;
    std::unique_ptr<Parts> parts_ = std::make_unique<Parts>();
};

/// Tests over the fake platform. Members of a derived fixture are gone when it is reset.
class FakePlatformTest : public testing::Test {
  protected:
    FakePlatformTest() : platform(FakePlatform::shared()) {}
    ~FakePlatformTest() override;

    std::vector<std::string> log() const { return platform.unifiedLog().messages(); }
    /// How often that line was logged.
    std::size_t logged(std::string_view line) const;

    FakePlatform& platform;
};

} // namespace vantor
