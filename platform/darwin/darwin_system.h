#pragma once
// The smaller facilities of the seam, each over the framework's part that its comment names.

#include "platform/app_extension.h"
#include "platform/bundle.h"
#include "platform/code_identity.h"
#include "platform/darwin/native_ref.h"
#include "platform/images.h"
#include "platform/keyed_archive.h"
#include "platform/loader.h"
#include "platform/main_queue.h"
#include "platform/media_clock.h"
#include "platform/notifications.h"
#include "platform/property_list.h"
#include "platform/screens.h"
#include "platform/unified_log.h"
#include "platform/workspace.h"

namespace vantor::darwin {

/// ExtensionFoundation, through Swift.
class DarwinAppExtensionRuntime : public AppExtensionRuntime {
  public:
    Result<Done, std::string>
    main(const std::function<std::unique_ptr<AppExtension>()>& makePrincipalObject) override;
};

/// NSBundle, NSHomeDirectory and getpwuid.
class DarwinBundle : public Bundle {
  public:
    std::optional<std::string> identifier() const override;
    std::optional<std::filesystem::path> resource(std::string_view name, std::string_view extension,
                                                  std::string_view subdirectory) const override;
    std::filesystem::path homeDirectory() const override;
    std::optional<std::filesystem::path> userDatabaseHome() const override;
};

/// Code Signing Services.
class DarwinCodeIdentity : public CodeIdentity {
  public:
    std::unique_ptr<GuestCode> copyGuest(int processIdentifier) override;
    std::unique_ptr<CodeRequirement> requirement(std::string_view text) override;
    bool checkValidity(const GuestCode& code, const CodeRequirement& requirement) override;
};

/// Core Graphics and Image I/O.
class DarwinImages : public Images {
  public:
    bool writePNG(const std::filesystem::path& file, const BGRAPixels& pixels) override;
    std::shared_ptr<const Image> read(const std::filesystem::path& file) override;
};

/// NSKeyedArchiver and NSKeyedUnarchiver. What is archived is a carrier: another class name is an
/// error.
class DarwinKeyedArchiving : public KeyedArchiving {
  public:
    Result<Bytes> archiveRootObject(std::string_view className,
                                    const std::function<void(KeyedEncoder&)>& encode) override;
    Result<std::unique_ptr<KeyedUnarchiver>>
    unarchiver(std::span<const std::uint8_t> archive) override;
};

/// dlsym and dlopen.
class DarwinLoader : public Loader {
  public:
    void* symbol(const char* name) override;
    Result<std::shared_ptr<LoadedFramework>, std::string>
    loadFramework(std::string_view path) override;
};

/// The main dispatch queue, and NSTimer on the main run loop.
class DarwinMainQueue : public MainQueue {
  public:
    void async(std::function<void()> work) override;
    std::shared_ptr<WorkItem> asyncAfter(double seconds, std::function<void()> work) override;
    std::unique_ptr<RepeatingTimer> repeatingTimer(double interval,
                                                   std::function<void()> block) override;
    bool isMainThread() const override;
};

/// CACurrentMediaTime.
class DarwinMediaClock : public MediaClock {
  public:
    double now() const override;
};

/// NSDistributedNotificationCenter and the Darwin notify centre.
class DarwinNotifications : public Notifications {
  public:
    void observeDistributed(std::string_view name, std::function<void()> observer) override;
    void observeDarwin(std::string_view name, std::function<void()> observer) override;
    bool postDarwin(std::string_view name) override;
};

/// NSPropertyListSerialization.
class DarwinPropertyLists : public PropertyListSerialization {
  public:
    Result<PropertyList> read(std::span<const std::uint8_t> bytes) override;
    Bytes writeBinary(const PropertyList& root) override;
};

/// NSScreen.
class DarwinScreens : public Screens {
  public:
    std::vector<Screen*> screens() override;

  private:
    /// The system's list that `screens_` stands for. It changes with a turn of the main loop only.
    NativeRef listed_;
    std::vector<std::unique_ptr<Screen>> screens_;
};

/// os_log.
class DarwinUnifiedLog : public UnifiedLog {
  public:
    std::unique_ptr<UnifiedLogger> logger(std::string_view subsystem,
                                          std::string_view category) override;
};

/// NSWorkspace.
class DarwinWorkspace : public Workspace {
  public:
    std::optional<std::filesystem::path>
    applicationLocation(std::string_view bundleIdentifier) override;
    void openApplication(const std::filesystem::path& location) override;
};

} // namespace vantor::darwin
