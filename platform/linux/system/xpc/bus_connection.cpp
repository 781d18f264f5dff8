#include "platform/linux/system/xpc/bus_connection.h"

#include "platform/linux/archive/wire_object.h"
#include "platform/linux/system/xpc/bus_message.h"
#include "platform/linux/system/xpc/mailbox.h"
#include "platform/linux/system/xpc/xpc_wire.h"
#include "platform/object_runtime.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <ctime>
#include <poll.h>
#include <sys/socket.h>
#include <system_error>
#include <thread>
#include <unordered_map>
#include <variant>

namespace vantor::xpc {
namespace {

/// What a refusal of a whole connection is about.
constexpr std::string_view kConnection = "the connection";

/// What answers a call, in the shape of its operation.
using Answer = std::variant<Error, std::monostate, Bytes, bool>;

class BusConnection;

/// Archives on the replying thread, which owns the object, and hands the bytes to the connection's.
class BusReplySink : public ReplySink {
  public:
    BusReplySink(std::weak_ptr<BusConnection> connection, std::shared_ptr<Mailbox> mailbox,
                 std::uint64_t call)
        : connection_(std::move(connection)), mailbox_(std::move(mailbox)), call_(call) {}

    void error(const std::optional<Error>& error) override {
        deliver(error ? Answer(*error) : Answer(std::monostate{}));
    }

    void object(const ObjectRef& object, const std::optional<Error>& error) override {
        if (error) {
            deliver(*error);
        } else if (!object) {
            deliver(Bytes{});
        } else if (auto archive = archiveObject(*object)) {
            deliver(std::move(*archive));
        } else {
            deliver(archive.error());
        }
    }

    void boolean(bool value, const std::optional<Error>& error) override {
        deliver(error ? Answer(*error) : Answer(value));
    }

  private:
    void deliver(Answer answer);

    std::weak_ptr<BusConnection> connection_;
    std::shared_ptr<Mailbox> mailbox_;
    std::uint64_t call_;
};

class BusAgentProxy : public AgentProxy {
  public:
    BusAgentProxy(std::weak_ptr<BusConnection> connection, std::shared_ptr<Mailbox> mailbox)
        : connection_(std::move(connection)), mailbox_(std::move(mailbox)) {}

    bool conformsTo(std::string_view protocolName) const override {
        return protocolName == kAgentProtocolName;
    }

    void updateSettingsViewModels(const ObjectRef& viewModels,
                                  std::function<void(std::optional<Error>)> reply) override;

  private:
    std::weak_ptr<BusConnection> connection_;
    std::shared_ptr<Mailbox> mailbox_;
};

/// Whose thread this is, if a connection's.
thread_local const BusConnection* threadsConnection = nullptr;

class BusConnection : public XPCConnection, public std::enable_shared_from_this<BusConnection> {
  public:
    BusConnection(Bus bus, int processIdentifier, const ObjectRuntime& runtime)
        : bus_(std::move(bus)), processIdentifier_(processIdentifier), runtime_(runtime),
          mailbox_(std::make_shared<Mailbox>()) {}

    int processIdentifier() const override { return processIdentifier_; }
    void setExportedInterface(XPCInterface interface) override { exported_ = std::move(interface); }
    void setRemoteObjectInterface(XPCInterface interface) override {
        remote_ = std::move(interface);
    }
    void setExportedObject(std::shared_ptr<ExportedObject> object) override {
        object_ = std::move(object);
    }
    std::shared_ptr<AgentProxy> remoteObjectProxy() override {
        return std::make_shared<BusAgentProxy>(weak_from_this(), mailbox_);
    }
    void setInvalidationHandler(std::function<void()> handler) override {
        invalidated_ = std::move(handler);
    }
    void setRefusalHandler(std::function<void(const std::string&)> handler) override {
        refused_ = std::move(handler);
    }

    void resume() override {
        try {
            std::thread([self = shared_from_this()] { self->run(); }).detach();
        } catch (const std::system_error& failed) {
            note(kConnection,
                 std::string("closed, for no thread can be started: ") + failed.what());
            end();
        }
    }

    // On the connection's thread from here on.

    bool isOwnThread() const { return threadsConnection == this; }

    void answer(std::uint64_t call, const Answer& answer) {
        const auto found = calls_.find(call);
        if (found == calls_.end()) {
            return;
        }
        const Message message = std::move(found->second);
        calls_.erase(found);
        if (const auto* error = std::get_if<Error>(&answer)) {
            replyError(message.get(), *error);
            return;
        }
        sd_bus_message* made = nullptr;
        if (sd_bus_message_new_method_return(message.get(), &made) < 0) {
            return;
        }
        const Message reply(made);
        bool whole = true;
        if (const auto* bytes = std::get_if<Bytes>(&answer)) {
            whole = appendBytes(reply.get(), *bytes);
        } else if (const auto* flag = std::get_if<bool>(&answer)) {
            whole = sd_bus_message_append(reply.get(), "b", int{*flag}) >= 0;
        }
        if (whole) {
            sd_bus_send(bus_.get(), reply.get(), nullptr);
        }
    }

