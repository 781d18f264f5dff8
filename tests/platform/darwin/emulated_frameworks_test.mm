// The macOS side of the seam, as far as GNUstep's Foundation can run it: graphs, carriers, the
// exported handler, and the class lists of a connection's interface.

#include "platform/darwin/agent_protocols.h"
#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/darwin_system.h"
#include "platform/darwin/darwin_xpc_connection.h"
#include "platform/darwin/foundation.h"
#include "platform/linux/archive/archive_keyed_archiving.h"
#include "platform/wallpaper_protocol.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <objc/runtime.h>

#include <array>
#include <cctype>
#include <cstdlib>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

using vantor::PropertyList;
using vantor::PropertyListDictionary;

namespace {

/// What the interfaces and connections below were given.
struct Recording {
    std::string protocol;
    std::map<std::tuple<std::string, NSUInteger, bool>, std::vector<std::string>> classes;
    NSXPCInterface* exported = nil;
    NSXPCInterface* remote = nil;
    id object = nil;
    int invalidationsSet = 0;
    int invalidationsCleared = 0;
    bool resumed = false;
};
Recording recording;

} // namespace

@implementation NSXPCInterface
+ (NSXPCInterface*)interfaceWithProtocol:(Protocol*)protocol {
    recording.protocol = protocol_getName(protocol);
    recording.classes.clear();
    return [[NSXPCInterface alloc] init];
}
- (void)setClasses:(NSSet*)classes
       forSelector:(SEL)selector
     argumentIndex:(NSUInteger)index
           ofReply:(BOOL)ofReply {
    auto& names = recording.classes[{sel_getName(selector), index, ofReply == YES}];
    for (Class each in classes) {
        names.emplace_back(class_getName(each));
    }
}
- (Protocol*)protocol {
    return nil;
}
- (void)setProtocol:(Protocol*)protocol {
}
- (NSSet*)classesForSelector:(SEL)selector argumentIndex:(NSUInteger)index ofReply:(BOOL)ofReply {
    return nil;
}
- (void)setInterface:(NSXPCInterface*)interface
         forSelector:(SEL)selector
       argumentIndex:(NSUInteger)index
             ofReply:(BOOL)ofReply {
}
- (NSXPCInterface*)interfaceForSelector:(SEL)selector
                          argumentIndex:(NSUInteger)index
                                ofReply:(BOOL)ofReply {
    return nil;
}
@end

/// Clang attaches the protocols that a file names, and no class of it adopts, to a category of a
/// class that is not there; GCC's runtime makes them objects when the class is.
@interface __ObjC_Protocol_Holder_Ugly_Hack : NSObject
@end
@implementation __ObjC_Protocol_Holder_Ugly_Hack
@end

/// The agent's end of a connection: answers as `failure` says, or does not answer at all.
@interface VantorEmulatedAgent : NSObject <WallpaperExtensionProxyXPCProtocol> {
  @public
    NSError* failure;
    NSError* transportFailure;
    id received;
    GSXPCProxyErrorHandler handler;
}
@end

@implementation VantorEmulatedAgent
- (id)remoteObjectProxyWithErrorHandler:(GSXPCProxyErrorHandler)given {
    handler = given;
    return self;
}
- (void)pingWithId:(id)identifier {
}
- (void)updateSettingsViewModels:(id)viewModels reply:(VantorErrorReply)reply {
    received = viewModels;
    if (transportFailure != nil) {
        handler(transportFailure);
    } else {
        reply(failure);
    }
}
- (void)requestReadOnlyAccessTo:(id)url reply:(VantorErrorReply)reply {
}
- (void)invalidateSnapshotsWithReply:(VantorErrorReply)reply {
}
@end

static VantorEmulatedAgent* theAgent;

#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wincomplete-implementation"
#pragma clang diagnostic ignored "-Wprotocol"
@implementation NSXPCConnection
- (void)setExportedInterface:(NSXPCInterface*)interface {
    recording.exported = interface;
}
- (void)setRemoteObjectInterface:(NSXPCInterface*)interface {
    recording.remote = interface;
}
- (id)exportedObject {
    return recording.object;
}
- (void)setExportedObject:(id)object {
    recording.object = object;
}
- (id)remoteObjectProxy {
    return theAgent;
}
- (GSXPCInvalidationHandler)invalidationHandler {
    return nil;
}
- (void)setInvalidationHandler:(GSXPCInvalidationHandler)handler {
    // A block of this runtime does not outlive its scope: the peer goes at once.
    ++(handler != nil ? recording.invalidationsSet : recording.invalidationsCleared);
    if (handler != nil) {
        handler();
    }
}
- (pid_t)processIdentifier {
    return 4711;
}
- (void)resume {
    recording.resumed = true;
}
@end
#pragma clang diagnostic pop

