// Peers that misbehave, against the real extension: whatever they do, it lives, answers another
// client, gives back what it took, and says in a line what happened.

#include "platform/linux/archive/keyed_archive_writer.h"
#include "platform/linux/archive/wire_object.h"
#include "platform/linux/system/xpc/xpc_wire.h"
#include "platform/wallpaper_protocol.h"
#include "tests/e2e/service.h"
#include "tests/platform/linux/archive/archive_bytes.h"
#include "tests/support/kit_payloads.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <limits>
#include <random>

#if defined(__SANITIZE_ADDRESS__)
#define VANTOR_MEMORY_IS_THE_SANITIZERS 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define VANTOR_MEMORY_IS_THE_SANITIZERS 1
#endif
#endif

namespace vantor::e2e {
namespace {

using rawbus::MessageType;
using rawbus::MethodCall;

#ifdef VANTOR_MEMORY_IS_THE_SANITIZERS
constexpr bool kMemoryIsOurs = false;
#else
constexpr bool kMemoryIsOurs = true;
#endif

/// What one bad peer may leave behind: pages that the allocator keeps for later.
constexpr std::size_t kKeptKiB = 48 << 10;

MethodCall callOf(const WallpaperOperationInfo& operation, std::vector<Bytes> arguments = {}) {
    arguments.resize(static_cast<std::size_t>(operation.argumentCount));
    return {.interface = xpc::kWallpaperInterface,
            .member = xpc::memberOf(operation.selector),
            .arguments = std::move(arguments)};
}

class HostilePeer : public Service {
  protected:
    void SetUp() override {
        Service::SetUp();
        start();
        good_ = client();
        ASSERT_NE(good_, nullptr);
        ASSERT_EQ(acquire(*good_).error, std::nullopt);
        // Two drawables are all that a wallpaper ever has.
        ASSERT_TRUE(eventually([this] { return drawableCount() == 2; }));
        measure();
    }

    /// What the extension holds now is what it must hold at the end.
    void measure() {
        descriptors_ = descriptorCount();
        threads_ = threadCount();
        memory_ = residentMemory();
    }

    /// What must hold after every misbehaviour, once its peer is gone.
    void TearDown() override {
        EXPECT_TRUE(isServing()) << howItEnded();
        expectService();
        EXPECT_TRUE(eventually([this] { return descriptorCount() == descriptors_; }))
            << descriptorCount() << " descriptors, not " << descriptors_;
        EXPECT_TRUE(eventually([this] { return threadCount() == threads_; }))
            << threadCount() << " threads, not " << threads_;
        if (kMemoryIsOurs) {
            EXPECT_LT(residentMemory(), memory_ + kKeptKiB);
        }
    }

    /// Another client is answered, on its connection's queue and on the main one.
    void expectService() {
        EXPECT_TRUE(call(*good_, WallpaperOperation::isChoiceDownloaded).boolean);
        const auto updated =
            call(*good_, WallpaperOperation::update,
                 {nullptr, agent::makeUpdateRequest({.presentationMode = "locked"})});
        EXPECT_EQ(updated.error, std::nullopt);
    }

    /// Lets the good client call every operation, and measures again: what they cost when all is
    /// well, a wallpaper without a name and the picker's thumbnails among it, is no leak.
    void callEverything() {
        for (const auto& operation : wallpaperOperations()) {
            call(*good_, operation.operation);
        }
        call(*good_, WallpaperOperation::acquire);
        ASSERT_TRUE(eventually([this] { return drawableCount() == 4; }));
        measure();
    }

    void expectLogged(const std::string& text) {
        EXPECT_TRUE(eventually([&] { return log().find(text) != std::string::npos; }))
            << text << "\nis not in\n"
            << log();
    }

    /// Sends one call and expects it to be refused in that sentence, in the reply and in the log.
    void expectRefusal(const MethodCall& call, const std::string& sentence) {
        RawPeer peer = authenticatedPeer();
        ASSERT_TRUE(peer.send(call));
        const auto reply = peer.receive();
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->replySerial, call.serial);
        EXPECT_NE(errorText(*reply).find(sentence), std::string::npos) << errorText(*reply);
        expectLogged(sentence);
    }

    Bytes wallpaperID() const {
        return archiveObject(
                   *agent::makeWallpaperID(*UUID::parse("0F0E0D0C-0B0A-0908-0706-050403020100")))
            .value();
    }

