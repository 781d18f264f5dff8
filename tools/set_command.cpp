// vantorctl set

#include "platform/platform.h"
#include "tools/arguments.h"
#include "tools/commands.h"
#include "tools/look_options.h"
#include "tools/shader_argument.h"
#include "tools/state_change.h"

#include <CLI/CLI.hpp>

#include <ostream>

namespace vantor {
namespace {

class SetCommand : public Command {
  public:
    void describe(CLI::App& app) override {
        addDisplay(app, "--display", display_)->required();
        addShader(app, shader_);
        app.add_flag("--no-check", noCheck_, "Write a shader that does not compile, too");
        app.add_flag("--quiet", quiet_, "Say nothing when all is well");
        look_.addTo(app);
    }

    ExitStatus run(Platform& platform, const Console& console) override {
        const auto look = look_.look();
        if (!look) {
            return console.refuseUsage(look.error());
        }
        const auto shader = findShader(shader_);
        if (!shader) {
            return console.fail(shader.error());
        }
        if (!noCheck_) {
            if (const auto checked = checkShader(platform.gpu(), shader.value()); !checked) {
                return console.fail(checked.error());
            }
        }
        const auto status =
            changeState(platform, console, [&](StateFile& state) -> Result<Done, std::string> {
                state.set(display_, {.id = shader.value().id,
                                     .source = shader.value().source,
                                     .look = look.value().lookPlist()});
                return Done{};
            });
        if (status == ExitStatus::done && !quiet_) {
            console.out << "display " << display_ << " shows " << shader.value().id << '\n';
        }
        return status;
    }

  private:
    std::uint32_t display_ = 0;
    std::string shader_;
    bool noCheck_ = false;
    bool quiet_ = false;
    LookOptions look_;
};

} // namespace

std::unique_ptr<Command> makeSetCommand() { return std::make_unique<SetCommand>(); }

} // namespace vantor
