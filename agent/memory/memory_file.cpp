#include "agent/memory/memory_file.h"

#include "platform/linux/system/user_home.h"
#include "platform/linux/whole_file.h"

#include <nlohmann/json.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <limits>
#include <set>
#include <utility>

namespace vantor::agent {
namespace {

using Json = nlohmann::json;

constexpr std::size_t kMaxFileBytes = 1U << 20U;

constexpr const char* kChoices = "choices";
constexpr const char* kDisplayNumbers = "displayNumbers";
constexpr const char* kSetAside = "setAside";
constexpr const char* kConnector = "connector";
constexpr const char* kChoice = "choice";
constexpr const char* kFingerprint = "fingerprint";
constexpr const char* kReason = "reason";

std::string toText(const AgentMemory& memory) {
    Json setAside = Json::array();
    for (const SetAsideChoice& each : memory.setAside) {
        setAside.push_back({{kConnector, each.connector},
                            {kChoice, each.choice},
                            {kFingerprint, each.fingerprint},
                            {kReason, each.reason}});
    }
    const Json root{{kChoices, memory.choices},
                    {kDisplayNumbers, memory.displayNumbers},
                    {kSetAside, std::move(setAside)}};
    // What is no UTF-8 came from a display server, and is no reason to forget the rest.
    return root.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

// Each of the readers below gives the sentence that says what is wrong, or nothing.

using Wrong = std::optional<std::string>;

Wrong readChoices(const Json& choices, AgentMemory& memory) {
    if (!choices.is_object()) {
        return "\"choices\" is no object";
    }
    for (const auto& [connector, choice] : choices.items()) {
        if (!choice.is_string()) {
            return "the choice of \"" + connector + "\" is no string";
        }
        memory.choices.emplace(connector, choice.get<std::string>());
    }
    return std::nullopt;
}

Wrong readDisplayNumbers(const Json& numbers, AgentMemory& memory) {
    if (!numbers.is_object()) {
        return "\"displayNumbers\" is no object";
    }
    std::set<std::uint32_t> taken;
    for (const auto& [connector, value] : numbers.items()) {
        const auto number = value.is_number_unsigned() ? value.get<std::uint64_t>() : 0;
        if (number == 0 || number > std::numeric_limits<std::uint32_t>::max()) {
            return "the number of \"" + connector + "\" is none from 1 to 4294967295";
        }
        if (!taken.insert(static_cast<std::uint32_t>(number)).second) {
            return "two displays have the number " + std::to_string(number);
        }
        memory.displayNumbers.emplace(connector, static_cast<std::uint32_t>(number));
    }
    return std::nullopt;
}

Wrong readSetAside(const Json& list, AgentMemory& memory) {
    if (!list.is_array()) {
        return "\"setAside\" is no array";
    }
    for (const Json& entry : list) {
        SetAsideChoice& choice = memory.setAside.emplace_back();
        const std::pair<const char*, std::string*> fields[] = {{kConnector, &choice.connector},
                                                               {kChoice, &choice.choice},
                                                               {kFingerprint, &choice.fingerprint},
                                                               {kReason, &choice.reason}};
        for (const auto& [name, field] : fields) {
            const auto found = entry.is_object() ? entry.find(name) : entry.end();
            if (found == entry.end() || !found->is_string()) {
                return "an entry of \"setAside\" has no string \"" + std::string(name) + "\"";
            }
            *field = found->get<std::string>();
        }
    }
    return std::nullopt;
}

Wrong readMemory(const std::string& text, AgentMemory& memory) {
    const Json root = Json::parse(text, nullptr, false);
    if (!root.is_object()) {
        return root.is_discarded() ? "the text is no JSON" : "the JSON is no object";
    }
    const std::pair<const char*, Wrong (*)(const Json&, AgentMemory&)> parts[] = {
        {kChoices, readChoices}, {kDisplayNumbers, readDisplayNumbers}, {kSetAside, readSetAside}};
    for (const auto& [name, read] : parts) {
        if (const auto found = root.find(name); found != root.end()) {
            if (Wrong wrong = read(*found, memory)) {
                return wrong;
            }
        }
    }
    return std::nullopt;
}

/// A name beside the file's that nothing has, so that one damaged file does not replace another.
std::filesystem::path nameForDamaged(const std::filesystem::path& file) {
    constexpr int kMostKept = 100;
    std::filesystem::path name = file.string() + ".damaged";
    std::error_code ignored;
    for (int i = 2; i <= kMostKept && std::filesystem::exists(name, ignored); ++i) {
        name = file.string() + ".damaged-" + std::to_string(i);
    }
    return name;
}

/// Takes the file out of the way; gives the sentence about it.
std::string putAside(const std::filesystem::path& file, const std::string& why) {
    const std::filesystem::path kept = nameForDamaged(file);
    if (std::rename(file.c_str(), kept.c_str()) != 0) {
        return why + "; it is not used, and cannot be renamed: " + std::strerror(errno);
    }
    return why + "; it is kept as " + kept.filename().string();
}

} // namespace

std::optional<std::filesystem::path> memoryFile() {
    const auto folder = userStateFolder();
    return folder ? std::optional(*folder / "vantor/agent.json") : std::nullopt;
}

LoadedMemory loadMemory(const std::filesystem::path& file) {
    auto text = readFile(file, kMaxFileBytes);
    if (!text) {
        return {.memory = {}, .trouble = putAside(file, text.error())};
    }
    if (!text->has_value()) {
        return {};
    }
    LoadedMemory loaded;
    if (const Wrong wrong = readMemory(**text, loaded.memory)) {
        return {.memory = {}, .trouble = putAside(file, file.string() + ": " + *wrong)};
    }
    return loaded;
}

Result<Done, std::string> saveMemory(const std::filesystem::path& file, const AgentMemory& memory) {
    const std::string text = toText(memory);
    if (text.size() > kMaxFileBytes) {
        return Failure{file.string() + ": a memory of " + std::to_string(text.size()) +
                       " bytes exceeds the limit of " + std::to_string(kMaxFileBytes)};
    }
    if (auto made = makePrivateFolder(file.parent_path()); !made) {
        return made;
    }
    return replaceFile(file, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()},
                       Readers::owner);
}

std::uint32_t displayNumber(AgentMemory& memory, std::string_view connector) {
    if (const auto found = memory.displayNumbers.find(std::string(connector));
        found != memory.displayNumbers.end()) {
        return found->second;
    }
    std::set<std::uint32_t> taken;
    for (const auto& [name, number] : memory.displayNumbers) {
        taken.insert(number);
    }
    std::uint32_t free = 1;
    while (taken.contains(free)) {
        ++free;
    }
    memory.displayNumbers.emplace(connector, free);
    return free;
}

} // namespace vantor::agent
