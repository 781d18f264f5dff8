// vantorctl unset, main, non-shader and notify: small changes, and word of a change.

#include "platform/platform.h"
#include "tools/arguments.h"
#include "tools/commands.h"
#include "tools/state_change.h"

#include <CLI/CLI.hpp>

#include <ostream>

namespace vantor {
namespace {

class UnsetCommand : public Command {
  public:
    void describe(CLI::App& app) override { addDisplay(app, "display", display_)->required(); }

    ExitStatus run(Platform& platform, const Console& console) override {
        const std::string display = "display " + std::to_string(display_);
        const auto status =
            changeState(platform, console, [&](StateFile& state) -> Result<Done, std::string> {
                if (!state.unset(display_)) {
                    return Failure{display + " has no shader; nothing changes"};
                }
                return Done{};
            });
        if (status == ExitStatus::done) {
            console.out << display << " has no shader of its own\n";
        }
        return status;
    }

  private:
    std::uint32_t display_ = 0;
};

class MainCommand : public Command {
  public:
    void describe(CLI::App& app) override {
        CLI::Option* display = addDisplay(app, "display", display_);
        CLI::Option* none =
            app.add_flag("--none", none_, "Name no display the main one")->excludes(display);
        app.callback([display, none] {
            if (display->empty() && none->empty()) {
                throw CLI::RequiredError("display or --none");
            }
        });
    }

    ExitStatus run(Platform& platform, const Console& console) override {
        const auto status =
            changeState(platform, console, [&](StateFile& state) -> Result<Done, std::string> {
                state.setMain(none_ ? std::nullopt : std::optional(display_));
                return Done{};
            });
        if (status == ExitStatus::done) {
            console.out << (none_ ? "no display is the main one"
                                  : "display " + std::to_string(display_) + " is the main one")
                        << '\n';
        }
        return status;
    }

  private:
    std::uint32_t display_ = 0;
    bool none_ = false;
};

class NonShaderCommand : public Command {
  public:
    void describe(CLI::App& app) override {
        addDisplay(app, "display", display_)->required();
        app.add_flag("--off", off_, "Let the display show its shader again");
    }

    ExitStatus run(Platform& platform, const Console& console) override {
        const std::string says = "display " + std::to_string(display_) +
                                 (off_ ? " may show a shader" : " shows no shader");
        const auto status =
            changeState(platform, console, [&](StateFile& state) -> Result<Done, std::string> {
                if (!state.setNonShader(display_, !off_)) {
                    return Failure{says + " already; nothing changes"};
                }
                return Done{};
            });
        if (status == ExitStatus::done) {
            console.out << says << '\n';
        }
        return status;
    }

  private:
    std::uint32_t display_ = 0;
    bool off_ = false;
};

class NotifyCommand : public Command {
  public:
    void describe(CLI::App&) override {}

    ExitStatus run(Platform& platform, const Console& console) override {
        return tellExtension(platform)
                   ? ExitStatus::done
                   : console.fail("nobody could be told: there is no session bus");
    }
};

} // namespace

std::unique_ptr<Command> makeUnsetCommand() { return std::make_unique<UnsetCommand>(); }
std::unique_ptr<Command> makeMainCommand() { return std::make_unique<MainCommand>(); }
std::unique_ptr<Command> makeNonShaderCommand() { return std::make_unique<NonShaderCommand>(); }
std::unique_ptr<Command> makeNotifyCommand() { return std::make_unique<NotifyCommand>(); }

} // namespace vantor
