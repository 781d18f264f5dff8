#include "agent/configuration/output_settings.h"

#include "agent/configuration/glob.h"

namespace vantor::agent {
namespace {

bool fits(const std::string& name, const std::optional<std::string>& pattern) {
    return !pattern || matchesGlob(name, *pattern);
}

} // namespace

OutputSettings settingsFor(const Configuration& configuration, const OutputDescription& output) {
    std::optional<std::string> wallpaper;
    std::optional<double> maxFps;
    std::optional<bool> enabled;
    for (const OutputRule& rule : configuration.outputs) {
        if (!fits(output.connector, rule.connector) || !fits(output.make, rule.make) ||
            !fits(output.model, rule.model)) {
            continue;
        }
        wallpaper = wallpaper ? wallpaper : rule.wallpaper;
        maxFps = maxFps ? maxFps : rule.maxFps;
        enabled = enabled ? enabled : rule.enabled;
    }
    return {.wallpaper = std::move(wallpaper),
            .maxFps = maxFps ? maxFps : configuration.maxFps,
            .isEnabled = enabled.value_or(true)};
}

} // namespace vantor::agent