    void sendViewModels(const Bytes& archive, std::function<void(std::optional<Error>)> reply) {
        if (!bus_) {
            reply(transportError(TransportError::disconnected, "the agent is gone"));
            return;
        }
        sd_bus_message* made = nullptr;
        const std::string member =
            memberOf(info(AgentOperation::updateSettingsViewModels).selector);
        if (pushes_.size() >= kMaxOutstandingCalls ||
            sd_bus_message_new_method_call(bus_.get(), &made, nullptr, kObjectPath, kAgentInterface,
                                           member.c_str()) < 0) {
            reply(transportError(TransportError::tooManyCalls, "the agent answers no calls"));
            return;
        }
        const Message call(made);
        const std::uint64_t number = nextCall_++;
        Push& push = pushes_[number];
        push = {.connection = this, .number = number, .reply = std::move(reply), .slot = nullptr};
        sd_bus_slot* slot = nullptr;
        if (!appendBytes(call.get(), archive) ||
            sd_bus_call_async(bus_.get(), &slot, call.get(), pushed, &push, 0) < 0) {
            finish(number, transportError(TransportError::disconnected, "the agent is gone"));
            return;
        }
        push.slot.reset(slot);
    }

  private:
    /// A call of the agent that waits for its reply.
    struct Push {
        BusConnection* connection;
        std::uint64_t number;
        std::function<void(std::optional<Error>)> reply;
        Slot slot;
    };

    static int pushed(sd_bus_message* message, void* data, sd_bus_error*) {
        const auto* push = static_cast<Push*>(data);
        push->connection->finish(push->number, sd_bus_message_is_method_error(message, nullptr) > 0
                                                   ? std::optional(errorOf(message))
                                                   : std::nullopt);
        return 0;
    }

    void finish(std::uint64_t push, const std::optional<Error>& error) {
        const auto node = pushes_.extract(push);
        node.mapped().reply(error);
    }

    void run() {
        threadsConnection = this;
        sd_bus_add_filter(bus_.get(), nullptr, filtered, this);
        if (const int status = sd_bus_start(bus_.get()); status < 0) {
            noteBrokenProtocol(status);
        } else {
            while (serveReady()) {
                waitForMore();
            }
        }
        end();
    }

    /// The connection's last words; nothing is delivered after them.
    void end() {
        bus_.reset();
        calls_.clear();
        for (const auto& work : mailbox_->close()) {
            work();
        }
        while (!pushes_.empty()) {
            finish(pushes_.begin()->first,
                   transportError(TransportError::disconnected, "the agent is gone"));
        }
        if (const auto handler = std::exchange(invalidated_, nullptr)) {
            handler();
        }
        object_.reset();
    }

    /// Handles what has arrived; false when the connection is over.
    bool serveReady() {
        while (true) {
            for (const auto& work : mailbox_->take()) {
                work();
            }
            const int status = sd_bus_process(bus_.get(), nullptr);
            if (gone_) {
                return false;
            }
            if (status < 0) {
                noteBrokenProtocol(status);
                return false;
            }
            if (!keepsUp()) {
                note(kConnection, "closed, for it leaves more than " +
                                      std::to_string(kMaxUnreadMessages) + " messages unread");
                return false;
            }
            if (status == 0) {
                return true;
            }
        }
    }

    void noteBrokenProtocol(int status) {
        note(kConnection,
             std::string("closed, for it broke the protocol: ") + std::strerror(-status));
    }

    bool keepsUp() const {
        std::uint64_t unread = 0;
        return sd_bus_get_n_queued_write(bus_.get(), &unread) < 0 || unread <= kMaxUnreadMessages;
    }

    void waitForMore() const {
        constexpr std::uint64_t kMicrosecondsPerSecond = 1000000;
        std::uint64_t due = UINT64_MAX;
        sd_bus_get_timeout(bus_.get(), &due);
        timespec rest{};
        if (due != UINT64_MAX) {
            timespec now{};
            clock_gettime(CLOCK_MONOTONIC, &now);
            const std::uint64_t elapsed =
                static_cast<std::uint64_t>(now.tv_sec) * kMicrosecondsPerSecond +
                static_cast<std::uint64_t>(now.tv_nsec) / 1000;
            const std::uint64_t left = due > elapsed ? due - elapsed : 0;
            rest = {.tv_sec = static_cast<time_t>(left / kMicrosecondsPerSecond),
                    .tv_nsec = static_cast<long>(left % kMicrosecondsPerSecond) * 1000};
        }
        const int events = sd_bus_get_events(bus_.get());
        pollfd waited[] = {{.fd = sd_bus_get_fd(bus_.get()),
                            .events = static_cast<short>(events < 0 ? 0 : events),
                            .revents = 0},
                           {.fd = mailbox_->descriptor(), .events = POLLIN, .revents = 0}};
        ppoll(waited, std::size(waited), due == UINT64_MAX ? nullptr : &rest, nullptr);
    }

    static int filtered(sd_bus_message* message, void* data, sd_bus_error*) {
        auto* self = static_cast<BusConnection*>(data);
        if (isDisconnection(message)) {
            self->gone_ = true;
            return 0;
        }
        if (!isMethodCall(message)) {
            return 0;
        }
        self->called(message);
        return 1;
    }

