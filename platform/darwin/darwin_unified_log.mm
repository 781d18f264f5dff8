#include "platform/darwin/darwin_system.h"

#include <os/log.h>
#include <string>

namespace vantor::darwin {
namespace {

class OSLogger : public UnifiedLogger {
  public:
    explicit OSLogger(os_log_t log) : log_(log) {}

    bool isDefaultLevelEnabled() const override {
        return os_log_type_enabled(log_, OS_LOG_TYPE_DEFAULT);
    }
    void write(std::string_view message) override {
        os_log_with_type(log_, OS_LOG_TYPE_DEFAULT, "%{public}s", std::string(message).c_str());
    }

  private:
    os_log_t log_;
};

} // namespace

std::unique_ptr<UnifiedLogger> DarwinUnifiedLog::logger(std::string_view subsystem,
                                                        std::string_view category) {
    return std::make_unique<OSLogger>(
        os_log_create(std::string(subsystem).c_str(), std::string(category).c_str()));
}

} // namespace vantor::darwin
