#include "agent/output/x11/x11_background.h"

#include "agent/output/pacing/turn_end.h"
#include "agent/output/x11/connection.h"
#include "agent/output/x11/desktop_window.h"
#include "agent/output/x11/full_screen_windows.h"
#include "agent/output/x11/monitors.h"
#include "agent/output/x11/reply.h"
#include "agent/output/x11/resources.h"
#include "agent/output/x11/screen_saver.h"

#include <algorithm>
#include <optional>
#include <sys/epoll.h>
#include <utility>
#include <vector>
#include <xcb/randr.h>

namespace vantor::agent {
namespace {

using namespace x11;

class X11Background final : public OutputBackend {
  public:
    X11Background(MainLoop& loop, std::unique_ptr<Connection> connection, OutputEvents events)
        : loop_(loop), events_(std::move(events)), connection_(std::move(connection)),
          saver_(*connection_), fullScreen_(*connection_) {
        const std::uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
        xcb_change_window_attributes(connection_->get(), connection_->root(), XCB_CW_EVENT_MASK,
                                     &mask);
        xcb_flush(connection_->get());
        // Events are taken at the end of every turn, since Vulkan reads from the connection too and
        // leaves what is not its own.
        watch_ =
            loop_.watch(xcb_get_file_descriptor(connection_->get()), EPOLLIN, [](std::uint32_t) {});
        turnEnd_.emplace(loop_, [this] { pump(); });
        firstTurn_ = loop_.asyncAfter(0, [this] { isStarted_ = true; });
    }
    ~X11Background() override { firstTurn_->cancel(); }
    X11Background(const X11Background&) = delete;
    X11Background& operator=(const X11Background&) = delete;

    std::string_view kind() const override { return "background"; }

  private:
    void pump() {
        if (!isStarted_) {
            return;
        }
        // What is asked about an event may read further ones from the connection.
        bool hasHappened = true;
        while (hasHappened && !connection_->isLost()) {
            hasHappened = takeEvents();
            hasHappened |= catchUp();
        }
        if (connection_->isLost()) {
            end();
        } else {
            xcb_flush(connection_->get());
        }
    }

    /// Whether there was one.
    bool takeEvents() {
        bool hasTaken = false;
        while (const auto event = owned(xcb_poll_for_event(connection_->get()))) {
            take(*event);
            hasTaken = true;
        }
        return hasTaken;
    }

    void take(const xcb_generic_event_t& event) {
        areFullScreenStale_ |= fullScreen_.concerns(event);
        if (saver_.take(event) || takeRandR(event)) {
            return;
        }
        switch (event.response_type & 0x7F) {
        case XCB_PROPERTY_NOTIFY: {
            const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
            if (notify.window == connection_->root()) {
                areMonitorsStale_ |= notify.atom == XCB_ATOM_RESOURCE_MANAGER;
                isManagerStale_ |=
                    notify.atom == connection_->atom(Atom::supportingWindowManager) ||
                    notify.atom == connection_->atom(Atom::clientList);
            }
            break;
        }
        case XCB_CONFIGURE_NOTIFY: {
            const auto& notify = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
            // How the server tells of monitors that were defined by hand.
            areMonitorsStale_ |= notify.window == connection_->root();
            pass(notify.window, event);
            break;
        }
        case XCB_MAP_NOTIFY:
            pass(reinterpret_cast<const xcb_map_notify_event_t&>(event).window, event);
            break;
        case XCB_UNMAP_NOTIFY:
            pass(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window, event);
            break;
        case XCB_VISIBILITY_NOTIFY:
            pass(reinterpret_cast<const xcb_visibility_notify_event_t&>(event).window, event);
            break;
        case XCB_EXPOSE:
            pass(reinterpret_cast<const xcb_expose_event_t&>(event).window, event);
            break;
        default:
            break;
        }
    }