  private:
    std::unique_ptr<xpc::XPCClient> good_;
    std::size_t descriptors_ = 0;
    std::size_t threads_ = 0;
    std::size_t memory_ = 0;
};

TEST_F(HostilePeer, GarbageBeforeAuthenticationClosesTheConnection) {
    RawPeer peer = rawPeer();
    ASSERT_TRUE(peer.send(bytesOf("GET / HTTP/1.1\r\nHost: example.org\r\n\r\n")));
    EXPECT_TRUE(peer.isClosed());
    expectLogged("XPC refused: the connection from pid ");
}

TEST_F(HostilePeer, AnotherIdentityThanItsOwnIsNotAuthenticated) {
    RawPeer peer = rawPeer();
    Bytes said{0};
    const Bytes lines = bytesOf("AUTH EXTERNAL 3432343234\r\n");
    said.insert(said.end(), lines.begin(), lines.end());
    ASSERT_TRUE(peer.send(said));
    EXPECT_TRUE(peer.receiveLine().starts_with("REJECTED"));
}

TEST_F(HostilePeer, GarbageAfterAuthenticationClosesTheConnection) {
    RawPeer peer = authenticatedPeer();
    ASSERT_TRUE(peer.send(Bytes(64, 0xff)));
    EXPECT_TRUE(peer.isClosed());
    expectLogged("closed, for it broke the protocol");
}

TEST_F(HostilePeer, AMessageThatIsCutOffGoesWithItsConnection) {
    const Bytes whole =
        rawbus::marshal(callOf(info(WallpaperOperation::invalidate), {wallpaperID()}));
    for (std::size_t size = 1; size < whole.size(); size += 7) {
        const RawPeer peer = authenticatedPeer();
        ASSERT_TRUE(peer.send(std::span(whole).first(size)));
    }
}

TEST_F(HostilePeer, HalfAMessageAndSilenceDelayNobody) {
    const Bytes whole =
        rawbus::marshal(callOf(info(WallpaperOperation::invalidate), {wallpaperID()}));
    std::vector<RawPeer> silent;
    for (int i = 0; i < 8; ++i) {
        silent.push_back(authenticatedPeer());
        ASSERT_TRUE(silent.back().send(std::span(whole).first(whole.size() / 2)));
    }
    expectService();
}

TEST_F(HostilePeer, AMessageThatAnnouncesMoreThanTheProtocolAllowsClosesTheConnection) {
    Bytes header = rawbus::marshal(callOf(info(WallpaperOperation::invalidate)));
    // The body's length, 0x10000000 bytes.
    header[4] = header[5] = header[6] = 0;
    header[7] = 0x10;
    RawPeer peer = authenticatedPeer();
    ASSERT_TRUE(peer.send(header));
    EXPECT_TRUE(peer.isClosed());
    expectLogged("closed, for it broke the protocol");
}

TEST_F(HostilePeer, AMessageAboveTheLimitIsRefusedWithItsSize) {
    expectRefusal(callOf(info(WallpaperOperation::invalidate), {Bytes(xpc::kMaxMessageBytes + 1)}),
                  "message of 16777217 bytes exceeds the limit of 16777216");
}

TEST_F(HostilePeer, AWrongSignatureIsRefused) {
    MethodCall tooMany = callOf(info(WallpaperOperation::invalidate));
    tooMany.arguments = {wallpaperID(), wallpaperID()};
    expectRefusal(tooMany, "the signature \"ayay\" does not have the \"ay\" of its operation");
    MethodCall none = callOf(info(WallpaperOperation::acquire));
    none.arguments.clear();
    expectRefusal(none, "the signature \"\" does not have the \"ayay\" of its operation");
}

TEST_F(HostilePeer, AnUnknownMemberOrInterfaceIsRefused) {
    expectRefusal({.interface = xpc::kWallpaperInterface, .member = "formatDisk"},
                  "the protocol has no such operation");
    expectRefusal({.interface = "org.freedesktop.DBus.Properties", .member = "GetAll"},
                  "the protocol has no such operation");
}

TEST_F(HostilePeer, AForbiddenClassIsRefusedInEverySlotThatAPeerFills) {
    // One that exists in the extension and is not on the list, and one that does not exist.
    for (const std::string name : {"CAContext", "NSTask"}) {
        archive::KeyedArchiveWriter writer;
        agent::makeWallpaperID(UUID{})->encode(writer);
        const Bytes forbidden = writer.finishObject(name);
        std::size_t slots = 0;
        for (const ArgumentSlot& slot : wallpaperArgumentSlots()) {
            if (slot.ofReply) {
                continue;
            }
            ++slots;
            const auto& operation = info(*wallpaperOperation(slot.selector));
            MethodCall forbidding = callOf(operation);
            forbidding.arguments[static_cast<std::size_t>(slot.argumentIndex)] = forbidden;
            RawPeer peer = authenticatedPeer();
            ASSERT_TRUE(peer.send(forbidding));
            const auto reply = peer.receive();
            ASSERT_TRUE(reply) << slot.selector;
            const std::string text = errorText(*reply);
            EXPECT_TRUE(text.starts_with("argument " + std::to_string(slot.argumentIndex) + ": "))
                << slot.selector << ": " << text;
            EXPECT_NE(text.find(name), std::string::npos) << text;
            expectLogged(std::string(slot.selector) + " from pid ");
        }
        EXPECT_EQ(slots, 26U);
    }
}

TEST_F(HostilePeer, AnArchiveThatLiesAboutItsCountsIsRefused) {
    const Bytes good = wallpaperID();
    std::vector<Bytes> lies;
    // The trailer: sizes of offsets and references, the count, the top object, the table's place.
    for (std::size_t field = 26; field > 2; field -= 8) {
        Bytes lie = good;
        std::fill_n(lie.end() - static_cast<std::ptrdiff_t>(field) + 2, 8, 0xff);
        lies.push_back(lie);
        std::fill_n(lie.end() - static_cast<std::ptrdiff_t>(field) + 2, 8, 0x7f);
        lies.push_back(lie);
    }
    for (const std::uint8_t size : std::vector<std::uint8_t>{0, 1, 3, 9, 255}) {
        Bytes lie = good;
        lie[lie.size() - 26] = size;
        lies.push_back(lie);
        lie = good;
        lie[lie.size() - 25] = size;
        if (lie != good) {
            lies.push_back(lie);
        }
    }
    // An array, a dictionary, a text and data of 2^56 elements, and arrays of themselves.
    for (const int kind : {0xa0, 0xd0, 0x50, 0x60, 0x40}) {
        lies.push_back(
            RawBinaryList()
                .object({static_cast<std::uint8_t>(kind | 0x0f), 0x13, 1, 0, 0, 0, 0, 0, 0, 0})
                .finish());
    }
    lies.push_back(RawBinaryList().object({0xa4, 0, 0, 0, 0}).finish());
    RawPeer peer = authenticatedPeer();
    for (const Bytes& lie : lies) {
        ASSERT_TRUE(peer.send(callOf(info(WallpaperOperation::invalidate), {lie})));
        const auto reply = peer.receive();
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->type, MessageType::error) << &lie - lies.data();
    }
    expectLogged("invalidateWithId:reply: from pid ");
    // One peer does not fill the log.
    expectLogged("no further refusal of this connection is noted");
}

