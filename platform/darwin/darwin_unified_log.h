#pragma once

#include "platform/unified_log.h"

namespace vantor::darwin {

/// os_log.
class DarwinUnifiedLog : public UnifiedLog {
  public:
    std::unique_ptr<UnifiedLogger> logger(std::string_view subsystem,
                                          std::string_view category) override;
};

} // namespace vantor::darwin
