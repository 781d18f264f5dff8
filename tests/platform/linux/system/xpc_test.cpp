#include "platform/linux/archive/class_registry.h"
#include "platform/linux/archive/plain_object.h"
#include "platform/linux/system/xpc/bus_connection.h"
#include "platform/linux/system/xpc/bus_message.h"
#include "platform/linux/system/xpc/xpc_client.h"
#include "platform/linux/system/xpc/xpc_wire.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <sys/socket.h>
#include <thread>

namespace vantor::xpc {
namespace {

constexpr ArgumentSlot kInvalidateSlot{"invalidateWithId:reply:", 0, false};

/// Answers every operation in its shape and notes the calls; can hold replies back.
class Answering : public ExportedObject {
  public:
    void invoke(WallpaperOperation operation, std::vector<ObjectRef> arguments,
                Reply reply) override {
        {
            const std::scoped_lock guard(lock);
            ++calls;
            lastText = !arguments.empty() && arguments[0] ? arguments[0]->asString() : std::nullopt;
            if (holding) {
                held.push_back(std::move(reply));
                return;
            }
        }
        switch (reply.shape()) {
        case ReplyShape::booleanAndError:
            return std::move(reply).sendBoolean(operation ==
                                                WallpaperOperation::isChoiceDownloaded);
        case ReplyShape::objectAndError:
            if (operation == WallpaperOperation::snapshot) {
                return std::move(reply).sendObjectError(
                    {.domain = "VantorLockScreen", .code = 3, .message = "no snapshot"});
            }
            return std::move(reply).sendObject(arguments.empty() ? nullptr : arguments[0]);
        default:
            return std::move(reply).send(std::nullopt);
        }
    }

    std::mutex lock;
    int calls = 0;
    std::optional<std::string> lastText;
    bool holding = false;
    std::vector<Reply> held;
};

class XPCTest : public testing::Test {
  protected:
    struct End {
        std::shared_ptr<Answering> object = std::make_shared<Answering>();
        std::unique_ptr<XPCClient> client;
        FileDescriptor raw;
    };

    /// The connections' threads call back into the test: it waits for their last word.
    void TearDown() override {
        EXPECT_TRUE(eventually([this] { return invalidations == served; }));
    }

    /// A server on one end of a fresh socket pair; the other end stays raw.
    End serve() {
        ++served;
        int ends[2];
        EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0, ends), 0);
        End end;
        end.raw = FileDescriptor(ends[1]);
        const auto connection = makeBusConnection(FileDescriptor(ends[0]), runtime);
        EXPECT_NE(connection, nullptr);
        EXPECT_EQ(connection->processIdentifier(), getpid());
        XPCInterface exported(kWallpaperProtocolName);
        const ClassSet strings{runtime.classNamed("NSString")};
        exported.setClasses(strings, kInvalidateSlot);
        exported.setClasses(strings, {"handleDebugRequestFor:reply:", 0, false});
        exported.setClasses(
            {runtime.classNamed("NSNumber")},
            {"addChoiceRequestWithChoiceRequest:onBehalfOfProcess:reply:", 0, false});
        connection->setExportedInterface(std::move(exported));
        connection->setExportedObject(end.object);
        connection->setInvalidationHandler([this] { ++invalidations; });
        connection->setRefusalHandler([this](const std::string& sentence) {
            const std::scoped_lock guard(lock);
            refusals.push_back(sentence);
        });
        connection->resume();
        return end;
    }

    End connect() {
        End end = serve();
        end.client = XPCClient::create(
            loop, std::move(end.raw), runtime, {runtime.classNamed("NSString")},
            {.called = [](AgentOperation, const auto&) { return std::optional<Error>(); },
             .disconnected = [] {}});
        EXPECT_NE(end.client, nullptr);
        return end;
    }

    ObjectRef text(const char* value) {
        return makePlainObject(*runtime.classNamed("NSString"), PropertyList(value));
    }
    ObjectRef number(int value) {
        return makePlainObject(*runtime.classNamed("NSNumber"), PropertyList(value));
    }

    CallResult call(XPCClient& client, WallpaperOperation operation, ObjectRef argument) {
        CallResult result;
        std::vector<ObjectRef> arguments(static_cast<std::size_t>(info(operation).argumentCount),
                                         nullptr);
        arguments[0] = std::move(argument);
        client.call(operation, arguments, [&](CallResult got) {
            result = std::move(got);
            loop.stop(0);
        });
        const auto deadline = loop.asyncAfter(10, [this] { loop.stop(1); });
        EXPECT_EQ(loop.run(), 0) << "no reply";
        deadline->cancel();
        return result;
    }