TEST_F(HostilePeer, ASizeThatNoIntegerHoldsIsRefusedBeforeItIsFatal) {
    for (const double side : {std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN(), 1e19, -1e300}) {
        MethodCall call = callOf(info(WallpaperOperation::acquire));
        archive::KeyedArchiveWriter writer;
        const PropertyListDictionary nothing;
        const PropertyListDictionary request{
            {"destination", PropertyListDictionary{{"size", PropertyList::Array{side, 10.0}},
                                                   {"scaleFactor", 1.0}}},
            {"isPreview", false},
            {"presentationMode", PropertyListDictionary{{"locked", nothing}}},
            {"activityState", PropertyListDictionary{{"active", nothing}}}};
        ASSERT_TRUE(writer.encodeEncodable(request, "WallpaperCreationRequest"));
        call.arguments[1] = writer.finishObject("WallpaperCreationRequestXPC");
        expectRefusal(call, "is no finite size of 64-bit integers");
    }
}

TEST_F(HostilePeer, DescriptorsWhereNoneBelongCloseTheConnection) {
    const Bytes message =
        rawbus::marshal(callOf(info(WallpaperOperation::invalidate), {wallpaperID()}));
    for (const std::size_t count : {1U, 16U}) {
        RawPeer peer = authenticatedPeer();
        const std::vector<int> passed(count, STDERR_FILENO);
        ASSERT_TRUE(peer.sendWithDescriptors(message, passed));
        EXPECT_TRUE(peer.isClosed());
    }
    expectLogged("the connection from pid ");
}

