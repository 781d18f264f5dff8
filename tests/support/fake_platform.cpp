#include "tests/support/fake_platform.h"

#include "log/ls_log.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace vantor {
namespace {

/// The agent's classes and the key that each reads its payload under.
constexpr std::pair<const char*, const char*> kAgentClasses[] = {
    {"WallpaperIDXPC", "WallpaperID"},
    {"WallpaperCreationRequestXPC", "WallpaperCreationRequest"},
    {"WallpaperUpdateRequestXPC", "WallpaperUpdateRequest"},
    {"WallpaperRemoteContextXPC", "UInt32"},
    {"WallpaperSnapshotXPC", "WallpaperSnapshot"},
    {"WallpaperContentTypeSetXPC", "WallpaperContentTypeSet"},
    {"WallpaperChoiceIDXPC", "WallpaperChoiceID"},
    {"WallpaperChoiceIDsXPC", "WallpaperChoiceIDs"},
    {"WallpaperExtensionChoiceRequestXPC", "WallpaperExtensionChoiceRequest"},
    {"WallpaperChoiceRequestAdditionResultXPC", "WallpaperChoiceRequestAdditionResult"},
    {"WallpaperDebugRequestXPC", "WallpaperDebugRequest"},
    {"WallpaperDebugResponseXPC", "WallpaperDebugResponse"},
    {"WallpaperMigrationVersionXPC", "WallpaperMigrationVersion"},
    {"WallpaperSettingsViewModelsXPC", "WallpaperSettingsViewModels"},
    {"AuditTokenXPC", "AuditToken"},
};

} // namespace

FakePlatform& FakePlatform::shared() {
    // Never destroyed, since the process-wide log writes to it until the end; but its folders go.
    static FakePlatform& instance = *[] {
        auto* made = new FakePlatform;
        installPlatform(made);
        std::atexit([] { shared().parts_.reset(); });
        return made;
    }();
    return instance;
}

void FakePlatform::reset() {
    parts_->mainQueue.clear();
    parts_ = std::make_unique<Parts>();
    unifiedLog_.clear();
}

FakeObjectClass& FakePlatform::addClass(std::string name, std::string payloadKey) {
    auto made = std::make_unique<FakeObjectClass>(std::move(name));
    made->payloadKey = std::move(payloadKey);
    fakeRequire(parts_->objectRuntime.registerClass(*made), "a class has a name of its own");
    parts_->classes.push_back(std::move(made));
    return *parts_->classes.back();
}

FakeRemoteContextClass& FakePlatform::addRemoteContexts() {
    auto made = std::make_unique<FakeRemoteContextClass>();
    FakeRemoteContextClass& added = *made;
    fakeRequire(parts_->objectRuntime.registerClass(added), "a class has a name of its own");
    parts_->classes.push_back(std::move(made));
    return added;
}

void FakePlatform::addAgentClasses() {
    for (const auto& [name, payloadKey] : kAgentClasses) {
        addClass(name, payloadKey);
    }
}

FakeObjectClass& FakePlatform::addedClass(std::string_view name) {
    const auto found =
        std::ranges::find(parts_->classes, name, [](const auto& known) { return known->name(); });
    fakeRequire(found != parts_->classes.end(), "the test has added the class");
    return **found;
}

FakePlatformTest::~FakePlatformTest() {
    // The log's thread must not write into a home that is being removed.
    LSLog::flush();
    platform.reset();
}

std::size_t FakePlatformTest::logged(std::string_view line) const {
    const auto lines = log();
    return static_cast<std::size_t>(std::count(lines.begin(), lines.end(), line));
}

} // namespace vantor
