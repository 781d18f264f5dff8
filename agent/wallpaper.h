#pragma once
// One output's wallpaper as the extension knows it: what was asked for, and the changes that
// follow. Main thread.

#include "agent/extension_session.h"
#include "platform/geometry.h"
#include "platform/uuid.h"

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vantor::agent {

/// What a wallpaper should be now.
struct WallpaperState {
    std::string choice;
    /// Points.
    Size size;
    /// Pixels per point.
    double scale = 1;
    std::uint32_t displayID = 0;
    std::string presentationMode;
    std::string activityState;

    bool operator==(const WallpaperState&) const = default;
};

class Wallpaper {
  public:
    struct Events {
        /// The extension shows it in that remote context, which may be the one of before.
        std::function<void(std::uint32_t contextID)> acquired;
        /// A request was refused; a sentence.
        std::function<void(const std::string&)> refused;
    };

    Wallpaper(const UUID& identifier, Events events);
    Wallpaper(const Wallpaper&) = delete;
    Wallpaper& operator=(const Wallpaper&) = delete;

    /// Asks the session for what differs from what it was told: a wallpaper that it does not have,
    /// or another choice, is acquired, anything else is an update.
    void tell(ExtensionSession& session, const WallpaperState& state);
    /// Tells the session once more what it was told last.
    void repeat(ExtensionSession& session);
    /// Another session knows nothing of it.
    void forget() { told_.reset(); }

    const UUID& identifier() const { return identifier_; }

  private:
    void acquire(ExtensionSession& session, const WallpaperState& state);
    void update(ExtensionSession& session, const WallpaperState& state);

    UUID identifier_;
    /// Shared with answers that may come when this is gone.
    std::shared_ptr<const Events> events_;
    std::optional<WallpaperState> told_;
};

} // namespace vantor::agent