    /// Runs the loop, on which the clients live, until the condition holds.
    bool eventually(const std::function<bool()>& holds) {
        for (int i = 0; i < 1000 && !holds(); ++i) {
            loop.asyncAfter(0.005, [this] { loop.stop(0); });
            loop.run();
        }
        return holds();
    }

    ClassRegistry runtime;
    MainLoop loop;
    int served = 0;
    std::atomic<int> invalidations = 0;
    std::mutex lock;
    std::vector<std::string> refusals;
};

TEST_F(XPCTest, CarriesEveryReplyShapeAndTheError) {
    End end = connect();
    EXPECT_FALSE(call(*end.client, WallpaperOperation::invalidate, text("a")).error);
    EXPECT_EQ(end.object->lastText, "a");
    EXPECT_TRUE(call(*end.client, WallpaperOperation::isChoiceDownloaded, nullptr).boolean);
    EXPECT_FALSE(call(*end.client, WallpaperOperation::canSkipShuffledContent, nullptr).boolean);
    const CallResult echoed = call(*end.client, WallpaperOperation::handleDebugRequest, text("é…"));
    ASSERT_NE(echoed.object, nullptr);
    EXPECT_EQ(echoed.object->asString(), "é…");
    const CallResult failed = call(*end.client, WallpaperOperation::snapshot, nullptr);
    EXPECT_EQ(failed.error,
              (Error{.domain = "VantorLockScreen", .code = 3, .message = "no snapshot"}));
    EXPECT_EQ(failed.object, nullptr);
}

TEST_F(XPCTest, AForbiddenClassIsRefusedLoggedAndTheConnectionStaysUp) {
    End end = connect();
    const CallResult refused = call(*end.client, WallpaperOperation::invalidate, number(5));
    ASSERT_TRUE(refused.error);
    EXPECT_EQ(refused.error->domain, kTransportDomain);
    EXPECT_EQ(refused.error->code, static_cast<int>(TransportError::refusedArgument));
    EXPECT_EQ(end.object->calls, 0);
    {
        const std::scoped_lock guard(lock);
        ASSERT_EQ(refusals.size(), 1U);
        EXPECT_EQ(refusals[0].find("invalidateWithId:reply: from pid "), 0U) << refusals[0];
    }
    EXPECT_FALSE(call(*end.client, WallpaperOperation::invalidate, text("b")).error);
}

TEST_F(XPCTest, AReplyOfAClassThatIsNotExpectedIsAnErrorOfItsCall) {
    End end = connect();
    const CallResult echoed = call(*end.client, WallpaperOperation::addChoiceRequest, number(7));
    ASSERT_TRUE(echoed.error);
    EXPECT_EQ(echoed.error->code, static_cast<int>(TransportError::badReply));
    EXPECT_EQ(echoed.object, nullptr);
    EXPECT_EQ(call(*end.client, WallpaperOperation::handleDebugRequest, text("a")).error,
              std::nullopt);
}

TEST_F(XPCTest, ASlotWithoutASetCarriesNothing) {
    End end = connect();
    EXPECT_TRUE(call(*end.client, WallpaperOperation::handleNotification, text("x")).error);
    EXPECT_EQ(end.object->calls, 0);
}

/// Calls a member with the bytes as its one argument, as a peer that writes its own messages.
class RawCaller {
  public:
    RawCaller(FileDescriptor socket) : bus_(openBus(socket.release(), Side::client)) {
        EXPECT_GE(sd_bus_start(bus_.get()), 0);
    }

    /// The name of the error that the call is answered with, or "" for success.
    std::string call(const char* member, const char* signature, const Bytes& bytes) {
        sd_bus_message* made = nullptr;
        EXPECT_GE(sd_bus_message_new_method_call(bus_.get(), &made, nullptr, kObjectPath,
                                                 kWallpaperInterface, member),
                  0);
        const Message message(made);
        if (std::string_view(signature) == "ay") {
            EXPECT_TRUE(appendBytes(message.get(), bytes));
        } else {
            EXPECT_GE(sd_bus_message_append(message.get(), "s", "text"), 0);
        }
        sd_bus_error error{};
        sd_bus_message* reply = nullptr;
        sd_bus_call(bus_.get(), message.get(), 10'000'000, &error, &reply);
        std::string name = error.message != nullptr ? error.message : "";
        sd_bus_error_free(&error);
        sd_bus_message_unref(reply);
        return name;
    }

