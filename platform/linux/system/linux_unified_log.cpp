#include "platform/linux/system/linux_unified_log.h"

#include <string>
#include <sys/uio.h>
#include <syslog.h>
// Every line comes from the same place, whose path is that of the machine that built it.
#define SD_JOURNAL_SUPPRESS_LOCATION
#include <systemd/sd-journal.h>
#include <unistd.h>

namespace vantor {
namespace {

constexpr const char* kJournalSocket = "/run/systemd/journal/socket";

class JournalLogger : public UnifiedLogger {
  public:
    JournalLogger(std::string_view subsystem, std::string_view category)
        : subsystem_("SUBSYSTEM=" + std::string(subsystem)),
          category_("CATEGORY=" + std::string(category)),
          priority_("PRIORITY=" + std::to_string(LOG_NOTICE)) {}

    bool isDefaultLevelEnabled() const override { return true; }

    void write(std::string_view message) override {
        std::string text = "MESSAGE=" + std::string(message);
        const iovec fields[] = {part(text), part(priority_), part(subsystem_), part(category_)};
        sd_journal_sendv(fields, static_cast<int>(std::size(fields)));
    }

  private:
    static iovec part(std::string& text) {
        return {.iov_base = text.data(), .iov_len = text.size()};
    }

    std::string subsystem_;
    std::string category_;
    std::string priority_;
};

class StandardErrorLogger : public UnifiedLogger {
  public:
    StandardErrorLogger(std::string_view subsystem, std::string_view category)
        : prefix_(std::string(subsystem) + " " + std::string(category) + ": ") {}

    bool isDefaultLevelEnabled() const override { return true; }

    void write(std::string_view message) override {
        // One call for each line, so that lines of several processes do not mix.
        const std::string line = prefix_ + std::string(message) + "\n";
        [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
    }

  private:
    std::string prefix_;
};

} // namespace

std::unique_ptr<UnifiedLogger> LinuxUnifiedLog::logger(std::string_view subsystem,
                                                       std::string_view category) {
    if (access(kJournalSocket, W_OK) == 0) {
        return std::make_unique<JournalLogger>(subsystem, category);
    }
    return std::make_unique<StandardErrorLogger>(subsystem, category);
}

} // namespace vantor
