#pragma once
// The system's log on Linux: the journal where it listens, standard error otherwise.

#include "platform/unified_log.h"

namespace vantor {

class LinuxUnifiedLog : public UnifiedLog {
  public:
    std::unique_ptr<UnifiedLogger> logger(std::string_view subsystem,
                                          std::string_view category) override;
};

} // namespace vantor
