#include "log/log_writer.h"

#include <cstdio>
#include <utility>

namespace vantor {

LogWriter::LogWriter(std::unique_ptr<UnifiedLogger> logger, const std::filesystem::path& file)
    : logger_(std::move(logger)), file_(file) {}

void LogWriter::write(std::string_view message) {
    if (logger_->isDefaultLevelEnabled()) {
        logger_->write(message);
    }
    std::string line = iso8601(std::chrono::system_clock::now());
    line.reserve(line.size() + message.size() + 2);
    line += ' ';
    line += message;
    line += '\n';
    queue_.async([this, line = std::move(line)] { file_.append(line); });
}

std::string iso8601(std::chrono::system_clock::time_point moment) {
    using namespace std::chrono;
    const auto second = floor<seconds>(moment);
    const auto day = floor<days>(second);
    const year_month_day date(day);
    const hh_mm_ss time(second - day);
    char text[40];
    const int length = std::snprintf(
        text, sizeof text, "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
        static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
        static_cast<int>(time.seconds().count()));
    return {text, static_cast<std::size_t>(length)};
}

} // namespace vantor
