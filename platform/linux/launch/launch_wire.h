#pragma once
// The launch socket: what the agent and the extension it started say to each other beside requests.
// A SOCK_SEQPACKET pair; one record is one packet of exactly sizeof(LaunchRecord) bytes, native
// byte order (both ends run on one machine), with at most one descriptor (SCM_RIGHTS). The agent
// passes its end's peer as descriptor 3 by the LISTEN_FDS convention. A packet of another size, an
// unknown kind or a descriptor where none belongs is a broken peer: the receiver closes the socket.
// End of file means that the other process is gone.

#include <array>
#include <cstdint>

namespace vantor::launch {

inline constexpr int kLaunchDescriptor = 3;
inline constexpr std::size_t kMaxScreens = 16;
/// Bytes of an application's identifier, its terminating zero included.
inline constexpr std::size_t kIdentifierRoom = 128;

enum class Kind : std::uint32_t {
    /// Agent → extension: one more connection; the record carries its stream socket.
    connect = 1,
    /// Agent → extension: show me the remote context `contextID`.
    attach = 2,
    /// Extension → agent: the answer to `attach`, in order. With a descriptor (the context's
    /// private SOCK_SEQPACKET socket), or without one when there is no such context.
    attached = 3,
    /// Agent → extension: the outputs that exist now; replaces what was said before.
    screens = 4,
    /// Agent → extension: the output `displayID` is about to show a frame.
    tick = 5,
    /// Extension → agent: open the installed application `identifier`. A confined extension starts
    /// no programs, and what it started would be confined like it.
    open = 6,
    /// Extension → agent: the display links of `displayID` run at `frameRate` from now on. Until
    /// the
    /// first word, and with a rate of 0, none runs, and the output needs no ticks.
    links = 7,
};

struct ScreenRecord {
    std::uint32_t displayID;
    /// Pixels.
    std::uint32_t width;
    std::uint32_t height;
    /// Frames per second at most.
    std::uint32_t refreshRate;
};

struct LaunchRecord {
    Kind kind;
    std::uint32_t contextID;
    std::uint32_t displayID;
    std::uint32_t screenCount;
    /// Ticks a second at most.
    std::uint32_t frameRate;
    std::array<ScreenRecord, kMaxScreens> screens;
    /// Ends with a zero.
    std::array<char, kIdentifierRoom> identifier;
};
static_assert(sizeof(LaunchRecord) == 20 + kMaxScreens * 16 + kIdentifierRoom);

} // namespace vantor::launch
