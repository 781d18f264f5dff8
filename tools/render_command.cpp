// vantorctl render

#include "platform/platform.h"
#include "tools/arguments.h"
#include "tools/commands.h"
#include "tools/drawing.h"
#include "tools/look_options.h"
#include "tools/progress.h"

#include <CLI/CLI.hpp>

namespace vantor {
namespace {

class RenderCommand : public Command {
  public:
    void describe(CLI::App& app) override {
        addShader(app, shader_);
        frame_.addTo(app);
        app.add_option("-o,--out", out_, "The file to write")->required()->type_name("FILE.png");
        look_.addTo(app);
    }

    ExitStatus run(Platform& platform, const Console& console) override {
        const auto look = look_.look();
        if (!look) {
            return console.refuseUsage(look.error());
        }
        if (const auto why = frame_.parse()) {
            return console.refuseUsage(*why);
        }
        const auto shader = findShader(shader_);
        if (!shader) {
            return console.fail(shader.error());
        }
        Progress progress(console);
        progress.say("drawing " + shader.value().name + " …");
        ShaderGPU gpu(platform.gpu(), platform.images());
        const auto drawn =
            drawPNG(gpu, shader.value(),
                    {.look = look.value(), .size = frame_.size(), .time = frame_.time()}, out_);
        progress.clear();
        return drawn ? ExitStatus::done : console.fail(drawn.error());
    }

  private:
    std::string shader_;
    FrameOptions frame_{"1280x720"};
    std::string out_;
    LookOptions look_;
};

} // namespace

std::unique_ptr<Command> makeRenderCommand() { return std::make_unique<RenderCommand>(); }

} // namespace vantor
