#include "agent/choices.h"

#include <algorithm>
#include <utility>

namespace vantor::agent {

Choices::Choices(std::map<std::uint32_t, std::string> asked, AgentMemory& memory,
                 std::function<std::string(std::string_view)> fingerprint)
    : asked_(std::move(asked)), memory_(memory), fingerprint_(std::move(fingerprint)) {}

Choices::Shown Choices::shown(std::uint32_t number, std::string_view connector,
                              const OutputSettings& settings) const {
    Shown shown;
    const auto remembered = memory_.choices.find(std::string(connector));
    if (const auto asked = asked_.find(number); asked != asked_.end()) {
        shown.choice = asked->second;
    } else if (remembered != memory_.choices.end()) {
        shown.choice = remembered->second;
    } else {
        shown.choice = settings.wallpaper.value_or(std::string(kDefaultChoice));
    }
    shown.entry = shown.choice;
    if (const SetAsideChoice* aside = find(connector, shown.choice)) {
        shown.entry = kSafeChoice;
        shown.setAside = aside->reason;
    }
    return shown;
}

void Choices::choose(std::uint32_t number, std::string_view connector, std::string_view entry) {
    asked_.erase(number);
    // Choosing is a change: what was set aside gets another chance.
    std::erase_if(memory_.setAside,
                  [&](const SetAsideChoice& aside) { return aside.connector == connector; });
    if (entry == kNoChoice) {
        memory_.choices.erase(std::string(connector));
    } else {
        memory_.choices[std::string(connector)] = entry;
    }
}

bool Choices::setAside(std::string_view connector, std::string_view choice, std::string reason) {
    if (choice == kSafeChoice || find(connector, choice) != nullptr) {
        return false;
    }
    memory_.setAside.push_back({.connector = std::string(connector),
                                .choice = std::string(choice),
                                .fingerprint = fingerprint_(choice),
                                .reason = std::move(reason)});
    return true;
}

bool Choices::forgetChanged() {
    return std::erase_if(memory_.setAside, [this](const SetAsideChoice& aside) {
               return aside.fingerprint != fingerprint_(aside.choice);
           }) != 0;
}

const SetAsideChoice* Choices::find(std::string_view connector, std::string_view choice) const {
    const auto found = std::find_if(
        memory_.setAside.begin(), memory_.setAside.end(), [&](const SetAsideChoice& aside) {
            return aside.connector == connector && aside.choice == choice;
        });
    return found != memory_.setAside.end() ? &*found : nullptr;
}

} // namespace vantor::agent
