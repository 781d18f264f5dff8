#include "agent/control/tables.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <utility>

namespace vantor::agent {
namespace {

/// Columns that text takes on a terminal, near enough: its characters.
std::size_t columns(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80; }));
}

/// Rows of cells, set in columns as wide as their widest cell.
class Table {
  public:
    enum class Side { left, right };

    explicit Table(std::vector<Side> sides) : sides_(std::move(sides)) {}
    void add(std::vector<std::string> row) { rows_.push_back(std::move(row)); }

    /// The rows, each below the other with `indent` before it.
    std::string text(std::string_view indent) const {
        std::vector<std::size_t> widths(sides_.size());
        for (const auto& row : rows_) {
            for (std::size_t i = 0; i < row.size(); ++i) {
                widths[i] = std::max(widths[i], columns(row[i]));
            }
        }
        std::string out;
        for (const auto& row : rows_) {
            std::string line(indent);
            for (std::size_t i = 0; i < row.size(); ++i) {
                const std::string rest(widths[i] - columns(row[i]), ' ');
                line += i == 0 ? "" : "  ";
                line += sides_[i] == Side::left ? row[i] + rest : rest + row[i];
            }
            out += line.substr(0, line.find_last_not_of(' ') + 1) + "\n";
        }
        return out;
    }

  private:
    std::vector<Side> sides_;
    std::vector<std::vector<std::string>> rows_;
};

std::string joined(const std::vector<std::string>& words) {
    std::string out;
    for (const std::string& word : words) {
        out += (out.empty() ? "" : ", ") + word;
    }
    return out;
}

std::string mebibytes(std::uint64_t bytes) {
    constexpr std::uint64_t kMebibyte = 1U << 20U;
    return std::to_string((bytes + kMebibyte / 2) / kMebibyte) + " MiB";
}

/// As many digits as the number needs.
std::string number(double value) {
    std::array<char, 32> text{};
    const auto end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
    return {text.data(), end};
}

std::string withOneDecimal(double value) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.1f", value);
    return text.data();
}

std::string agentLine(const AgentStatus& status) {
    std::vector<std::string> words{"vantor-agent " + status.version,
                                   "pid " + std::to_string(status.pid), status.outputKind,
                                   status.isLocked ? "locked" : "unlocked"};
    if (status.isPaused) {
        words.emplace_back("paused");
    }
    if (status.isOnBattery) {
        words.emplace_back("on battery");
    }
    words.push_back(mebibytes(status.memory));
    return joined(words) + "\n";
}

std::string extensionLine(const ExtensionStatus& extension) {
    std::vector<std::string> words;
    if (extension.pid) {
        words = {"extension", "pid " + std::to_string(*extension.pid), mebibytes(extension.memory)};
    } else {
        words = {"extension", "not running"};
    }
    if (extension.restarts > 0) {
        words.push_back(std::to_string(extension.restarts) +
                        (extension.restarts == 1 ? " restart" : " restarts"));
    }
    if (!extension.lastEnd.empty()) {
        words.push_back("it " + extension.lastEnd);
    }
    return joined(words) + "\n";
}

std::string size(const OutputStatus& output) {
    const std::string pixels = std::to_string(output.width) + "x" + std::to_string(output.height);
    return output.scale == 1 ? pixels : pixels + "@" + number(output.scale);
}

std::string outputTable(const std::vector<OutputStatus>& outputs) {
    using enum Table::Side;
    Table table({left, left, left, right, left, left, left, right, right, left});
    table.add({"DISPLAY", "OUTPUT", "SIZE", "HZ", "ENTRY", "MODE", "STATE", "FPS", "FRAMES",
               "PAUSED BY"});
    for (const OutputStatus& output : outputs) {
        table.add({std::to_string(output.display), output.connector, size(output),
                   number(output.refreshRate),
                   output.choice + (output.setAside ? " (set aside)" : ""), output.presentationMode,
                   output.activityState, withOneDecimal(output.framesPerSecond),
                   std::to_string(output.frames), joined(output.pauses)});
    }
    return table.text("");
}

std::string troubles(const AgentStatus& status) {
    std::string out;
    for (const OutputStatus& output : status.outputs) {
        for (const std::string& sentence : {output.setAside.value_or(""), output.trouble}) {
            if (!sentence.empty()) {
                out += output.connector + ": " + sentence + "\n";
            }
        }
    }
    if (!status.configurationError.empty()) {
        out += status.configurationError + "\n";
    }
    return out;
}

} // namespace

std::string statusTable(const AgentStatus& status) {
    std::string out = agentLine(status) + extensionLine(status.extension) + "\n";
    out += status.outputs.empty() ? "no output\n" : outputTable(status.outputs);
    if (const std::string sentences = troubles(status); !sentences.empty()) {
        out += "\n" + sentences;
    }
    return out;
}

std::string pickerTable(const Picker& picker) {
    using enum Table::Side;
    std::string out;
    for (const PickerGroup& group : picker.desktop) {
        Table table({left, left, left});
        for (const PickerItem& item : group.items) {
            table.add({item.id, item.name, item.thumbnail});
        }
        out += group.name + " (" + group.id + ")\n" + table.text("  ");
    }
    return out;
}

} // namespace vantor::agent
