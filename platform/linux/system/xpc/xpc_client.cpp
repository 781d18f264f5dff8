#include "platform/linux/system/xpc/xpc_client.h"

#include "platform/linux/archive/wire_object.h"
#include "platform/linux/system/xpc/bus_message.h"
#include "platform/linux/system/xpc/xpc_wire.h"

#include <string_view>
#include <unordered_map>

namespace vantor::xpc {

struct XPCClient::State {
    struct Pending {
        State* client;
        ReplyShape shape;
        std::function<void(CallResult)> done;
        Slot slot;
    };

    MainLoop& loop;
    const ObjectRuntime& runtime;
    std::vector<const ObjectClass*> classes;
    ClientHandlers handlers;
    Bus bus;
    /// Calls that wait for their reply, by number.
    std::unordered_map<std::uint64_t, Pending> pending;
    std::uint64_t nextCall = 0;

    State(MainLoop& mainLoop, const ObjectRuntime& objectRuntime,
          std::vector<const ObjectClass*> allowed, ClientHandlers clientHandlers)
        : loop(mainLoop), runtime(objectRuntime), classes(std::move(allowed)),
          handlers(std::move(clientHandlers)) {}

    static int answered(sd_bus_message* message, void* data, sd_bus_error*) {
        auto* waiting = static_cast<Pending*>(data);
        const auto done = std::move(waiting->done);
        CallResult result = waiting->client->resultOf(message, waiting->shape);
        std::erase_if(waiting->client->pending,
                      [waiting](const auto& entry) { return &entry.second == waiting; });
        done(std::move(result));
        return 0;
    }

    CallResult resultOf(sd_bus_message* message, ReplyShape shape) {
        if (sd_bus_message_is_method_error(message, nullptr) > 0) {
            return {.error = errorOf(message), .object = nullptr};
        }
        const auto bad = [](std::string why) {
            return CallResult{.error = transportError(TransportError::badReply, std::move(why)),
                              .object = nullptr};
        };
        if (shape == ReplyShape::booleanAndError) {
            int value = 0;
            if (sd_bus_message_read(message, "b", &value) < 0) {
                return bad("the reply holds no boolean");
            }
            return {.error = std::nullopt, .object = nullptr, .boolean = value != 0};
        }
        if (shape != ReplyShape::objectAndError) {
            return {};
        }
        auto archives = readArguments(message, 1);
        if (!archives) {
            return bad(archives.error().message);
        }
        if (archives->front().empty()) {
            return {};
        }
        auto object = unarchiveObject(archives->front(), classes, runtime);
        if (!object) {
            return bad(object.error().message);
        }
        return {.error = std::nullopt, .object = std::move(*object)};
    }

    static int filtered(sd_bus_message* message, void* data, sd_bus_error*) {
        auto* self = static_cast<State*>(data);
        if (isDisconnection(message)) {
            if (const auto handler = std::exchange(self->handlers.disconnected, nullptr)) {
                // Not from within the bus, which the handler may destroy.
                self->loop.async(handler);
            }
            return 0;
        }
        if (!isMethodCall(message)) {
            return 0;
        }
        self->called(message);
        return 1;
    }

    void called(sd_bus_message* message) {
        const auto member = memberOn(message, kAgentInterface);
        const auto operation = member ? agentOperationOf(*member) : std::nullopt;
        if (!operation) {
            replyError(message, transportError(TransportError::unknownOperation,
                                               "the protocol has no such operation"));
            return;
        }
        auto archives = readArguments(message, info(*operation).argumentCount);
        if (!archives) {
            replyError(message, archives.error());
            return;
        }
        std::vector<ObjectRef> arguments;
        for (const auto archive : *archives) {
            if (archive.empty()) {
                arguments.push_back(nullptr);
                continue;
            }
            auto object = unarchiveObject(archive, classes, runtime);
            if (!object) {
                replyError(message,
                           transportError(TransportError::refusedArgument, object.error().message));
                return;
            }
            arguments.push_back(std::move(*object));
        }
        if (const auto error = handlers.called(*operation, std::move(arguments))) {
            replyError(message, *error);
        } else if (info(*operation).reply != ReplyShape::none) {
            sd_bus_reply_method_return(message, nullptr);
        }
    }
};

XPCClient::XPCClient(std::unique_ptr<State> state) : state_(std::move(state)) {}

XPCClient::~XPCClient() {
    // Replies that are still to come belong to nobody.
    state_->pending.clear();
}

std::unique_ptr<XPCClient> XPCClient::create(MainLoop& loop, FileDescriptor socket,
                                             const ObjectRuntime& runtime,
                                             std::vector<const ObjectClass*> classes,
                                             ClientHandlers handlers) {
    Bus bus = openBus(socket.get(), Side::client);
    if (!bus) {
        return nullptr;
    }
    static_cast<void>(socket.release());
    auto state = std::make_unique<State>(loop, runtime, std::move(classes), std::move(handlers));
    if (sd_bus_add_filter(bus.get(), nullptr, State::filtered, state.get()) < 0 ||
        sd_bus_attach_event(bus.get(), loop.event(), SD_EVENT_PRIORITY_NORMAL) < 0 ||
        sd_bus_start(bus.get()) < 0) {
        return nullptr;
    }
    state->bus = std::move(bus);
    return std::unique_ptr<XPCClient>(new XPCClient(std::move(state)));
}

void XPCClient::call(WallpaperOperation operation, const std::vector<ObjectRef>& arguments,
                     std::function<void(CallResult)> done) {
    const auto failLater = [this, &done](Error error) {
        state_->loop.async([done = std::move(done), error = std::move(error)] {
            done({.error = error, .object = nullptr});
        });
    };
    const WallpaperOperationInfo& operationInfo = info(operation);
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_call(state_->bus.get(), &made, nullptr, kObjectPath,
                                       kWallpaperInterface,
                                       memberOf(operationInfo.selector).c_str()) < 0) {
        failLater(transportError(TransportError::disconnected, "the extension is gone"));
        return;
    }
    const Message message(made);
    for (const ObjectRef& argument : arguments) {
        auto archive = argument ? archiveObject(*argument) : Result<Bytes>(Bytes{});
        if (!archive || !appendBytes(message.get(), *archive)) {
            failLater(archive ? transportError(TransportError::refusedArgument,
                                               "the argument does not fit a message")
                              : archive.error());
            return;
        }
    }
    const std::uint64_t number = state_->nextCall++;
    auto& waiting = state_->pending[number];
    waiting.client = state_.get();
    waiting.shape = operationInfo.reply;
    waiting.done = std::move(done);
    sd_bus_slot* slot = nullptr;
    // No time limit: a stuck extension is noticed by its agent's own means.
    if (sd_bus_call_async(state_->bus.get(), &slot, message.get(), State::answered, &waiting,
                          UINT64_MAX) < 0) {
        done = std::move(waiting.done);
        state_->pending.erase(number);
        failLater(transportError(TransportError::disconnected, "the extension is gone"));
        return;
    }
    waiting.slot.reset(slot);
}

} // namespace vantor::xpc
