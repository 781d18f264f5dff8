#include "platform/linux/system/xpc/bus_connection.h"

#include "platform/linux/archive/wire_object.h"
#include "platform/linux/system/xpc/bus_message.h"
#include "platform/linux/system/xpc/xpc_wire.h"
#include "platform/object_runtime.h"

#include <cstdint>
#include <mutex>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <thread>
#include <unordered_map>
#include <variant>

namespace vantor::xpc {
namespace {

/// What answers a call, in the shape of its operation.
using Answer = std::variant<Error, std::monostate, Bytes, bool>;

/// Work for a connection's thread. Outlives the connection, whose thread may end at any moment.
class Mailbox {
  public:
    Mailbox() : wake_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

    int descriptor() const { return wake_.get(); }

    /// Any thread. Dropped once the connection is closed.
    void post(std::function<void()> work) {
        {
            const std::scoped_lock guard(lock_);
            if (closed_) {
                return;
            }
            posted_.push_back(std::move(work));
        }
        eventfd_write(wake_.get(), 1);
    }

    std::vector<std::function<void()>> take() {
        eventfd_t count = 0;
        eventfd_read(wake_.get(), &count);
        std::vector<std::function<void()>> work;
        const std::scoped_lock guard(lock_);
        work.swap(posted_);
        return work;
    }

    void close() {
        std::vector<std::function<void()>> dropped;
        const std::scoped_lock guard(lock_);
        closed_ = true;
        dropped.swap(posted_);
    }

  private:
    FileDescriptor wake_;
    /// Guards `posted_` and `closed_`.
    std::mutex lock_;
    std::vector<std::function<void()>> posted_;
    bool closed_ = false;
};

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
        std::thread([self = shared_from_this()] { self->run(); }).detach();
    }

    // On the connection's thread from here on.

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
        struct Pending {
            std::function<void(std::optional<Error>)> reply;
        };
        sd_bus_message* made = nullptr;
        const std::string member =
            memberOf(info(AgentOperation::updateSettingsViewModels).selector);
        if (!bus_ || sd_bus_message_new_method_call(bus_.get(), &made, nullptr, kObjectPath,
                                                    kAgentInterface, member.c_str()) < 0) {
            reply(transportError(TransportError::disconnected, "the agent is gone"));
            return;
        }
        const Message call(made);
        auto pending = std::make_unique<Pending>(Pending{std::move(reply)});
        const auto answered = [](sd_bus_message* message, void* data, sd_bus_error*) {
            const std::unique_ptr<Pending> owned(static_cast<Pending*>(data));
            owned->reply(sd_bus_message_is_method_error(message, nullptr) > 0
                             ? std::optional(errorOf(message))
                             : std::nullopt);
            return 0;
        };
        if (!appendBytes(call.get(), archive) ||
            sd_bus_call_async(bus_.get(), nullptr, call.get(), answered, pending.get(), 0) < 0) {
            pending->reply(transportError(TransportError::disconnected, "the agent is gone"));
            return;
        }
        // The bus calls back exactly once, also when the peer goes.
        static_cast<void>(pending.release());
    }

  private:
    void run() {
        sd_event* made = nullptr;
        if (sd_event_new(&made) >= 0) {
            event_.reset(made);
            sd_bus_add_filter(bus_.get(), nullptr, filtered, this);
            if (sd_event_add_io(event_.get(), nullptr, mailbox_->descriptor(), EPOLLIN, mailArrived,
                                this) >= 0 &&
                sd_bus_attach_event(bus_.get(), event_.get(), SD_EVENT_PRIORITY_NORMAL) >= 0 &&
                sd_bus_start(bus_.get()) >= 0) {
                sd_event_loop(event_.get());
            }
        }
        mailbox_->close();
        calls_.clear();
        bus_.reset();
        event_.reset();
        if (const auto handler = std::exchange(invalidated_, nullptr)) {
            handler();
        }
        object_.reset();
    }

    static int mailArrived(sd_event_source*, int, std::uint32_t, void* data) {
        for (const auto& work : static_cast<BusConnection*>(data)->mailbox_->take()) {
            work();
        }
        return 0;
    }

    static int filtered(sd_bus_message* message, void* data, sd_bus_error*) {
        auto* self = static_cast<BusConnection*>(data);
        if (isDisconnection(message)) {
            sd_event_exit(self->event_.get(), 0);
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
        if (refused_) {
            refused_(std::string(operation) + " from pid " + std::to_string(processIdentifier_) +
                     ": " + error.message);
        }
        replyError(message, error);
    }

    Event event_;
    Bus bus_;
    int processIdentifier_;
    const ObjectRuntime& runtime_;
    std::shared_ptr<Mailbox> mailbox_;
    XPCInterface exported_{kWallpaperProtocolName};
    XPCInterface remote_{kAgentProtocolName};
    std::shared_ptr<ExportedObject> object_;
    std::function<void()> invalidated_;
    std::function<void(const std::string&)> refused_;
    /// Calls that wait for their reply, by number.
    std::unordered_map<std::uint64_t, Message> calls_;
    std::uint64_t nextCall_ = 0;
};

void BusReplySink::deliver(Answer answer) {
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
    mailbox_->post(
        [connection = connection_, bytes = std::move(*archive), reply = std::move(reply)] {
            if (const auto alive = connection.lock()) {
                alive->sendViewModels(bytes, reply);
            }
        });
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
