#pragma once
// Accepts the agent's connections. Any thread.

#include "extension/services.h"
#include "platform/app_extension.h"

#include <memory>

namespace vantor {

class LockScreenConfiguration : public AppExtensionConfiguration {
  public:
    explicit LockScreenConfiguration(const Services& services) : services_(services) {}

    /// Refuses a peer that fails the caller check; that connection is left as it came.
    bool accept(const std::shared_ptr<XPCConnection>& connection) override;

  private:
    const Services services_;
};

} // namespace vantor
