// vantorctl check

#include "platform/gpu.h"
#include "platform/platform.h"
#include "tools/commands.h"
#include "tools/shader_argument.h"

#include <CLI/CLI.hpp>

#include <ostream>

namespace vantor {
namespace {

class CheckCommand : public Command {
  public:
    void describe(CLI::App& app) override {
        app.add_option("shader", shaders_, "Catalog entries' identifiers, or source files")
            ->required()
            ->type_name("SHADER");
    }

    ExitStatus run(Platform& platform, const Console& console) override {
        const auto device = platform.gpu().createSystemDefaultDevice();
        if (!device) {
            return console.fail("there is no GPU to compile for");
        }
        ExitStatus status = ExitStatus::done;
        for (const std::string& argument : shaders_) {
            const auto shader = findShader(argument);
            if (!shader) {
                status = console.fail(shader.error());
            } else if (const auto checked = checkShader(*device, shader.value()); !checked) {
                status = console.fail(checked.error());
            } else {
                console.out << shader.value().name << ": compiles\n";
            }
        }
        return status;
    }

  private:
    std::vector<std::string> shaders_;
};

} // namespace

std::unique_ptr<Command> makeCheckCommand() { return std::make_unique<CheckCommand>(); }

} // namespace vantor