TEST_F(HostilePeer, TenThousandRequestsWaitForTheirReader) {
    constexpr std::uint32_t kRequests = 10000;
    RawPeer peer = authenticatedPeer();
    MethodCall call = callOf(info(WallpaperOperation::isChoiceDownloaded), {wallpaperID()});
    for (call.serial = 1; call.serial <= kRequests; ++call.serial) {
        ASSERT_TRUE(peer.send(call));
    }
    expectService();
    for (std::uint32_t serial = 1; serial <= kRequests; ++serial) {
        const auto reply = peer.receive();
        ASSERT_TRUE(reply);
        ASSERT_EQ(reply->replySerial, serial);
        ASSERT_EQ(reply->type, MessageType::methodReturn);
    }
}

TEST_F(HostilePeer, APeerThatNeverReadsIsClosed) {
    const RawPeer peer = authenticatedPeer();
    MethodCall call = callOf(info(WallpaperOperation::isChoiceDownloaded), {wallpaperID()});
    // The kernel keeps some megabytes of replies for it.
    for (call.serial = 1; call.serial <= 200000 && peer.send(call); ++call.serial) {
    }
    expectLogged("closed, for it leaves more than 256 messages unread");
    expectService();
}

TEST_F(HostilePeer, ADisconnectionInTheMiddleOfAnyOperationIsSafe) {
    callEverything();
    for (const auto& operation : wallpaperOperations()) {
        const RawPeer peer = authenticatedPeer();
        ASSERT_TRUE(peer.send(callOf(operation))) << operation.selector;
    }
    // The second acquire, which got no answer, was carried out like the first.
    const std::string acquired = "ACQUIRE 00000000-0000-0000-0000-000000000000";
    EXPECT_TRUE(eventually([&] { return log().find(acquired) != log().rfind(acquired); }));
}

TEST_F(HostilePeer, MoreConnectionsThanAreServedAreTurnedAway) {
    std::vector<RawPeer> peers;
    for (std::size_t i = 0; i < xpc::kMaxConnections + 3; ++i) {
        peers.push_back(rawPeer());
        // The good client is one of those that are served.
        ASSERT_EQ(peers.back().authenticate(), i + 1 < xpc::kMaxConnections) << i;
    }
    EXPECT_TRUE(peers.back().isClosed());
    expectLogged("XPC refused: a connection, for 128 are served");
    expectService();
}

TEST_F(HostilePeer, RandomChangesOfGoodMessagesHarmNothing) {
    const char* wanted = std::getenv("VANTOR_MUTATIONS");
    callEverything();
    const int rounds = wanted != nullptr ? std::atoi(wanted) : 5000;
    std::vector<Bytes> arguments{{}};
    for (const KitPayload& payload : kitPayloads()) {
        archive::KeyedArchiveWriter writer;
        ASSERT_TRUE(writer.encodeEncodable(payload.payload, payload.key));
        arguments.push_back(writer.finishObject(std::string(payload.className)));
    }
    std::mt19937 random(20260911); // NOLINT(cert-msc51-cpp): the same every time
    const auto below = [&random](std::size_t end) {
        return std::uniform_int_distribution<std::size_t>(0, end - 1)(random);
    };
    std::optional<RawPeer> peer;
    int sinceConnected = 0;
    for (int round = 0; round < rounds; ++round) {
        const auto& operation = wallpaperOperations()[below(wallpaperOperations().size())];
        // Surfaces cost more than all else together: their turn comes less often.
        if (operation.operation == WallpaperOperation::acquire && below(200) != 0) {
            continue;
        }
        MethodCall call = callOf(operation);
        call.serial = static_cast<std::uint32_t>(round + 1);
        for (Bytes& argument : call.arguments) {
            argument = arguments[below(arguments.size())];
        }
        Bytes message = rawbus::marshal(call);
        // Half of them keep the message's own frame whole, to get further in.
        const std::size_t first = below(2) == 0 ? 0 : message.size() / 3;
        for (std::size_t changes = below(4) + 1; changes > 0; --changes) {
            message[first + below(message.size() - first)] = static_cast<std::uint8_t>(below(256));
        }
        if (!peer || !peer->send(message) || ++sinceConnected == 50) {
            peer.emplace(authenticatedPeer());
            sinceConnected = 0;
            ASSERT_TRUE(isServing()) << howItEnded();
        }
        if (round % 1000 == 0) {
            expectService();
        }
    }
    peer.reset();
    // The wallpapers that mutated requests acquired go as any other does.
}

} // namespace
} // namespace vantor::e2e
