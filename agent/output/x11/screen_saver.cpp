#include "agent/output/x11/screen_saver.h"

#include "agent/output/x11/reply.h"

#include <xcb/screensaver.h>

namespace vantor::agent::x11 {
namespace {

bool isBlanked(std::uint8_t state) {
    return state == XCB_SCREENSAVER_STATE_ON || state == XCB_SCREENSAVER_STATE_CYCLE;
}

} // namespace

ScreenSaver::ScreenSaver(const Connection& connection) {
    xcb_connection_t* const xcb = connection.get();
    const xcb_query_extension_reply_t* const extension =
        xcb_get_extension_data(xcb, &xcb_screensaver_id);
    if (extension == nullptr || extension->present == 0) {
        return;
    }
    firstEvent_ = extension->first_event;
    xcb_screensaver_select_input(xcb, connection.root(), XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
    const auto info = owned(xcb_screensaver_query_info_reply(
        xcb, xcb_screensaver_query_info(xcb, connection.root()), nullptr));
    isOn_ = info && isBlanked(info->state);
}

bool ScreenSaver::take(const xcb_generic_event_t& event) {
    if (firstEvent_ == 0 || (event.response_type & 0x7F) != firstEvent_ + XCB_SCREENSAVER_NOTIFY) {
        return false;
    }
    isOn_ = isBlanked(reinterpret_cast<const xcb_screensaver_notify_event_t&>(event).state);
    return true;
}

} // namespace vantor::agent::x11
