#pragma once
// The options of a command that describe a look: speed, colours, parameters and custom slots.

#include "platform/result.h"
#include "shaders/shader_uniforms.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace vantor {

/// What the command line said, as text. Lives as long as the command that it is registered with.
class LookOptions {
  public:
    /// Adds the options to a command.
    void addTo(CLI::App& command);

    /// The look they describe, from the defaults. The error is a sentence that names the option.
    Result<ShaderUniforms, std::string> look() const;

  private:
    std::optional<double> speed_;
    std::string tint_;
    std::string color1_;
    std::string color2_;
    std::string color3_;
    std::string background_;
    std::string params_;
    std::vector<std::string> custom_;
};

} // namespace vantor