// The references that ARC and Core Foundation count on macOS.
namespace vantor::darwin {
void retainNative(const void* object) { [(id) const_cast<void*>(object) retain]; }
void releaseNative(const void* object) { [(id) const_cast<void*>(object) release]; }

/// GNUstep has no unarchiver of that kind; the tests open archives with Linux's.
Result<std::unique_ptr<KeyedUnarchiver>>
DarwinKeyedArchiving::unarchiver(std::span<const std::uint8_t>) {
    return Failure{cocoaError(kCoderInvalidValue, "not emulated")};
}
} // namespace vantor::darwin

namespace vantor::darwin {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;

class EmulatedFrameworks : public testing::Test {
  protected:
    EmulatedFrameworks() {
        recording = {};
        theAgent = [[VantorEmulatedAgent alloc] init];
    }
    ~EmulatedFrameworks() override { [pool_ release]; }

    const ObjectClass* named(const char* name) const {
        return DarwinObjectRuntime().classNamed(name);
    }

  private:
    NSAutoreleasePool* pool_ = [NSAutoreleasePool new];
};

// Graphs.

TEST_F(EmulatedFrameworks, AGraphHoldsEveryKindOfValue) {
    const PropertyList value = PropertyListDictionary{
        {"flags", PropertyList::Array{true, false}},
        {"integers",
         PropertyList::Array{0, 1, -1, std::numeric_limits<std::int64_t>::min(),
                             std::numeric_limits<std::uint64_t>::max(), std::uint32_t{4711}}},
        {"reals", PropertyList::Array{0.5, -1e300, 1.0}},
        {"text", PropertyList::Array{"", "plain", std::string("nul\0inside", 10), "Größe 夜 🌌"}},
        {"data", PropertyList::Array{Bytes{}, Bytes{0, 255}}},
        {"date", PropertyList::Date{7.25e8}},
        {"nothing", PropertyListDictionary{}},
    };
    const auto back = propertyListOf(foundationGraph(value));
    ASSERT_TRUE(back) << back.error().message;
    EXPECT_EQ(back.value(), value);
}

TEST_F(EmulatedFrameworks, AGraphHasTheClassesOfAPropertyList) {
    EXPECT_TRUE([foundationGraph("text") isKindOfClass:[NSString class]]);
    EXPECT_TRUE([foundationGraph(7) isKindOfClass:[NSNumber class]]);
    EXPECT_TRUE([foundationGraph(true) isKindOfClass:[[NSNumber numberWithBool:YES] class]]);
    EXPECT_FALSE([foundationGraph(1) isKindOfClass:[[NSNumber numberWithBool:YES] class]]);
    EXPECT_TRUE([foundationGraph(Bytes{1}) isKindOfClass:[NSData class]]);
    EXPECT_TRUE([foundationGraph(PropertyList::Date{1}) isKindOfClass:[NSDate class]]);
    EXPECT_TRUE([foundationGraph(PropertyList::Array{}) isKindOfClass:[NSArray class]]);
    EXPECT_TRUE([foundationGraph(PropertyListDictionary{}) isKindOfClass:[NSDictionary class]]);
}

TEST_F(EmulatedFrameworks, WhatAGraphCannotHoldGivesNone) {
    EXPECT_EQ(foundationGraph(PropertyList::UID{1}), nil);
    EXPECT_EQ(foundationGraph(PropertyList::Array{1, PropertyList::UID{1}}), nil);
    EXPECT_EQ(foundationGraph(PropertyListDictionary{{"a", PropertyList::UID{1}}}), nil);
}

TEST_F(EmulatedFrameworks, AGraphOfOtherObjectsIsRefusedWithAReason) {
    EXPECT_THAT(propertyListOf([NSSet set]).error().message, HasSubstr("object of class"));
    EXPECT_THAT(propertyListOf(@[ [NSNull null] ]).error().message, HasSubstr("NSNull"));
    EXPECT_THAT(propertyListOf(@{[NSNumber numberWithInt:1] : @"a"}).error().message,
                HasSubstr("key that is no text"));
    EXPECT_FALSE(propertyListOf(nil));
}

TEST_F(EmulatedFrameworks, AGraphIsBoundedInDepthAndExpansion) {
    id deep = @[];
    for (int i = 0; i < 600; ++i) {
        deep = @[ deep ];
    }
    EXPECT_THAT(propertyListOf(deep).error().message, HasSubstr("deeper than the limit of 512"));
    id wide = @[];
    for (int i = 0; i < 40; ++i) {
        wide = @[ wide, wide ];
    }
    EXPECT_THAT(propertyListOf(wide).error().message, HasSubstr("expands beyond the limit"));
}

TEST_F(EmulatedFrameworks, AnErrorKeepsItsDomainCodeAndMessage) {
    const Error error{
        .domain = "VantorLockScreen", .code = 3, .message = "view models unavailable"};
    NSError* native = nsError(error);
    EXPECT_EQ([[native userInfo] count], 1U);
    EXPECT_EQ(stdString([[native userInfo] objectForKey:NSLocalizedDescriptionKey]), error.message);
    EXPECT_EQ(errorOf(native), error);
}

// Carriers.

/// Takes whatever stands under its key.
class ReadingClass final : public ObjectClass {
  public:
    const std::string& name() const override { return name_; }
    bool isObjectSubclass() const override { return true; }
    bool respondsTo(std::string_view) const override { return false; }
    ObjectRef perform(std::string_view, const PropertyListDictionary&) const override {
        return nullptr;
    }
    ObjectRef decodeInstance(KeyedDecoder& decoder) const override {
        payload = decoder.decodeEncodable("Payload");
        return nullptr;
    }

