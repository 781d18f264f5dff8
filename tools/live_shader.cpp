#include "tools/live_shader.h"

#include "platform/platform.h"
#include "tools/state_change.h"

#include <ostream>
#include <utility>

namespace vantor {

LiveShader::LiveShader(std::filesystem::path file, std::uint32_t display,
                       PropertyListDictionary look)
    : file_(std::move(file)), display_(display), look_(std::move(look)) {}

void LiveShader::reload(Platform& platform, const Console& console) {
    auto shader = readShaderFile(file_);
    const std::string& found = shader ? shader->source : shader.error();
    if (found == seen_) {
        return;
    }
    seen_ = found;
    const auto checked = shader ? checkShader(platform.gpu(), *shader) : Failure{shader.error()};
    if (!checked) {
        console.fail(checked.error());
        console.err << "display " << display_ << " keeps what it shows\n" << std::flush;
        return;
    }
    show(platform, console, std::move(*shader));
}

void LiveShader::show(Platform& platform, const Console& console, NamedShader shader) {
    const auto status =
        changeState(platform, console, [&](StateFile& state) -> Result<Done, std::string> {
            state.set(display_, {.id = shader.id, .source = shader.source, .look = look_});
            return Done{};
        });
    if (status != ExitStatus::done) {
        // The next save tries again, whether the text is another or not.
        seen_.clear();
        return;
    }
    shown_ = shader.id;
    console.out << "display " << display_ << " shows " << shader.id << '\n' << std::flush;
}

} // namespace vantor
