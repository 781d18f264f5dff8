#pragma once
// A source file shown on a display, as it stands at its last good save.

#include "platform/property_list.h"
#include "tools/command.h"
#include "tools/shader_argument.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace vantor {

class LiveShader {
  public:
    LiveShader(std::filesystem::path file, std::uint32_t display, PropertyListDictionary look);

    /// Reads the file again. A new text that compiles goes into the state file and is announced;
    /// of one that does not, the diagnostics are said, and the display keeps what it shows. The
    /// same text again says and does nothing.
    void reload(Platform& platform, const Console& console);

    /// The identifier of what was last put into the state file; nothing before the first.
    const std::optional<std::string>& shown() const { return shown_; }

  private:
    void show(Platform& platform, const Console& console, NamedShader shader);

    std::filesystem::path file_;
    std::uint32_t display_;
    PropertyListDictionary look_;
    /// What was last read and needs no second look: the source, or why there was none.
    std::string seen_;
    std::optional<std::string> shown_;
};

} // namespace vantor
