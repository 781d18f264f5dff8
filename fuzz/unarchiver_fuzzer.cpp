// Reads any bytes as an object that a peer sent: archive, agent's class and reflection. What was
// read must cross a connection again unchanged.

#include "agent/kit/kit_classes.h"
#include "agent/kit/payload_types.h"
#include "bridge/request_decoding.h"
#include "platform/linux/archive/class_registry.h"
#include "platform/linux/archive/plain_object.h"
#include "platform/linux/archive/wire_object.h"

#include <cstdlib>

namespace {

struct Peer {
    Peer() {
        vantor::agent::registerKitClasses(registry);
        for (const std::string_view name : vantor::kPlainClassNames) {
            allowed.push_back(registry.classNamed(name));
        }
        for (const auto& info : vantor::agent::kitClassInfos()) {
            allowed.push_back(registry.classNamed(info.className));
        }
    }

    vantor::ClassRegistry registry;
    std::vector<const vantor::ObjectClass*> allowed;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Peer peer;
    const auto object = vantor::unarchiveObject({data, size}, peer.allowed, peer.registry);
    if (!object) {
        return 0;
    }
    const auto reflection = object.value()->reflect();
    vantor::PrivateBridge::firstUUID(reflection, 0);
    vantor::PrivateBridge::parseCreation(reflection);
    vantor::PrivateBridge::parseUpdate(reflection);
    const auto sent = vantor::archiveObject(*object.value());
    if (!sent) {
        std::abort();
    }
    const auto again = vantor::unarchiveObject(sent.value(), peer.allowed, peer.registry);
    // Writing may exceed a limit that reading kept within; what it wrote is otherwise readable.
    if (again && vantor::archiveObject(*again.value()).value() != sent.value()) {
        std::abort();
    }
    return 0;
}
