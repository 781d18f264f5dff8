#pragma once

#include "platform/notifications.h"

namespace vantor::darwin {

/// NSDistributedNotificationCenter and the Darwin notify centre.
class DarwinNotifications : public Notifications {
  public:
    void observeDistributed(std::string_view name, std::function<void()> observer) override;
    void observeDarwin(std::string_view name, std::function<void()> observer) override;
    bool postDarwin(std::string_view name) override;
};

} // namespace vantor::darwin
