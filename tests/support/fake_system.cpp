#include "tests/support/fake_system.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

namespace vantor {
namespace {

constexpr std::string_view kPictureMark = "fake picture ";

class FakeImage : public Image {
  public:
    FakeImage(std::size_t width, std::size_t height) : width_(width), height_(height) {}
    std::size_t width() const override { return width_; }
    std::size_t height() const override { return height_; }

  private:
    std::size_t width_;
    std::size_t height_;
};

struct FakeGuest : GuestCode {
    explicit FakeGuest(bool satisfies) : valid(satisfies) {}
    bool valid;
};

} // namespace

Result<Done, std::string> FakeAppExtensionRuntime::main(
    const std::function<std::unique_ptr<AppExtension>()>& makePrincipalObject) {
    if (failure) {
        return Failure{*failure};
    }
    fakeRequire(principal == nullptr, "the principal object is constructed once");
    principal = makePrincipalObject();
    return Done{};
}

FakeBundle::FakeBundle() : home(folder_.path() / "container"), userHome(folder_.path() / "user") {
    std::filesystem::create_directories(home);
    std::filesystem::create_directories(*userHome);
    std::filesystem::create_directories(resources());
}

std::optional<std::filesystem::path> FakeBundle::resource(std::string_view name,
                                                          std::string_view extension,
                                                          std::string_view subdirectory) const {
    auto file = resources() / subdirectory / (std::string(name) + "." + std::string(extension));
    std::error_code failed;
    return std::filesystem::is_regular_file(file, failed) ? std::optional(std::move(file))
                                                          : std::nullopt;
}

std::unique_ptr<GuestCode> FakeCodeIdentity::copyGuest(int processIdentifier) {
    const auto known = validity.find(processIdentifier);
    return known != validity.end() ? std::make_unique<FakeGuest>(known->second) : nullptr;
}

std::unique_ptr<CodeRequirement> FakeCodeIdentity::requirement(std::string_view text) {
    requirementTexts.emplace_back(text);
    return refusesRequirements ? nullptr : std::make_unique<CodeRequirement>();
}

bool FakeCodeIdentity::checkValidity(const GuestCode& code, const CodeRequirement&) {
    const auto* guest = dynamic_cast<const FakeGuest*>(&code);
    fakeRequire(guest != nullptr, "code is checked on its own platform");
    return guest->valid;
}

bool FakeImages::writePNG(const std::filesystem::path& file, const BGRAPixels& pixels) {
    fakeRequire(pixels.bytesPerRow >= pixels.width * 4 &&
                    pixels.bytes.size() >= pixels.bytesPerRow * pixels.height,
                "the buffer holds the picture");
    if (refusesWriting) {
        return false;
    }
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << kPictureMark << pixels.width << ' ' << pixels.height << '\n';
    stream.close();
    if (!stream) {
        return false;
    }
    written.push_back({.file = file,
                       .width = pixels.width,
                       .height = pixels.height,
                       .bytes = {pixels.bytes.begin(), pixels.bytes.end()}});
    return true;
}

std::shared_ptr<const Image> FakeImages::read(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    std::string mark(kPictureMark.size(), '\0');
    stream.read(mark.data(), static_cast<std::streamsize>(mark.size()));
    std::size_t width = 0;
    std::size_t height = 0;
    stream >> width >> height;
    if (!stream || mark != kPictureMark) {
        return nullptr;
    }
    return std::make_shared<FakeImage>(width, height);
}

void* FakeLoader::symbol(const char* name) {
    const auto found = symbols.find(name);
    return found != symbols.end() ? found->second : nullptr;
}

Result<std::shared_ptr<LoadedFramework>, std::string>
FakeLoader::loadFramework(std::string_view path) {
    const auto found = frameworks.find(path);
    if (found == frameworks.end()) {
        return Failure{failure};
    }
    if (found->second) {
        found->second();
    }
    return std::make_shared<LoadedFramework>();
}

void FakeNotifications::observeDistributed(std::string_view name, std::function<void()> observer) {
    mainThread_.require("notifications are observed on the main thread");
    distributed_.emplace(name, std::move(observer));
}

void FakeNotifications::observeDarwin(std::string_view name, std::function<void()> observer) {
    mainThread_.require("notifications are observed on the main thread");
    darwin_.emplace(name, std::move(observer));
}

bool FakeNotifications::postDarwin(std::string_view name) {
    if (!reachable) {
        return false;
    }
    posted.emplace_back(name);
    return true;
}

void FakeNotifications::deliverDistributed(std::string_view name) {
    const auto [first, last] = distributed_.equal_range(name);
    for (auto observer = first; observer != last; ++observer) {
        queue_.async(observer->second);
    }
}

void FakeNotifications::deliverDarwin(std::string_view name) {
    const auto [first, last] = darwin_.equal_range(name);
    for (auto observer = first; observer != last; ++observer) {
        observer->second();
    }
}

std::size_t FakeNotifications::distributedObservers(std::string_view name) const {
    return distributed_.count(name);
}

std::size_t FakeNotifications::darwinObservers(std::string_view name) const {
    return darwin_.count(name);
}

class FakeUnifiedLog::Logger : public UnifiedLogger {
  public:
    Logger(std::shared_ptr<State> state, std::string_view subsystem, std::string_view category)
        : state_(std::move(state)), subsystem_(subsystem), category_(category) {}

    bool isDefaultLevelEnabled() const override {
        const std::lock_guard lock(state_->mutex);
        return state_->enabled;
    }
    void write(std::string_view message) override {
        const std::lock_guard lock(state_->mutex);
        state_->lines.push_back({subsystem_, category_, std::string(message)});
    }

  private:
    const std::shared_ptr<State> state_;
    const std::string subsystem_;
    const std::string category_;
};

std::unique_ptr<UnifiedLogger> FakeUnifiedLog::logger(std::string_view subsystem,
                                                      std::string_view category) {
    return std::make_unique<Logger>(state_, subsystem, category);
}

std::vector<FakeUnifiedLog::Line> FakeUnifiedLog::lines() const {
    const std::lock_guard lock(state_->mutex);
    return state_->lines;
}

std::vector<std::string> FakeUnifiedLog::messages() const {
    std::vector<std::string> texts;
    for (Line& line : lines()) {
        texts.push_back(std::move(line.message));
    }
    return texts;
}

bool FakeUnifiedLog::contains(std::string_view message) const {
    const auto texts = messages();
    return std::find(texts.begin(), texts.end(), message) != texts.end();
}

void FakeUnifiedLog::clear() {
    const std::lock_guard lock(state_->mutex);
    state_->lines.clear();
    state_->enabled = true;
}

void FakeUnifiedLog::setEnabled(bool enabled) {
    const std::lock_guard lock(state_->mutex);
    state_->enabled = enabled;
}

std::optional<std::filesystem::path>
FakeWorkspace::applicationLocation(std::string_view bundleIdentifier) {
    const auto found = applications.find(bundleIdentifier);
    return found != applications.end() ? std::optional(found->second) : std::nullopt;
}

void FakeWorkspace::openApplication(const std::filesystem::path& location) {
    opened.push_back(location);
}

} // namespace vantor