    mutable std::optional<PropertyList> payload;

  private:
    const std::string name_ = "Reading";
};

TEST_F(EmulatedFrameworks, ACarriersArchiveHoldsThePayloadUnderItsKeyAndClassName) {
    const PropertyList payload = PropertyListDictionary{
        {"id", std::uint32_t{4711}}, {"list", PropertyList::Array{"a", true, Bytes{1, 2}}}};
    const auto archive =
        DarwinKeyedArchiving().archiveRootObject(kCarrierClassName, [&](KeyedEncoder& encoder) {
            EXPECT_TRUE(encoder.encodeEncodable(payload, "Payload"));
            EXPECT_FALSE(encoder.encodeEncodable(PropertyList::UID{1}, "Other"));
        });
    ASSERT_TRUE(archive) << archive.error().message;

    auto unarchiver = ArchiveKeyedArchiving().unarchiver(archive.value());
    ASSERT_TRUE(unarchiver) << unarchiver.error().message;
    const ReadingClass reading;
    unarchiver.value()->setDecodingFailurePolicy(DecodingFailurePolicy::setErrorAndReturn);
    unarchiver.value()->setClass(reading, "VantorXPCCarrier");
    unarchiver.value()->decodeRootObject(std::array<const ObjectClass*, 1>{&reading});
    EXPECT_EQ(reading.payload, payload);
}

TEST_F(EmulatedFrameworks, OnlyCarriersAreArchived) {
    const auto archive =
        DarwinKeyedArchiving().archiveRootObject("Another", [](KeyedEncoder&) { FAIL(); });
    EXPECT_THAT(archive.error().message, HasSubstr("\"Another\""));
}

TEST_F(EmulatedFrameworks, ACarrierCodesSecurelyAndIsNeverDecodedAsItself) {
    Class carrier = objc_getClass("VantorXPCCarrier");
    ASSERT_NE(carrier, nil);
    EXPECT_TRUE([carrier conformsToProtocol:@protocol(NSSecureCoding)]);
    EXPECT_EQ([carrier supportsSecureCoding], YES);
    EXPECT_EQ([[carrier alloc] initWithCoder:[[NSCoder new] autorelease]], nil);
}

TEST_F(EmulatedFrameworks, ACarrierEncodesNothingForACoderWithoutKeys) {
    int calls = 0;
    const NativeRef carrier = makeCarrier([&calls](const void*) { ++calls; });
    [native<id>(carrier) encodeWithCoder:[[NSCoder new] autorelease]];
    EXPECT_EQ(calls, 0);
}

TEST_F(EmulatedFrameworks, ACarrierWithoutABodyStopsTheProcess) {
    id carrier = [objc_getClass("VantorXPCCarrier") alloc];
    EXPECT_DEATH([carrier init], "unimplemented initializer 'init\\(\\)' for class "
                                 "'VantorLockScreen.Carrier'");
}

// The protocols.

std::vector<std::string> selectorsOf(Protocol* protocol) {
    unsigned int count = 0;
    auto* methods = protocol_copyMethodDescriptionList(protocol, YES, YES, &count);
    std::vector<std::string> names;
    for (unsigned int i = 0; i < count; ++i) {
        names.emplace_back(sel_getName(methods[i].name));
    }
    std::free(methods);
    return names;
}

/// Arguments after the receiver and the selector. Each type of an encoding is followed by a number:
/// the whole frame's size after the result's, and an offset after each argument's.
int argumentsOf(Protocol* protocol, std::string_view selector) {
    const auto method = protocol_getMethodDescription(
        protocol, sel_registerName(std::string(selector).c_str()), YES, YES);
    const std::string types = method.types != nullptr ? method.types : "";
    int numbers = 0;
    for (std::size_t at = 0; at < types.size(); ++at) {
        const bool digit = std::isdigit(static_cast<unsigned char>(types[at])) != 0;
        const bool before = at > 0 && std::isdigit(static_cast<unsigned char>(types[at - 1])) != 0;
        numbers += digit && !before ? 1 : 0;
    }
    return numbers - 3;
}

template <typename Operations>
void expectDeclared(Protocol* protocol, const Operations& operations) {
    std::vector<std::string> selectors;
    for (const auto& operation : operations) {
        selectors.emplace_back(operation.selector);
        EXPECT_EQ(argumentsOf(protocol, operation.selector),
                  operation.argumentCount + (operation.reply != ReplyShape::none ? 1 : 0))
            << operation.selector;
    }
    EXPECT_THAT(selectorsOf(protocol), testing::UnorderedElementsAreArray(selectors));
}

TEST_F(EmulatedFrameworks, TheExportedProtocolDeclaresTheTablesOperations) {
    EXPECT_EQ(protocol_getName(@protocol(WallpaperExtensionXPCProtocol)), kWallpaperProtocolName);
    EXPECT_EQ(wallpaperOperations().size(), 21U);
    expectDeclared(@protocol(WallpaperExtensionXPCProtocol), wallpaperOperations());
}

TEST_F(EmulatedFrameworks, TheAgentsProtocolDeclaresTheTablesOperations) {
    EXPECT_EQ(protocol_getName(@protocol(WallpaperExtensionProxyXPCProtocol)), kAgentProtocolName);
    EXPECT_EQ(agentOperations().size(), 4U);
    expectDeclared(@protocol(WallpaperExtensionProxyXPCProtocol), agentOperations());
}

// The exported handler.

/// Answers every operation in its shape with something of its own.
class Answering : public ExportedObject {
  public:
    void invoke(WallpaperOperation operation, std::vector<ObjectRef> arguments,
                Reply reply) override {
        operations.push_back(operation);
        texts.clear();
        for (const ObjectRef& argument : arguments) {
            texts.push_back(argument ? argument->asString().value_or("?") : "nothing");
        }
        switch (reply.shape()) {
        case ReplyShape::booleanAndError:
            return std::move(reply).sendBoolean(true);
        case ReplyShape::objectAndError:
            return failing ? std::move(reply).sendObjectError(error)
                           : std::move(reply).sendObject(arguments[0]);
        default:
            return std::move(reply).send(failing ? std::optional(error) : std::nullopt);
        }
    }

