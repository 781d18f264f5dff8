#pragma once
// What the host application shows on each display. A plain value.

#include "platform/property_list.h"
#include "render/resolved.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>

namespace vantor {

class DesktopState {
  public:
    /// The state that a state file's top-level dictionary describes. Parts of another shape than
    /// expected, and displays without an identifier or a source, count as absent.
    explicit DesktopState(const std::optional<PropertyListDictionary>& appState);

    /// By display key: the display identifier in decimal.
    const std::map<std::string, Resolved, std::less<>>& displays() const { return displays_; }
    /// The main display's key.
    const std::optional<std::string>& main() const { return main_; }
    const std::set<std::string, std::less<>>& nonShader() const { return nonShader_; }

    /// Whether the display shows no shader; without an identifier, whether none shows one.
    bool isNonShader(std::optional<std::uint32_t> display) const;

    /// What the display shows, else what the main display shows, else what the display of the
    /// smallest key (in plain string order) shows. Null when there is none. Valid while the state
    /// is unchanged.
    const Resolved* shader(std::optional<std::uint32_t> display) const;

    /// 64-bit FNV-1a (Fowler, Noll and Vo) of the text's bytes in lower-case hexadecimal without
    /// leading zeros: a key that is the same in every process.
    static std::string stableHash(std::string_view text);

  private:
    std::map<std::string, Resolved, std::less<>> displays_;
    std::optional<std::string> main_;
    std::set<std::string, std::less<>> nonShader_;
};

} // namespace vantor
