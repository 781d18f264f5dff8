#include "library/change_propagation.h"

#include "library/lock_screen_library.h"
#include "log/ls_log.h"
#include "platform/layers.h"
#include "platform/main_queue.h"
#include "platform/notifications.h"
#include "platform/platform.h"
#include "render/surface_registry.h"

namespace vantor {
namespace {

/// As the text of a literal: keys come from a file that another program writes, and a line of the
/// log stays one line.
std::string literal(std::string_view text) {
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (c == '\n') {
            result += "\\n";
        } else {
            result += c;
        }
    }
    return result += '"';
}

std::string displayKeys(const DesktopState& desktop) {
    std::string list = "[";
    for (const auto& [key, resolved] : desktop.displays()) {
        if (list.size() > 1) {
            list += ", ";
        }
        list += literal(key);
    }
    return list += "]";
}

} // namespace

void ChangePropagation::startObserving() {
    platform_.notifications().observeDarwin(library_.identifiers().changedNotification, [this] {
        platform_.mainQueue().async([this] { appStateDidChange(); });
    });
}

void ChangePropagation::appStateDidChange() {
    const DesktopState& desktop = library_.rereadDesktop();
    LSLog::write("app state re-read, desktop displays " + displayKeys(desktop));
    for (const auto& [id, surface] : registry_.surfaces()) {
        // An absent choice resolves alike, but stays as it was presented.
        if (surface->choice == kMatchDesktop) {
            registry_.present(*surface);
        }
    }
    platform_.layers().transactions().flush();
    registry_.applyPolicy();
    tellAgents();
}

void ChangePropagation::tellAgents() {
    const ObjectRef viewModels = library_.archivedViewModels();
    if (!viewModels) {
        return;
    }
    for (const auto& handler : library_.handlers()) {
        if (const auto agent = handler->agent()) {
            agent->updateSettingsViewModels(viewModels, [](const std::optional<Error>& error) {
                if (error) {
                    LSLog::write("updateSettingsViewModels: " + error->message);
                }
            });
        }
    }
}

} // namespace vantor