    void called(sd_bus_message* message) {
        const auto member = memberOn(message, kWallpaperInterface);
        const auto operation = member ? wallpaperOperationOf(*member) : std::nullopt;
        if (!operation) {
            refuse(message, member.value_or("an operation of another interface"),
                   transportError(TransportError::unknownOperation,
                                  "the protocol has no such operation"));
            return;
        }
        const WallpaperOperationInfo& operationInfo = info(*operation);
        auto arguments = readObjects(message, operationInfo);
        if (!arguments) {
            refuse(message, operationInfo.selector, arguments.error());
            return;
        }
        if (calls_.size() >= kMaxOutstandingCalls) {
            refuse(message, operationInfo.selector,
                   transportError(TransportError::tooManyCalls,
                                  "more than " + std::to_string(kMaxOutstandingCalls) +
                                      " calls are waiting for their reply"));
            return;
        }
        const std::uint64_t call = nextCall_++;
        calls_.emplace(call, Message(sd_bus_message_ref(message)));
        object_->invoke(*operation, std::move(*arguments),
                        Reply(operationInfo.reply,
                              std::make_unique<BusReplySink>(weak_from_this(), mailbox_, call)));
    }

    Result<std::vector<ObjectRef>> readObjects(sd_bus_message* message,
                                               const WallpaperOperationInfo& operation) {
        auto archives = readArguments(message, operation.argumentCount);
        if (!archives) {
            return Failure{archives.error()};
        }
        std::vector<ObjectRef> objects;
        for (int index = 0; index < operation.argumentCount; ++index) {
            const auto archive = (*archives)[static_cast<std::size_t>(index)];
            if (archive.empty()) {
                objects.push_back(nullptr);
                continue;
            }
            auto object = unarchiveObject(
                archive,
                exported_.classes(
                    {.selector = operation.selector, .argumentIndex = index, .ofReply = false}),
                runtime_);
            if (!object) {
                return Failure{transportError(TransportError::refusedArgument,
                                              "argument " + std::to_string(index) + ": " +
                                                  object.error().message)};
            }
            objects.push_back(std::move(*object));
        }
        return objects;
    }

    void refuse(sd_bus_message* message, std::string_view operation, const Error& error) {
        note(operation, error.message);
        replyError(message, error);
    }

    /// Says what was refused and why, unless the peer has been spoken of often enough.
    void note(std::string_view what, const std::string& why) {
        if (!refused_ || noted_ == kMaxNotedRefusals) {
            return;
        }
        const std::string peer = " from pid " + std::to_string(processIdentifier_) + ": ";
        refused_(std::string(what) + peer + why);
        if (++noted_ == kMaxNotedRefusals) {
            refused_("more" + peer + "no further refusal of this connection is noted");
        }
    }

    Bus bus_;
    int processIdentifier_;
    const ObjectRuntime& runtime_;
    std::shared_ptr<Mailbox> mailbox_;
    XPCInterface exported_{kWallpaperProtocolName};
    XPCInterface remote_{kAgentProtocolName};
    std::shared_ptr<ExportedObject> object_;
    std::function<void()> invalidated_;
    std::function<void(const std::string&)> refused_;
    /// The peer closed its end.
    bool gone_ = false;
    /// How often `refused_` was called for this peer.
    std::size_t noted_ = 0;
    /// Calls that wait for their reply, by number.
    std::unordered_map<std::uint64_t, Message> calls_;
    std::unordered_map<std::uint64_t, Push> pushes_;
    std::uint64_t nextCall_ = 0;
};

void BusReplySink::deliver(Answer answer) {
    if (const auto alive = connection_.lock(); alive && alive->isOwnThread()) {
        alive->answer(call_, answer);
        return;
    }
    mailbox_->post([connection = connection_, call = call_, answer = std::move(answer)] {
        if (const auto alive = connection.lock()) {
            alive->answer(call, answer);
        }
    });
}

void BusAgentProxy::updateSettingsViewModels(const ObjectRef& viewModels,
                                             std::function<void(std::optional<Error>)> reply) {
    auto archive = viewModels ? archiveObject(*viewModels) : Result<Bytes>(Bytes{});
    if (!archive) {
        reply(archive.error());
        return;
    }
    const bool posted =
        mailbox_->post([connection = connection_, bytes = std::move(*archive), reply] {
            if (const auto alive = connection.lock()) {
                alive->sendViewModels(bytes, reply);
            }
        });
    if (!posted) {
        reply(transportError(TransportError::disconnected, "the agent is gone"));
    }
}

} // namespace

std::shared_ptr<XPCConnection> makeBusConnection(FileDescriptor socket,
                                                 const ObjectRuntime& runtime) {
    ucred peer{};
    socklen_t size = sizeof(peer);
    if (getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        return nullptr;
    }
    Bus bus = openBus(socket.get(), Side::server);
    if (!bus) {
        return nullptr;
    }
    static_cast<void>(socket.release());
    return std::make_shared<BusConnection>(std::move(bus), peer.pid, runtime);
}

} // namespace vantor::xpc
