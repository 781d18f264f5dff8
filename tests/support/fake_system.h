#pragma once
// The smaller facilities of the seam: loader, launch, files, peers' identity, notifications,
// pictures, applications and the system's log.

#include "platform/app_extension.h"
#include "platform/bundle.h"
#include "platform/code_identity.h"
#include "platform/images.h"
#include "platform/loader.h"
#include "platform/main_queue.h"
#include "platform/notifications.h"
#include "platform/unified_log.h"
#include "platform/workspace.h"
#include "tests/support/fake_contract.h"
#include "tests/support/temporary_folder.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {

/// Runs no loop: constructs the principal object and returns.
class FakeAppExtensionRuntime : public AppExtensionRuntime {
  public:
    Result<Done, std::string>
    main(const std::function<std::unique_ptr<AppExtension>()>& makePrincipalObject) override;

    /// Why the runtime cannot run, where it cannot.
    std::optional<std::string> failure;
    std::unique_ptr<AppExtension> principal;
};

/// A bundle and two homes in folders that go with it.
class FakeBundle : public Bundle {
  public:
    FakeBundle();

    std::optional<std::string> identifier() const override { return bundleIdentifier; }
    std::optional<std::filesystem::path> resource(std::string_view name, std::string_view extension,
                                                  std::string_view subdirectory) const override;
    std::filesystem::path homeDirectory() const override { return home; }
    std::optional<std::filesystem::path> userDatabaseHome() const override { return userHome; }

    std::filesystem::path resources() const { return folder_.path() / "bundle" / "Resources"; }

  private:
    TemporaryFolder folder_;

  public:
    std::optional<std::string> bundleIdentifier = "com.nimbara.app.lockscreen";
    std::filesystem::path home;
    std::optional<std::filesystem::path> userHome;
};

class FakeCodeIdentity : public CodeIdentity {
  public:
    std::unique_ptr<GuestCode> copyGuest(int processIdentifier) override;
    std::unique_ptr<CodeRequirement> requirement(std::string_view text) override;
    bool checkValidity(const GuestCode& code, const CodeRequirement& requirement) override;

    /// Processes that can be examined, and whether they satisfy the requirement.
    std::map<int, bool> validity;
    bool refusesRequirements = false;
    std::vector<std::string> requirementTexts;
};

/// Pictures in a format of its own; what is written can be read back.
class FakeImages : public Images {
  public:
    bool writePNG(const std::filesystem::path& file, const BGRAPixels& pixels) override;
    std::shared_ptr<const Image> read(const std::filesystem::path& file) override;

    struct Written {
        std::filesystem::path file;
        std::size_t width;
        std::size_t height;
        std::vector<std::uint8_t> bytes;
    };
    std::vector<Written> written;
    /// Nothing is written while set.
    bool refusesWriting = false;
};

class FakeLoader : public Loader {
  public:
    void* symbol(const char* name) override;
    Result<std::shared_ptr<LoadedFramework>, std::string>
    loadFramework(std::string_view path) override;

    std::map<std::string, void*, std::less<>> symbols;
    /// What loading each framework does; one that is not here cannot be loaded.
    std::map<std::string, std::function<void()>, std::less<>> frameworks;
    std::string failure = "cannot open shared object file";
};

class FakeNotifications : public Notifications {
  public:
    explicit FakeNotifications(MainQueue& queue) : queue_(queue) {}

    void observeDistributed(std::string_view name, std::function<void()> observer) override;
    void observeDarwin(std::string_view name, std::function<void()> observer) override;
    bool postDarwin(std::string_view name) override;

    /// As from another process: distributed ones arrive with the main queue's next turn, Darwin
    /// ones at once.
    void deliverDistributed(std::string_view name);
    void deliverDarwin(std::string_view name);

    std::size_t distributedObservers(std::string_view name) const;
    std::size_t darwinObservers(std::string_view name) const;
    std::vector<std::string> posted;
    /// Nobody can be told while false.
    bool reachable = true;

  private:
    using Observers = std::multimap<std::string, std::function<void()>, std::less<>>;

    MainThreadCheck mainThread_;
    MainQueue& queue_;
    Observers distributed_;
    Observers darwin_;
};

/// Keeps what was logged. Any thread.
class FakeUnifiedLog : public UnifiedLog {
  public:
    std::unique_ptr<UnifiedLogger> logger(std::string_view subsystem,
                                          std::string_view category) override;

    struct Line {
        std::string subsystem;
        std::string category;
        std::string message;
    };
    std::vector<Line> lines() const;
    std::vector<std::string> messages() const;
    bool contains(std::string_view message) const;
    void clear();
    void setEnabled(bool enabled);

  private:
    class Logger;
    /// Loggers outlive a reset of the platform.
    struct State {
        std::mutex mutex;
        std::vector<Line> lines;
        bool enabled = true;
    };
    const std::shared_ptr<State> state_ = std::make_shared<State>();
};

class FakeWorkspace : public Workspace {
  public:
    std::optional<std::filesystem::path>
    applicationLocation(std::string_view bundleIdentifier) override;
    void openApplication(const std::filesystem::path& location) override;

    std::map<std::string, std::filesystem::path, std::less<>> applications;
    std::vector<std::filesystem::path> opened;
};

} // namespace vantor