    bool takeRandR(const xcb_generic_event_t& event) {
        const auto* const extension = xcb_get_extension_data(connection_->get(), &xcb_randr_id);
        const int type = (event.response_type & 0x7F) - extension->first_event;
        const bool isRandR = type == XCB_RANDR_SCREEN_CHANGE_NOTIFY || type == XCB_RANDR_NOTIFY;
        areMonitorsStale_ |= isRandR;
        return isRandR;
    }

    void pass(xcb_window_t window, const xcb_generic_event_t& event) {
        for (const auto& output : outputs_) {
            if (output->window() == window) {
                output->take(event);
            }
        }
    }

    /// Whether there was anything to tell or to ask.
    bool catchUp() {
        bool hasHappened = areMonitorsStale_ || areFullScreenStale_ || isManagerStale_;
        if (std::exchange(isManagerStale_, false) && connection_->hasWindowManager()) {
            for (const auto& output : outputs_) {
                output->meetWindowManager();
            }
        }
        if (std::exchange(areMonitorsStale_, false)) {
            const double scale = scaleFrom(connection_->text(XCB_ATOM_RESOURCE_MANAGER));
            follow(readMonitors(*connection_, scale));
        }
        if (std::exchange(areFullScreenStale_, false)) {
            std::vector<xcb_window_t> own;
            for (const auto& output : outputs_) {
                own.push_back(output->window());
            }
            fullScreen_.read(own);
        }
        for (const auto& output : outputs_) {
            if (output->update(saver_.isOn(), fullScreen_.cover(output->place()))) {
                events_.changed(*output);
                hasHappened = true;
            }
        }
        return hasHappened;
    }

    void follow(const std::vector<Monitor>& monitors) {
        if (connection_->isLost()) {
            return;
        }
        const auto isGone = [&monitors](const auto& output) {
            return std::none_of(monitors.begin(), monitors.end(), [&](const Monitor& monitor) {
                return monitor.description.connector == output->description().connector;
            });
        };
        for (const auto& output : outputs_) {
            if (isGone(output)) {
                events_.removed(*output);
            }
        }
        std::erase_if(outputs_, isGone);
        for (const Monitor& monitor : monitors) {
            const auto found =
                std::find_if(outputs_.begin(), outputs_.end(), [&](const auto& output) {
                    return output->description().connector == monitor.description.connector;
                });
            if (found != outputs_.end()) {
                (*found)->follow(monitor);
            } else {
                add(monitor);
            }
        }
    }

    void add(const Monitor& monitor) {
        outputs_.push_back(
            std::make_unique<DesktopWindow>(loop_, *connection_, monitor, events_.refresh));
        events_.added(*outputs_.back());
    }

    void end() {
        watch_ = nullptr;
        turnEnd_.reset();
        for (const auto& output : outputs_) {
            events_.removed(*output);
        }
        outputs_.clear();
        // It may destroy this.
        const auto ended = events_.ended;
        ended("the X server closed the connection");
    }

    MainLoop& loop_;
    OutputEvents events_;
    // In the order in which they build on each other.
    std::unique_ptr<Connection> connection_;
    ScreenSaver saver_;
    FullScreenWindows fullScreen_;
    std::vector<std::unique_ptr<DesktopWindow>> outputs_;
    std::unique_ptr<DescriptorWatch> watch_;
    std::optional<TurnEnd> turnEnd_;
    std::shared_ptr<WorkItem> firstTurn_;
    bool isStarted_ = false;
    bool areMonitorsStale_ = true;
    bool areFullScreenStale_ = true;
    bool isManagerStale_ = false;
};

} // namespace

Result<std::unique_ptr<OutputBackend>, std::string> makeX11Background(MainLoop& loop,
                                                                      OutputEvents events) {
    auto connection = Connection::open();
    if (!connection) {
        return Failure{std::string("no X server answers")};
    }
    if (!watchMonitors(*connection)) {
        return Failure{std::string("the X server tells of no monitors: it lacks RandR 1.5")};
    }
    return std::unique_ptr<OutputBackend>(
        std::make_unique<X11Background>(loop, std::move(connection), std::move(events)));
}

} // namespace vantor::agent
