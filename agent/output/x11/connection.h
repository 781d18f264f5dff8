#pragma once
// The connection to an X server, with the names that it knows as numbers. Main thread. What is
// asked on a connection that is lost has an empty answer.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>
#include <xcb/xcb.h>

namespace vantor::agent::x11 {

enum class Atom : std::uint8_t {
    clientList,
    currentDesktop,
    desktopOfWindow,
    edid,
    motifHints,
    stateBelow,
    stateFullScreen,
    stateHidden,
    stateOfWindow,
    stateSkipPager,
    stateSkipTaskbar,
    stateSticky,
    supportingWindowManager,
    typeDesktop,
    typeOfWindow,
    utf8String,
    windowName,
};
constexpr std::size_t kAtomCount = static_cast<std::size_t>(Atom::windowName) + 1;

/// The value of `desktopOfWindow` of a window that is on all of them.
constexpr std::uint32_t kOnAllDesktops = 0xFFFFFFFF;

class Connection {
  public:
    /// To the server that DISPLAY names; null when none answers.
    static std::unique_ptr<Connection> open();
    ~Connection() { xcb_disconnect(connection_); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    const xcb_screen_t& screen() const { return *screen_; }
    xcb_window_t root() const { return screen_->root; }
    xcb_atom_t atom(Atom name) const { return atoms_[static_cast<std::size_t>(name)]; }
    /// None on a server whose screen is gone.
    bool isLost() const { return xcb_connection_has_error(connection_) != 0; }

    /// The text of a root window's property.
    std::string text(xcb_atom_t property) const;
    /// The 32-bit values of a property.
    std::vector<std::uint32_t> values(xcb_window_t window, Atom property) const;
    std::string nameOf(xcb_atom_t atom) const;
    void setValues(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                   const std::vector<std::uint32_t>& values) const;

    /// Whether a window manager is there that arranges windows by their types.
    bool hasWindowManager() const;

  private:
    explicit Connection(xcb_connection_t* connection) : connection_(connection) {}
    bool learn(int screenNumber);

    xcb_connection_t* connection_;
    const xcb_screen_t* screen_ = nullptr;
    std::array<xcb_atom_t, kAtomCount> atoms_{};
};

} // namespace vantor::agent::x11
