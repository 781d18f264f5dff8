#pragma once
// Work at the end of the loop's turns, for libraries whose events may have been read from their
// connection by somebody else: their descriptor then wakes nobody.

#include "platform/linux/main_loop.h"

#include <functional>
#include <memory>

struct sd_event_source;

namespace vantor::agent {

/// Runs `work` after whatever else ran on the loop, before it sleeps. Unlike the one of the loop
/// itself there may be any number of them. The work may destroy its own. Main thread.
class TurnEnd {
  public:
    TurnEnd(const MainLoop& loop, std::function<void()> work);
    ~TurnEnd();
    TurnEnd(const TurnEnd&) = delete;
    TurnEnd& operator=(const TurnEnd&) = delete;

  private:
    std::shared_ptr<std::function<void()>> work_;
    sd_event_source* source_ = nullptr;
};

} // namespace vantor::agent
