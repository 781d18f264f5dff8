#pragma once
// The seam as a whole: every facility, from one object. Facilities are made on first use and live
// as long as the platform. Nothing above this folder knows which platform is installed.

namespace vantor {

class AppExtensionRuntime;
class Bundle;
class CodeIdentity;
class Images;
class KeyedArchiving;
class Layers;
class Loader;
class MainQueue;
class MediaClock;
class Notifications;
class ObjectRuntime;
class PropertyListSerialization;
class Screens;
class UnifiedLog;
class Workspace;
namespace gpu {
class System;
}

class Platform {
  public:
    virtual ~Platform() = default;

    virtual AppExtensionRuntime& appExtensionRuntime() = 0;
    virtual Bundle& bundle() = 0;
    virtual CodeIdentity& codeIdentity() = 0;
    virtual gpu::System& gpu() = 0;
    virtual Images& images() = 0;
    virtual KeyedArchiving& keyedArchiving() = 0;
    virtual Layers& layers() = 0;
    virtual Loader& loader() = 0;
    virtual MainQueue& mainQueue() = 0;
    virtual MediaClock& mediaClock() = 0;
    virtual Notifications& notifications() = 0;
    virtual ObjectRuntime& objectRuntime() = 0;
    virtual PropertyListSerialization& propertyLists() = 0;
    virtual Screens& screens() = 0;
    virtual UnifiedLog& unifiedLog() = 0;
    virtual Workspace& workspace() = 0;
};

/// The operating system's own platform, made on first use. The one function that each platform's
/// folder defines; programs install it first thing in main.
Platform& systemPlatform();

/// The installed platform, which the process-wide objects are built from. Any thread. Using it
/// before one is installed stops the process.
Platform& platform();

/// Installs a platform. Process-wide objects that were built from the one before keep it. Not while
/// other threads run.
void installPlatform(Platform* platform);

} // namespace vantor
