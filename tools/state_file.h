#pragma once
// The state file as the host application writes it: which shader and look each display shows.
// What it holds beside the displays' entries is kept as it stands.

#include "platform/property_list.h"
#include "platform/result.h"

#include <cstdint>
#include <filesystem>
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
    /// An empty state.
    StateFile() = default;

    /// Reads `file`; a missing file is an empty state. The error is a sentence that names the file:
    /// it cannot be read, is no property list, or has another shape than a state file.
    static Result<StateFile, std::string> read(PropertyListSerialization& propertyLists,
                                               const std::filesystem::path& file);

    /// Replaces the display's entry.
    void set(std::uint32_t display, DisplayChoice choice);

    /// The whole top-level dictionary.
    const PropertyListDictionary& root() const { return root_; }

    /// Replaces `file` in one step, making its folders; a reader sees the old state or the new one.
    /// The error is a sentence; the old file then stands.
    Result<Done, std::string> write(PropertyListSerialization& propertyLists,
                                    const std::filesystem::path& file) const;

  private:
    PropertyListDictionary root_;
};

} // namespace vantor
