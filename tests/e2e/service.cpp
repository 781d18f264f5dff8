#include "tests/e2e/service.h"

#include "agent/kit/kit_classes.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <poll.h>
#include <sstream>
#include <sys/socket.h>

namespace vantor::e2e {
namespace {

constexpr int kPatienceMilliseconds = 60000;

bool isReady(int socket, short events) {
    pollfd waited{.fd = socket, .events = events, .revents = 0};
    return poll(&waited, 1, kPatienceMilliseconds) > 0;
}

std::size_t statusField(pid_t process, const std::string& name) {
    std::istringstream status(contents("/proc/" + std::to_string(process) + "/status"));
    for (std::string word; status >> word;) {
        if (word == name) {
            std::size_t value = 0;
            status >> value;
            return value;
        }
    }
    return 0;
}

} // namespace

bool RawPeer::send(std::span<const std::uint8_t> bytes) const {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent > 0) {
            bytes = bytes.subspan(static_cast<std::size_t>(sent));
        } else if (errno != EAGAIN || !isReady(socket_.get(), POLLOUT)) {
            return false;
        }
    }
    return true;
}

bool RawPeer::sendWithDescriptors(std::span<const std::uint8_t> bytes,
                                  std::span<const int> descriptors) const {
    iovec part{.iov_base = const_cast<std::uint8_t*>(bytes.data()), .iov_len = bytes.size()};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int) * 16)] = {};
    msghdr message{};
    message.msg_iov = &part;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = CMSG_SPACE(descriptors.size_bytes());
    cmsghdr* header = CMSG_FIRSTHDR(&message);
    header->cmsg_level = SOL_SOCKET;
    header->cmsg_type = SCM_RIGHTS;
    header->cmsg_len = CMSG_LEN(descriptors.size_bytes());
    std::memcpy(CMSG_DATA(header), descriptors.data(), descriptors.size_bytes());
    return sendmsg(socket_.get(), &message, MSG_NOSIGNAL) == static_cast<ssize_t>(bytes.size());
}

bool RawPeer::readMore() {
    if (!isReady(socket_.get(), POLLIN)) {
        return false;
    }
    std::uint8_t room[4096];
    const ssize_t size = recv(socket_.get(), room, sizeof(room), 0);
    if (size <= 0) {
        return false;
    }
    unread_.insert(unread_.end(), room, room + size);
    return true;
}

std::string RawPeer::receiveLine() {
    while (true) {
        const auto end = std::find(unread_.begin(), unread_.end(), '\n');
        if (end != unread_.end()) {
            const std::string line(unread_.begin(), end);
            unread_.erase(unread_.begin(), end + 1);
            return line;
        }
        if (!readMore()) {
            return {};
        }
    }
}

std::optional<rawbus::Message> RawPeer::receive() {
    do {
        if (auto message = rawbus::unmarshal(unread_)) {
            unread_.erase(unread_.begin(),
                          unread_.begin() + static_cast<std::ptrdiff_t>(message->second));
            return std::move(message->first);
        }
    } while (readMore());
    return std::nullopt;
}

bool RawPeer::isClosed() {
    while (isReady(socket_.get(), POLLIN)) {
        std::uint8_t room[4096];
        if (recv(socket_.get(), room, sizeof(room), 0) <= 0) {
            return true;
        }
    }
    return false;
}

std::string errorText(const rawbus::Message& message) {
    std::uint32_t size = 0;
    if (message.type != rawbus::MessageType::error || message.body.size() < sizeof(size)) {
        return {};
    }
    std::memcpy(&size, message.body.data(), sizeof(size));
    const auto text = std::span(message.body).subspan(sizeof(size));
    return {text.begin(), text.begin() + std::min<std::size_t>(size, text.size())};
}

void Service::SetUp() {
    Installation::SetUp();
    for (const auto& [name, value] : environment()) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    agent::registerKitClasses(runtime_);
}

void Service::start() {
    auto started = launch::LaunchHost::start(
        loop_, {.bundle = bundle(), .home = extensionHome()},
        {.attached = [](std::uint32_t, FileDescriptor) {},
         .open = [this](const std::string& identifier) { opened_.push_back(identifier); },
         .ended = [this](const std::string& how) { ended_ = how; }});
    ASSERT_TRUE(started) << started.error();
    host_ = std::move(*started);
}

std::unique_ptr<xpc::XPCClient> Service::client() {
    return xpc::XPCClient::create(
        loop_, host_->connect(), runtime_,
        {runtime_.classNamed("WallpaperRemoteContextXPC"),
         runtime_.classNamed("WallpaperSettingsViewModelsXPC")},
        {.called = [](AgentOperation, const auto&) { return std::optional<Error>(); },
         .disconnected = [] {}});
}

RawPeer Service::authenticatedPeer() {
    RawPeer peer = rawPeer();
    EXPECT_TRUE(peer.authenticate());
    return peer;
}

xpc::CallResult Service::call(xpc::XPCClient& client, WallpaperOperation operation,
                              std::vector<ObjectRef> arguments) {
    arguments.resize(static_cast<std::size_t>(info(operation).argumentCount));
    // Shared, for a reply may still come when nobody waits for it.
    const auto result = std::make_shared<std::optional<xpc::CallResult>>();
    client.call(operation, arguments, [result](xpc::CallResult got) { *result = std::move(got); });
    EXPECT_TRUE(eventually([&] { return result->has_value() || ended_; }))
        << "no reply to " << info(operation).selector;
    return result->value_or(xpc::CallResult{.error = Error{}, .object = nullptr});
}

xpc::CallResult Service::acquire(xpc::XPCClient& client, const std::string& choice) {
    return call(client, WallpaperOperation::acquire,
                {agent::makeWallpaperID(*UUID::parse("0F0E0D0C-0B0A-0908-0706-050403020100")),
                 agent::makeCreationRequest({.configuration = choice,
                                             .size = {64, 36},
                                             .directDisplayID = 1,
                                             .presentationMode = "locked"})});
}

bool Service::eventually(const std::function<bool()>& holds, double seconds) {
    const double interval = 0.005;
    for (double waited = 0; !holds() && waited < seconds; waited += interval) {
        loop_.asyncAfter(interval, [this] { loop_.stop(0); });
        loop_.run();
    }
    return holds();
}

std::vector<std::string> Service::descriptors() const {
    std::vector<std::string> all;
    std::error_code failed;
    for (const auto& entry : std::filesystem::directory_iterator(
             "/proc/" + std::to_string(host_->processIdentifier()) + "/fd", failed)) {
        all.push_back(std::filesystem::read_symlink(entry.path(), failed));
    }
    return all;
}

std::size_t Service::drawableCount() const {
    const auto all = descriptors();
    return static_cast<std::size_t>(std::count_if(all.begin(), all.end(), [](const auto& name) {
        return name.starts_with("/memfd:llvmpipe");
    }));
}

std::size_t Service::residentMemory() const {
    return statusField(host_->processIdentifier(), "VmRSS:");
}

std::size_t Service::threadCount() const {
    return statusField(host_->processIdentifier(), "Threads:");
}

} // namespace vantor::e2e
