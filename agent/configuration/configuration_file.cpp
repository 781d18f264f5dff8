#include "agent/configuration/configuration_file.h"

#include "platform/linux/system/user_home.h"
#include "platform/linux/whole_file.h"
#include "platform/suggestion.h"

#include <toml++/toml.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>
#include <tuple>

namespace vantor::agent {
namespace {

constexpr std::size_t kMaxFileBytes = 1U << 20U;
constexpr std::size_t kMaxShownCharacters = 40;

constexpr std::string_view kMaxFps = "max_fps";
constexpr std::string_view kDesktop = "desktop";
constexpr std::string_view kPauseWhenCovered = "pause_when_covered";
constexpr std::string_view kPauseOnBattery = "pause_on_battery";
constexpr std::string_view kOutput = "output";
constexpr std::string_view kConnector = "connector";
constexpr std::string_view kMake = "make";
constexpr std::string_view kModel = "model";
constexpr std::string_view kWallpaper = "wallpaper";
constexpr std::string_view kEnabled = "enabled";

constexpr std::array kTopKeys{kMaxFps, kDesktop, kPauseWhenCovered, kPauseOnBattery, kOutput};
constexpr std::array kOutputKeys{kConnector, kMake, kModel, kWallpaper, kMaxFps, kEnabled};

std::string placed(std::string_view file, const toml::source_position& place,
                   std::string_view sentence) {
    std::ostringstream text;
    text << file << ':' << place.line << ':' << place.column << ": " << sentence;
    return text.str();
}

/// A value as the file has it, near enough and short.
std::string shown(const toml::node& value) {
    if (value.is_table()) {
        return "a table";
    }
    if (value.is_array()) {
        return "an array";
    }
    std::ostringstream text;
    text << toml::toml_formatter(value, toml::format_flags::none);
    std::string out = std::move(text).str();
    if (out.size() > kMaxShownCharacters) {
        std::size_t end = kMaxShownCharacters;
        while (end > 0 && (static_cast<unsigned char>(out[end]) & 0xc0U) == 0x80) {
            --end;
        }
        out = out.substr(0, end) + "…";
    }
    return out;
}

/// Reads the values of a parsed file and keeps the mistake that stands first in it: the parser
/// hands tables over in the order of their keys.
class Reader {
  public:
    Configuration read(const toml::table& root) {
        expectKeys(root, kTopKeys, "");
        Configuration configuration;
        readFps(root, kMaxFps, configuration.maxFps);
        if (const auto* value = root.get(kDesktop)) {
            const auto text = value->value_exact<std::string_view>();
            if (text != "animated" && text != "still") {
                wrong(*value, kDesktop, "\"animated\" or \"still\"");
            }
            configuration.animateDesktop = text != "still";
        }
        configuration.pauseWhenCovered =
            readFlag(root, kPauseWhenCovered).value_or(configuration.pauseWhenCovered);
        configuration.pauseOnBattery =
            readFlag(root, kPauseOnBattery).value_or(configuration.pauseOnBattery);
        if (const auto* value = root.get(kOutput)) {
            readOutputs(*value, configuration.outputs);
        }
        return configuration;
    }

    /// The place and the sentence of the first mistake.
    const std::optional<std::pair<toml::source_position, std::string>>& mistake() const {
        return mistake_;
    }

  private:
    void readOutputs(const toml::node& value, std::vector<OutputRule>& rules) {
        const toml::array* list = value.as_array();
        if (list == nullptr) {
            wrong(value, kOutput, "written as [[output]]");
            return;
        }
        for (const toml::node& entry : *list) {
            if (const toml::table* table = entry.as_table()) {
                rules.push_back(readRule(*table));
            } else {
                wrong(entry, kOutput, "written as [[output]]");
            }
        }
    }

    OutputRule readRule(const toml::table& table) {
        expectKeys(table, kOutputKeys, " in [[output]]");
        OutputRule rule;
        rule.connector = readText(table, kConnector);
        rule.make = readText(table, kMake);
        rule.model = readText(table, kModel);
        rule.wallpaper = readText(table, kWallpaper);
        if (rule.wallpaper && rule.wallpaper->empty()) {
            wrong(*table.get(kWallpaper), kWallpaper, "the identifier of an entry");
        }
        readFps(table, kMaxFps, rule.maxFps);
        rule.enabled = readFlag(table, kEnabled);
        return rule;
    }

    template <std::size_t N>
    void expectKeys(const toml::table& table, const std::array<std::string_view, N>& known,
                    const std::string& where) {
        for (const auto& [key, value] : table) {
            if (std::ranges::find(known, key.str()) == known.end()) {
                note(key.source().begin, std::string(key.str()) + " is not known" + where +
                                             didYouMean(key.str(), known));
            }
        }
    }

    std::optional<std::string> readText(const toml::table& table, std::string_view key) {
        const toml::node* value = table.get(key);
        if (value != nullptr && !value->is_string()) {
            wrong(*value, key, "a string");
        }
        return value != nullptr ? value->value_exact<std::string>() : std::nullopt;
    }

    std::optional<bool> readFlag(const toml::table& table, std::string_view key) {
        const toml::node* value = table.get(key);
        if (value != nullptr && !value->is_boolean()) {
            wrong(*value, key, "true or false");
        }
        return value != nullptr ? value->value_exact<bool>() : std::nullopt;
    }

    void readFps(const toml::table& table, std::string_view key, std::optional<double>& fps) {
        const toml::node* value = table.get(key);
        if (value == nullptr) {
            return;
        }
        fps = value->is_number() ? value->value<double>() : std::nullopt;
        if (!fps || !std::isfinite(*fps)) {
            wrong(*value, key, "a number");
        } else if (*fps <= 0) {
            wrong(*value, key, "above 0");
        }
    }

    void wrong(const toml::node& value, std::string_view key, std::string_view wanted) {
        note(value.source().begin,
             std::string(key) + " is " + shown(value) + ", but must be " + std::string(wanted));
    }

    void note(const toml::source_position& place, std::string sentence) {
        if (!mistake_ || std::tie(place.line, place.column) <
                             std::tie(mistake_->first.line, mistake_->first.column)) {
            mistake_.emplace(place, std::move(sentence));
        }
    }

    std::optional<std::pair<toml::source_position, std::string>> mistake_;
};

Result<toml::table, std::string> parse(std::string_view text, std::string_view fileName) {
    try {
        return toml::parse(text);
    } catch (const toml::parse_error& error) {
        return Failure{placed(fileName, error.source().begin, error.description())};
    }
}

} // namespace

std::optional<std::filesystem::path> configurationFile() {
    const auto folder = userConfigurationFolder();
    return folder ? std::optional(*folder / "vantor/agent.toml") : std::nullopt;
}

Result<Configuration, std::string> parseConfiguration(std::string_view text,
                                                      std::string_view fileName) {
    const auto root = parse(text, fileName);
    if (!root) {
        return Failure{root.error()};
    }
    Reader reader;
    Configuration configuration = reader.read(root.value());
    if (const auto& mistake = reader.mistake()) {
        return Failure{placed(fileName, mistake->first, mistake->second)};
    }
    return configuration;
}

Result<Configuration, std::string> loadConfiguration(const std::filesystem::path& file) {
    const auto text = readFile(file, kMaxFileBytes);
    if (!text) {
        return Failure{text.error()};
    }
    return text.value() ? parseConfiguration(*text.value(), file.string()) : Configuration{};
}

} // namespace vantor::agent
