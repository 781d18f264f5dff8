#include "log/ls_log.h"

#include "log/log_writer.h"
#include "platform/bundle.h"
#include "platform/platform.h"

#include <cstdlib>

namespace vantor::LSLog {
namespace {

LogWriter& writer() {
    // Never destroyed: other threads may still write while the process ends.
    static LogWriter& instance = *[] {
        Platform& system = platform();
        auto* made =
            new LogWriter(system.unifiedLog().logger("com.nimbara.app.lockscreen", "extension"),
                          system.bundle().homeDirectory() / "Library" / "Logs" / "lockscreen.log");
        std::atexit(flush);
        return made;
    }();
    return instance;
}

} // namespace

void write(std::string_view message) { writer().write(message); }

void flush() { writer().flush(); }

} // namespace vantor::LSLog
