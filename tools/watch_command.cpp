// vantorctl watch. The one command that waits, and so the one that has a loop of its own.

#include "platform/linux/file_changes.h"
#include "platform/linux/main_loop.h"
#include "platform/platform.h"
#include "tools/arguments.h"
#include "tools/commands.h"
#include "tools/live_shader.h"
#include "tools/look_options.h"

#include <CLI/CLI.hpp>

#include <csignal>
#include <memory>
#include <ostream>

namespace vantor {
namespace {

/// An editor that saves by renaming touches the name several times; reading waits until it is done.
constexpr double kSettlingSeconds = 0.05;

class WatchCommand : public Command {
  public:
    void describe(CLI::App& app) override {
        addDisplay(app, "--display", display_)->required();
        app.add_option("file", file_, "The source file")->required()->type_name("FILE.metal");
        look_.addTo(app);
    }

    ExitStatus run(Platform& platform, const Console& console) override {
        const auto look = look_.look();
        if (!look) {
            return console.refuseUsage(look.error());
        }
        if (const auto readable = readShaderFile(file_); !readable) {
            return console.fail(readable.error());
        }
        MainLoop loop;
        // Before the GPU's threads, which would take the signals otherwise.
        for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
            loop.onSignal(signal, [&loop](int) { loop.stop(0); });
        }
        LiveShader shader(file_, display_, look.value().lookPlist());
        std::shared_ptr<WorkItem> reading;
        const auto changes = FileChanges::watch(loop, file_, [&] {
            if (reading) {
                reading->cancel();
            }
            reading = loop.asyncAfter(kSettlingSeconds, [&] { shader.reload(platform, console); });
        });
        if (!changes) {
            return console.fail(changes.error());
        }
        console.out << "watching " << file_ << "; Ctrl-C ends\n" << std::flush;
        shader.reload(platform, console);
        loop.run();
        console.out << (console.showsProgress ? "\n" : "") << "the watch ends; display " << display_
                    << (shader.shown() ? " keeps " + *shader.shown() : " was not changed") << '\n';
        return ExitStatus::done;
    }

  private:
    std::uint32_t display_ = 0;
    std::string file_;
    LookOptions look_;
};

} // namespace

std::unique_ptr<Command> makeWatchCommand() { return std::make_unique<WatchCommand>(); }

} // namespace vantor
