#include "agent/output/pacing/turn_end.h"

#include <cstdio>
#include <cstdlib>
#include <systemd/sd-event.h>
#include <utility>

namespace vantor::agent {
namespace {

int turnEnded(sd_event_source*, void* data) {
    // The work may destroy its owner.
    const auto work = *static_cast<std::shared_ptr<std::function<void()>>*>(data);
    (*work)();
    return 0;
}

} // namespace

TurnEnd::TurnEnd(const MainLoop& loop, std::function<void()> work)
    : work_(std::make_shared<std::function<void()>>(std::move(work))) {
    const int status = sd_event_add_post(loop.event(), &source_, turnEnded, &work_);
    if (status < 0) {
        std::fprintf(stderr, "the main loop cannot end its turns: error %d\n", -status);
        std::abort();
    }
}

TurnEnd::~TurnEnd() { sd_event_source_disable_unref(source_); }

} // namespace vantor::agent