  private:
    Bus bus_;
};

TEST_F(XPCTest, BytesThatAreNoArchiveAreAnsweredWithAnErrorAndTheConnectionStaysUp) {
    End end = serve();
    RawCaller caller(std::move(end.raw));
    const char* const member = "invalidateWithId_reply_";
    EXPECT_NE(caller.call(member, "ay", {1, 2, 3}), "");
    EXPECT_NE(caller.call(member, "ay", Bytes(100'000, 0xFF)), "");
    EXPECT_NE(caller.call(member, "s", {}), "");
    EXPECT_EQ(caller.call("acquire", "ay", {}), "the protocol has no such operation");
    EXPECT_EQ(end.object->calls, 0);
    EXPECT_EQ(caller.call(member, "ay", {}), "");
    EXPECT_EQ(end.object->calls, 1);
    const std::scoped_lock guard(lock);
    EXPECT_EQ(refusals.size(), 4U);
}

TEST_F(XPCTest, ALargeMessageIsRefusedWithItsSizeAndTheLimit) {
    End end = serve();
    RawCaller caller(std::move(end.raw));
    EXPECT_EQ(caller.call("invalidateWithId_reply_", "ay", Bytes(kMaxMessageBytes + 1)),
              "message of 16777217 bytes exceeds the limit of 16777216");
}

TEST_F(XPCTest, MoreCallsThanMayWaitAreRefused) {
    End end = connect();
    end.object->holding = true;
    std::size_t refused = 0;
    for (std::size_t i = 0; i < kMaxOutstandingCalls + 3; ++i) {
        end.client->call(WallpaperOperation::invalidate, {nullptr}, [&](const CallResult& result) {
            if (result.error &&
                result.error->code == static_cast<int>(TransportError::tooManyCalls) &&
                ++refused == 3) {
                loop.stop(0);
            }
        });
    }
    const auto deadline = loop.asyncAfter(10, [this] { loop.stop(1); });
    EXPECT_EQ(loop.run(), 0);
    EXPECT_EQ(refused, 3U);
    for (Reply& reply : end.object->held) {
        std::move(reply).send(std::nullopt);
    }
}

TEST_F(XPCTest, AReplyAfterTheClientWentIsDroppedAndInvalidationComesOnce) {
    End end = connect();
    end.object->holding = true;
    end.client->call(WallpaperOperation::invalidate, {nullptr}, [](const CallResult&) {});
    ASSERT_TRUE(eventually([&] {
        const std::scoped_lock guard(end.object->lock);
        return end.object->held.size() == 1;
    }));
    end.client.reset();
    ASSERT_TRUE(eventually([&] { return invalidations == 1; }));
    std::move(end.object->held.front()).send(std::nullopt);
    EXPECT_EQ(invalidations, 1);
}

TEST_F(XPCTest, TwoConnectionsServeIndependently) {
    End one = connect();
    End other = connect();
    one.object->holding = true;
    one.client->call(WallpaperOperation::invalidate, {nullptr}, [](const CallResult&) {});
    EXPECT_FALSE(call(*other.client, WallpaperOperation::invalidate, text("c")).error);
    other.client.reset();
    ASSERT_TRUE(eventually([&] { return invalidations == 1; }));
    ASSERT_TRUE(eventually([&] {
        const std::scoped_lock guard(one.object->lock);
        return one.object->held.size() == 1;
    }));
    std::move(one.object->held.front()).send(std::nullopt);
}

TEST(XPCWire, MembersStandForSelectorsBothWays) {
    EXPECT_EQ(memberOf("acquireWithId:request:reply:"), "acquireWithId_request_reply_");
    for (const auto& operation : wallpaperOperations()) {
        EXPECT_EQ(wallpaperOperationOf(memberOf(operation.selector)), operation.operation);
    }
    EXPECT_EQ(agentOperationOf("updateSettingsViewModels_reply_"),
              AgentOperation::updateSettingsViewModels);
    EXPECT_EQ(wallpaperOperationOf("acquireWithId_request_reply"), std::nullopt);
}

} // namespace
} // namespace vantor::xpc
