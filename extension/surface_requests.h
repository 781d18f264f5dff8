#pragma once
// The main-queue half of the agent's requests for surfaces. Main thread only.

#include "bridge/request_decoding.h"
#include "extension/services.h"
#include "platform/uuid.h"
#include "platform/xpc.h"

#include <optional>

namespace vantor {

/// Shows a wallpaper under `id`, on a new surface or on the one that is there, and replies with its
/// remote context. The size must be finite and fit 64-bit integers.
void acquireOnMain(const Services& services, const UUID& id,
                   const PrivateBridge::Creation& creation, Reply reply);

/// Changes the surface under `id`, or every surface when there is none under it.
void updateOnMain(const Services& services, const std::optional<UUID>& id,
                  const PrivateBridge::Update& update, Reply reply);

/// Lets the surface under `id` go after its grace period.
void invalidateOnMain(const Services& services, const std::optional<UUID>& id, Reply reply);

/// Replies with what the wallpaper picker shows.
void provideSettingsViewModelsOnMain(const Services& services, Reply reply);

} // namespace vantor
