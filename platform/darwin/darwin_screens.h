#pragma once

#include "platform/darwin/native_ref.h"
#include "platform/screens.h"

namespace vantor::darwin {

/// NSScreen.
class DarwinScreens : public Screens {
  public:
    std::vector<Screen*> screens() override;

  private:
    /// The system's list that `screens_` stands for. It changes with a turn of the main loop only.
    NativeRef listed_;
    std::vector<std::unique_ptr<Screen>> screens_;
};

} // namespace vantor::darwin
