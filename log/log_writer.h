#pragma once
// One log: each message goes to the unified log on the caller's thread and, time-stamped, to a file
// on a queue of its own.

#include "log/log_file.h"
#include "log/serial_queue.h"
#include "platform/unified_log.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>

namespace vantor {

/// Any thread.
class LogWriter {
  public:
    LogWriter(std::unique_ptr<UnifiedLogger> logger, const std::filesystem::path& file);

    /// Returns without waiting for the file. Lines stand in the file in the order of the calls.
    void write(std::string_view message);

    /// Waits until the lines written so far have reached the file.
    void flush() { queue_.drain(); }

  private:
    const std::unique_ptr<UnifiedLogger> logger_;
    /// Used on the queue only.
    const LogFile file_;
    /// Last: it ends before the file goes.
    SerialQueue queue_;
};

/// A moment in the default form of ISO 8601, to the second and in UTC: "2024-05-01T12:34:56Z".
std::string iso8601(std::chrono::system_clock::time_point moment);

} // namespace vantor
