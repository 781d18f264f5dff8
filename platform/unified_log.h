#pragma once
// The system's log.
//   Linux: journal fields SUBSYSTEM, CATEGORY and PRIORITY; standard error where no journal
//   listens. macOS: os_log.

#include <memory>
#include <string_view>

namespace vantor {

/// A destination with a subsystem and a category. Any thread.
class UnifiedLogger {
  public:
    virtual ~UnifiedLogger() = default;
    /// Whether messages of the default level are kept.
    virtual bool isDefaultLevelEnabled() const = 0;
    /// Writes a public message (nothing is redacted) at the default level.
    virtual void write(std::string_view message) = 0;
};

class UnifiedLog {
  public:
    virtual ~UnifiedLog() = default;
    virtual std::unique_ptr<UnifiedLogger> logger(std::string_view subsystem,
                                                  std::string_view category) = 0;
};

} // namespace vantor
