#include "tools/state_change.h"

#include "library/app_state.h"
#include "library/identifiers.h"
#include "platform/notifications.h"
#include "platform/platform.h"

#include <ostream>

namespace vantor {

bool tellExtension(Platform& platform) {
    return platform.notifications().postDarwin(changedNotification(platform));
}

ExitStatus changeState(Platform& platform, const Console& console,
                       const StateFile::Change& change) {
    const auto changed = StateFile::edit(platform.propertyLists(), appStateURL(platform), change);
    if (!changed) {
        return console.fail(changed.error());
    }
    if (!tellExtension(platform)) {
        console.err << "nobody could be told: there is no session bus; a running extension sees "
                       "the change after its next start\n";
    }
    return ExitStatus::done;
}

} // namespace vantor
