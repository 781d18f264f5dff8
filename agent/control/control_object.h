#pragma once
// The object that a running agent offers on its connections. Main thread.

#include "agent/control/controller.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <systemd/sd-bus.h>

namespace vantor::agent {

class ControlObject {
  public:
    /// The controller outlives it, and is asked for nothing yet.
    explicit ControlObject(Controller& controller);
    ControlObject(const ControlObject&) = delete;
    ControlObject& operator=(const ControlObject&) = delete;

    Controller& controller() const { return controller_; }

    /// Offers it for as long as the connection lives; a negative error number when it cannot.
    int offerOn(sd_bus* bus);

    /// The properties that have another value than at the last call; at the first, none.
    std::vector<const char*> takeChanges();

    /// How many callers wait for the picker.
    const std::shared_ptr<std::size_t>& pickerCalls() const { return pickerCalls_; }

  private:
    Controller& controller_;
    /// What the properties said last.
    std::optional<AgentStatus> told_;
    std::shared_ptr<std::size_t> pickerCalls_ = std::make_shared<std::size_t>(0);
};

} // namespace vantor::agent