    bool failing = false;
    const Error error{.domain = "VantorLockScreen", .code = 2, .message = "no"};
    std::vector<WallpaperOperation> operations;
    std::vector<std::string> texts;
};

/// What a reply block was called with.
struct Replied {
    int calls = 0;
    std::string object;
    bool value = false;
    std::optional<Error> error;
};
Replied replied;

std::optional<Error> optionalError(NSError* error) {
    return error != nil ? std::optional(errorOf(error)) : std::nullopt;
}

/// The block that an operation of that shape is called with.
id blockOf(ReplyShape shape) {
    replied = {};
    switch (shape) {
    case ReplyShape::booleanAndError:
        return (id)Block_copy(^(BOOL value, NSError* error) {
          ++replied.calls;
          replied.value = value == YES;
          replied.error = optionalError(error);
        });
    case ReplyShape::objectAndError:
        return (id)Block_copy(^(id object, NSError* error) {
          ++replied.calls;
          replied.object = object != nil ? stdString(object) : "nothing";
          replied.error = optionalError(error);
        });
    default:
        return (id)Block_copy(^(NSError* error) {
          ++replied.calls;
          replied.error = optionalError(error);
        });
    }
}

void call(id handler, const WallpaperOperationInfo& operation) {
    SEL selector = sel_registerName(std::string(operation.selector).c_str());
    ASSERT_TRUE([handler respondsToSelector:selector]) << operation.selector;
    IMP method = [handler methodForSelector:selector];
    id reply = blockOf(operation.reply);
    if (operation.argumentCount == 2) {
        reinterpret_cast<void (*)(id, SEL, id, id, id)>(method)(handler, selector, @"one", nil,
                                                                reply);
    } else {
        reinterpret_cast<void (*)(id, SEL, id, id)>(method)(handler, selector, @"one", reply);
    }
}

TEST_F(EmulatedFrameworks, EverySelectorReachesItsOperationAndItsReply) {
    const auto object = std::make_shared<Answering>();
    const NativeRef handler = makeExportedHandler(object);
    for (const bool failing : {false, true}) {
        object->failing = failing;
        for (const WallpaperOperationInfo& operation : wallpaperOperations()) {
            SCOPED_TRACE(operation.selector);
            object->operations.clear();
            call(native<id>(handler), operation);
            EXPECT_THAT(object->operations, ElementsAre(operation.operation));
            EXPECT_EQ(object->texts, operation.argumentCount == 2
                                         ? (std::vector<std::string>{"one", "nothing"})
                                         : (std::vector<std::string>{"one"}));
            EXPECT_EQ(replied.calls, 1);
            const bool carriesError = failing && operation.reply != ReplyShape::booleanAndError;
            EXPECT_EQ(replied.error, carriesError ? std::optional(object->error) : std::nullopt);
            if (operation.reply == ReplyShape::booleanAndError) {
                EXPECT_TRUE(replied.value);
            } else if (operation.reply == ReplyShape::objectAndError) {
                EXPECT_EQ(replied.object, failing ? "nothing" : "one");
            }
        }
    }
}

TEST_F(EmulatedFrameworks, TheHandlerConformsToTheExportedProtocolAndKeepsItsObject) {
    auto object = std::make_shared<Answering>();
    const std::weak_ptr<Answering> weak = object;
    const NativeRef handler = makeExportedHandler(std::move(object));
    EXPECT_TRUE([native<id>(handler) conformsToProtocol:@protocol(WallpaperExtensionXPCProtocol)]);
    EXPECT_FALSE(weak.expired());
}

// Connections.

std::shared_ptr<XPCConnection> connection() {
    return makeXPCConnection(nativeRef([[[NSXPCConnection alloc] init] autorelease]));
}

TEST_F(EmulatedFrameworks, EverySlotOfTheExportedInterfaceGetsItsClasses) {
    XPCInterface exported(kWallpaperProtocolName);
    for (const ArgumentSlot& slot : wallpaperArgumentSlots()) {
        exported.setClasses({named("NSString"), named("NSURL")}, slot);
    }
    connection()->setExportedInterface(std::move(exported));
    EXPECT_EQ(recording.protocol, kWallpaperProtocolName);
    EXPECT_EQ(recording.classes.size(), kArgumentSlotCount);
    for (const ArgumentSlot& slot : wallpaperArgumentSlots()) {
        const std::tuple key(std::string(slot.selector),
                             static_cast<NSUInteger>(slot.argumentIndex), slot.ofReply);
        EXPECT_THAT(recording.classes[key], UnorderedElementsAre("NSString", "NSURL"))
            << slot.selector << slot.argumentIndex << slot.ofReply;
    }
    EXPECT_NE(recording.exported, nil);
}

TEST_F(EmulatedFrameworks, TheRemoteInterfaceHasNoClassLists) {
    connection()->setRemoteObjectInterface(XPCInterface(kAgentProtocolName));
    EXPECT_EQ(recording.protocol, kAgentProtocolName);
    EXPECT_TRUE(recording.classes.empty());
    EXPECT_NE(recording.remote, nil);
}

TEST_F(EmulatedFrameworks, AConnectionIsConfiguredResumedAndInvalidatedOnce) {
    const auto made = connection();
    EXPECT_EQ(made->processIdentifier(), 4711);
    made->setExportedObject(std::make_shared<Answering>());
    EXPECT_TRUE([recording.object conformsToProtocol:@protocol(WallpaperExtensionXPCProtocol)]);
    int invalidations = 0;
    made->setInvalidationHandler([&invalidations] { ++invalidations; });
    EXPECT_EQ(invalidations, 1);
    EXPECT_EQ(recording.invalidationsSet, 1);
    EXPECT_EQ(recording.invalidationsCleared, 1) << "the block lets the connection go";
    made->resume();
    EXPECT_TRUE(recording.resumed);
}

TEST_F(EmulatedFrameworks, ViewModelsReachTheAgentAndItsAnswerComesBack) {
    const auto agent = connection()->remoteObjectProxy();
    ASSERT_NE(agent, nullptr);
    EXPECT_TRUE(agent->conformsTo(kAgentProtocolName));
    EXPECT_FALSE(agent->conformsTo(kWallpaperProtocolName));
    EXPECT_FALSE(agent->conformsTo("Another"));

    std::vector<std::optional<Error>> answers;
    const auto send = [&] {
        agent->updateSettingsViewModels(
            wrap(nativeRef(@"view models")),
            [&](std::optional<Error> error) { answers.push_back(std::move(error)); });
    };
    send();
    EXPECT_EQ(stdString(theAgent->received), "view models");
    const Error refused{.domain = "Agent", .code = 7, .message = "refused"};
    theAgent->failure = nsError(refused);
    send();
    const Error gone{.domain = "NSCocoaErrorDomain", .code = 4099, .message = "gone"};
    theAgent->transportFailure = nsError(gone);
    send();
    EXPECT_THAT(answers, ElementsAre(std::nullopt, std::optional(refused), std::optional(gone)));
}

// Objects.

TEST_F(EmulatedFrameworks, AnObjectIsItsClassItsTextAndItsProperties) {
    const ObjectRef text = wrap(nativeRef(@"größe"));
    EXPECT_EQ(text->asString(), "größe");
    EXPECT_EQ(text->description(), "größe");
    EXPECT_EQ(text->valueForKey("length"), PropertyList(5));
    EXPECT_EQ(text->valueForKey("vantorNoSuchKey"), std::nullopt);
    EXPECT_TRUE(text->objectClass().isObjectSubclass());
    const ObjectRef number = wrap(nativeRef([NSNumber numberWithInt:7]));
    EXPECT_EQ(number->asString(), std::nullopt);
    EXPECT_EQ(number->description(), "7");
    EXPECT_EQ(wrap(NativeRef()), nullptr);
}

TEST_F(EmulatedFrameworks, AMethodIsSentOnlyToWhatRespondsToIt) {
    NSMutableArray* list = [NSMutableArray array];
    const ObjectRef object = wrap(nativeRef(list));
    EXPECT_TRUE(object->perform("addObject:", wrap(nativeRef(@"a"))));
    EXPECT_EQ([list count], 1U);
    EXPECT_TRUE(object->perform("removeAllObjects", nullptr));
    EXPECT_EQ([list count], 0U);
    EXPECT_FALSE(object->perform("vantorNoSuchMethod:", nullptr));
}

TEST_F(EmulatedFrameworks, AClassMethodTakesADictionaryAndGivesAnObject) {
    const ObjectClass* dictionaries = named("NSDictionary");
    ASSERT_NE(dictionaries, nullptr);
    EXPECT_TRUE(dictionaries->respondsTo("dictionaryWithDictionary:"));
    const ObjectRef copy = dictionaries->perform("dictionaryWithDictionary:",
                                                 {{"displayId", std::uint32_t{4294967295U}}});
    ASSERT_NE(copy, nullptr);
    EXPECT_EQ(copy->valueForKey("displayId"), PropertyList(std::int64_t{4294967295}));
    EXPECT_EQ(dictionaries->perform("vantorNoSuchMethod:", {}), nullptr);
}

} // namespace
} // namespace vantor::darwin
