#include "tools/state_file.h"

#include "platform/linux/whole_file.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <system_error>

namespace vantor {
namespace {

/// The extension reads no more than this.
constexpr std::uintmax_t kMaxFileBytes = 16U << 20U;

constexpr std::string_view kDesktop = "desktop";
constexpr std::string_view kDisplays = "displays";
constexpr std::string_view kMain = "main";
constexpr std::string_view kNonShader = "nonShader";

// The keys of a display's entry that are ours.
constexpr std::string_view kID = "id";
constexpr std::string_view kSource = "source";
constexpr std::string_view kLook = "look";

Failure<std::string> refuse(const std::filesystem::path& file, std::string_view why) {
    return Failure{file.string() + ": " + std::string(why)};
}

Failure<std::string> refuseSize(const std::filesystem::path& file, std::uintmax_t size) {
    return refuse(file, "a state of " + std::to_string(size) + " bytes exceeds the limit of " +
                            std::to_string(kMaxFileBytes));
}

/// A copy of the dictionary under `key`; an empty one when none stands there.
PropertyListDictionary dictionary(const PropertyListDictionary& parent, std::string_view key) {
    const PropertyList* found = parent.find(key);
    return found != nullptr && found->dictionary() ? *found->dictionary()
                                                   : PropertyListDictionary();
}

/// A copy of the array under `key`; an empty one when none stands there.
PropertyList::Array array(const PropertyListDictionary& parent, std::string_view key) {
    const PropertyList* found = parent.find(key);
    return found != nullptr && found->array() ? *found->array() : PropertyList::Array();
}

bool isArrayOfStrings(const PropertyList& value) {
    return value.array() != nullptr &&
           std::ranges::all_of(*value.array(), [](const PropertyList& element) {
               return element.string() != nullptr;
           });
}

/// Why the dictionary is no state; nothing when it is one.
std::optional<std::string> misshapen(const PropertyListDictionary& root) {
    const PropertyList* desktop = root.find(kDesktop);
    if (desktop == nullptr) {
        return std::nullopt;
    }
    if (desktop->dictionary() == nullptr) {
        return "\"desktop\" is not a dictionary";
    }
    const PropertyList* displays = desktop->dictionary()->find(kDisplays);
    if (displays != nullptr && displays->dictionary() == nullptr) {
        return "\"displays\" is not a dictionary";
    }
    const PropertyList* nonShader = desktop->dictionary()->find(kNonShader);
    if (nonShader != nullptr && !isArrayOfStrings(*nonShader)) {
        return "\"nonShader\" is not an array of strings";
    }
    return std::nullopt;
}

} // namespace

Result<StateFile, std::string> StateFile::read(PropertyListSerialization& propertyLists,
                                               const std::filesystem::path& file) {
    std::error_code status;
    const auto size = std::filesystem::file_size(file, status);
    if (status == std::errc::no_such_file_or_directory) {
        return StateFile{};
    }
    if (status) {
        return refuse(file, status.message());
    }
    if (size > kMaxFileBytes) {
        return refuseSize(file, size);
    }
    std::ifstream stream(file, std::ios::binary);
    const Bytes bytes{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    if (!stream) {
        return refuse(file, "the file cannot be read");
    }
    auto parsed = propertyLists.read(bytes);
    if (!parsed) {
        return refuse(file, parsed.error().message);
    }
    if (parsed->dictionary() == nullptr) {
        return refuse(file, "the property list is not a dictionary");
    }
    StateFile state;
    state.root_ = std::move(*parsed->dictionary());
    if (const auto why = misshapen(state.root_)) {
        return refuse(file, *why);
    }
    return state;
}

Result<Done, std::string> StateFile::edit(PropertyListSerialization& propertyLists,
                                          const std::filesystem::path& file, const Change& change) {
    const std::filesystem::path folder = file.parent_path();
    std::error_code status;
    std::filesystem::create_directories(folder, status);
    if (status) {
        return refuse(folder, status.message());
    }
    const auto lock = FolderLock::take(folder);
    if (!lock) {
        return Failure{lock.error()};
    }
    auto state = read(propertyLists, file);
    if (!state) {
        return Failure{state.error()};
    }
    if (auto changed = change(*state); !changed) {
        return changed;
    }
    const Bytes bytes = propertyLists.writeBinary(state->root_);
    if (bytes.size() > kMaxFileBytes) {
        return refuseSize(file, bytes.size());
    }
    return replaceFile(file, bytes);
}

void StateFile::set(std::uint32_t display, DisplayChoice choice) {
    PropertyListDictionary desktop = dictionary(root_, kDesktop);
    PropertyListDictionary displays = dictionary(desktop, kDisplays);
    const std::string key = std::to_string(display);
    PropertyListDictionary entry = dictionary(displays, key);
    PropertyListDictionary look = dictionary(entry, kLook);
    for (auto& [name, value] : choice.look) {
        look.set(name, value);
    }
    entry.set(kID, std::move(choice.id));
    entry.set(kSource, std::move(choice.source));
    entry.set(kLook, std::move(look));
    displays.set(key, std::move(entry));
    desktop.set(kDisplays, std::move(displays));
    root_.set(kDesktop, std::move(desktop));
    setNonShader(display, false);
}

bool StateFile::unset(std::uint32_t display) {
    PropertyListDictionary desktop = dictionary(root_, kDesktop);
    PropertyListDictionary displays = dictionary(desktop, kDisplays);
    const std::string key = std::to_string(display);
    PropertyListDictionary entry = dictionary(displays, key);
    bool had = false;
    for (const std::string_view ours : {kID, kSource, kLook}) {
        had = entry.erase(ours) || had;
    }
    if (!had) {
        return false;
    }
    if (entry.empty()) {
        displays.erase(key);
    } else {
        displays.set(key, std::move(entry));
    }
    desktop.set(kDisplays, std::move(displays));
    root_.set(kDesktop, std::move(desktop));
    return true;
}

void StateFile::setMain(std::optional<std::uint32_t> display) {
    PropertyListDictionary desktop = dictionary(root_, kDesktop);
    if (display) {
        desktop.set(kMain, std::to_string(*display));
    } else {
        desktop.erase(kMain);
    }
    root_.set(kDesktop, std::move(desktop));
}

bool StateFile::setNonShader(std::uint32_t display, bool nonShader) {
    PropertyListDictionary desktop = dictionary(root_, kDesktop);
    PropertyList::Array keys = array(desktop, kNonShader);
    const PropertyList key = std::to_string(display);
    if ((std::ranges::find(keys, key) != keys.end()) == nonShader) {
        return false;
    }
    if (nonShader) {
        keys.push_back(key);
    } else {
        std::erase(keys, key);
    }
    desktop.set(kNonShader, std::move(keys));
    root_.set(kDesktop, std::move(desktop));
    return true;
}

} // namespace vantor
