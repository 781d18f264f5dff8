#include "agent/output/x11/resources.h"

#include <algorithm>
#include <charconv>

namespace vantor::agent::x11 {
namespace {

constexpr std::string_view kResourceName = "Xft.dpi:";
/// At which a point is a pixel.
constexpr double kUsualDensity = 96;
constexpr double kMinScale = 0.5;
constexpr double kMaxScale = 8;

} // namespace

double scaleFrom(std::string_view resources) {
    while (!resources.empty()) {
        const std::size_t end = std::min(resources.find('\n'), resources.size());
        std::string_view line = resources.substr(0, end);
        resources.remove_prefix(std::min(end + 1, resources.size()));
        if (!line.starts_with(kResourceName)) {
            continue;
        }
        line.remove_prefix(
            std::min(line.find_first_not_of(" \t", kResourceName.size()), line.size()));
        double density = 0;
        const auto [rest, error] = std::from_chars(line.begin(), line.end(), density);
        if (error == std::errc() && density > 0) {
            return std::clamp(density / kUsualDensity, kMinScale, kMaxScale);
        }
    }
    return 1;
}

} // namespace vantor::agent::x11
