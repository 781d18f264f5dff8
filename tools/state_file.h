#pragma once
// The state file as the host application writes it: which shader and look each display shows, which
// display is the main one, and which show no shader. What it holds beside that is kept as it
// stands.

#include "platform/property_list.h"
#include "platform/result.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vantor {

/// One display's entry.
struct DisplayChoice {
    /// The catalog entry's identifier, or one that names where the source came from.
    std::string id;
    /// The complete shader source.
    std::string source;
    /// The look dictionary of the uniform block.
    PropertyListDictionary look;
};

/// A whole state in memory. A plain value.
class StateFile {
  public:
    using Change = std::function<Result<Done, std::string>(StateFile&)>;

    /// An empty state.
    StateFile() = default;

    /// Reads `file`; a missing file is an empty state. The error is a sentence that names the file:
    /// it cannot be read, is no property list, or has another shape than a state file.
    static Result<StateFile, std::string> read(PropertyListSerialization& propertyLists,
                                               const std::filesystem::path& file);

    /// Reads `file`, changes the state and replaces the file in one step, making its folders. Two
    /// programs that do so at once take turns, and a reader sees the old state or the new one. The
    /// error is a sentence, `change`'s own or one about the file; the old file then stands.
    static Result<Done, std::string> edit(PropertyListSerialization& propertyLists,
                                          const std::filesystem::path& file, const Change& change);

    /// Gives the display this shader and look, and takes it out of the displays without a shader.
    void set(std::uint32_t display, DisplayChoice choice);
    /// Takes the display's shader and look away; false when it has none.
    bool unset(std::uint32_t display);
    /// Names the main display, or none.
    void setMain(std::optional<std::uint32_t> display);
    /// Puts the display among those without a shader, or takes it out; false when it is so already.
    bool setNonShader(std::uint32_t display, bool nonShader);

    /// The whole top-level dictionary.
    const PropertyListDictionary& root() const { return root_; }

  private:
    PropertyListDictionary root_;
};

} // namespace vantor
