#include "agent/wallpaper.h"

#include <utility>

namespace vantor::agent {

Wallpaper::Wallpaper(const UUID& identifier, Events events)
    : identifier_(identifier), events_(std::make_shared<const Events>(std::move(events))) {}

void Wallpaper::tell(ExtensionSession& session, const WallpaperState& state) {
    if (told_ == state) {
        return;
    }
    const bool isKnown =
        told_ && told_->choice == state.choice && told_->displayID == state.displayID;
    told_ = state;
    if (isKnown) {
        update(session, state);
    } else {
        acquire(session, state);
    }
}

void Wallpaper::repeat(ExtensionSession& session) {
    if (told_) {
        update(session, *told_);
    }
}

void Wallpaper::acquire(ExtensionSession& session, const WallpaperState& state) {
    session.acquire(
        identifier_,
        {.configuration = state.choice,
         .size = state.size,
         .scaleFactor = state.scale,
         .directDisplayID = state.displayID,
         .isPreview = false,
         .presentationMode = state.presentationMode,
         .activityState = state.activityState,
         .cacheDirectory = std::nullopt},
        [events = std::weak_ptr(events_)](const Result<std::uint32_t, std::string>& contextID) {
            const auto told = events.lock();
            if (!told) {
                return;
            }
            if (contextID) {
                told->acquired(contextID.value());
            } else {
                told->refused(contextID.error());
            }
        });
}

void Wallpaper::update(ExtensionSession& session, const WallpaperState& state) {
    session.update(identifier_,
                   {.presentationMode = state.presentationMode,
                    .activityState = state.activityState,
                    .size = state.size,
                    .scaleFactor = state.scale},
                   [events = std::weak_ptr(events_)](const std::optional<Error>& error) {
                       if (const auto told = events.lock(); told && error) {
                           told->refused(error->message);
                       }
                   });
}

} // namespace vantor::agent
