#include "bridge/carrier.h"

#include "log/ls_log.h"
#include "platform/platform.h"

#include <array>
#include <type_traits>

namespace vantor::PrivateBridge {

static_assert(!std::is_default_constructible_v<Carrier>);

namespace {

void logFailure(std::string_view className, const std::string& what) {
    LSLog::write("bridge: " + std::string(className) + " " + what);
}

} // namespace

void Carrier::encode(KeyedEncoder& encoder) const {
    if (const auto encoded = encodeBody_(encoder); !encoded) {
        LSLog::write("carrier encode failed: " + encoded.error().message);
    }
}

ObjectRef makeApple(Platform& platform, std::string_view className, std::string_view key,
                    const Result<PropertyList>& payload) {
    const ObjectClass* agentClass = platform.objectRuntime().classNamed(className);
    if (agentClass == nullptr) {
        logFailure(className, "missing");
        return nullptr;
    }
    const Carrier carrier([&](KeyedEncoder& encoder) -> Result<Done> {
        return payload ? encoder.encodeEncodable(payload.value(), key) : Failure{payload.error()};
    });
    const auto archive = platform.keyedArchiving().archiveRootObject(
        Carrier::kClassName, [&](KeyedEncoder& encoder) { carrier.encode(encoder); });
    if (!archive) {
        logFailure(className, "archive failed: " + archive.error().message);
        return nullptr;
    }
    auto opened = platform.keyedArchiving().unarchiver(archive.value());
    if (!opened) {
        logFailure(className, "archive failed: " + opened.error().message);
        return nullptr;
    }
    KeyedUnarchiver& unarchiver = *opened.value();
    unarchiver.setDecodingFailurePolicy(DecodingFailurePolicy::setErrorAndReturn);
    unarchiver.setClass(*agentClass, Carrier::kClassName);
    ObjectRef object = unarchiver.decodeRootObject(std::array{agentClass});
    if (const auto error = unarchiver.error()) {
        logFailure(className, "decode error: " + error->message);
    }
    unarchiver.finishDecoding();
    return object;
}

ObjectRef makeApple(Platform& platform, std::string_view className, std::string_view key,
                    const PropertyList& payload) {
    return makeApple(platform, className, key, Result<PropertyList>(payload));
}

} // namespace vantor::PrivateBridge
