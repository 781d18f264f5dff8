#pragma once
// Arguments that several commands take.

#include "platform/geometry.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace vantor {

/// A display's identifier: decimal digits, from 0 to 4294967295.
std::optional<std::uint32_t> parseDisplay(std::string_view text);

/// Adds an argument, or an option when `name` begins with dashes, that takes a display's
/// identifier. `display` lives as long as the command.
CLI::Option* addDisplay(CLI::App& app, const std::string& name, std::uint32_t& display);

/// The SHADER argument.
CLI::Option* addShader(CLI::App& app, std::string& shader);

/// A picture's size and the moment it shows: `--size` and `--time`. Lives as long as the command.
class FrameOptions {
  public:
    explicit FrameOptions(std::string size) : size_(std::move(size)) {}

    void addTo(CLI::App& app);

    const Size& size() const { return pixels_; }
    float time() const { return static_cast<float>(time_); }
    /// Reads what was given; why it makes no sense, or nothing.
    std::optional<std::string> parse();

  private:
    std::string size_;
    Size pixels_;
    double time_ = 12;
};

} // namespace vantor
