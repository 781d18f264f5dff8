#include "platform/linux/main_loop.h"
#include "tests/platform/contract/contract_subject.h"
#include "tests/platform/linux/system/private_bus.h"
#include "tests/support/fake_platform.h"

#include <array>
#include <unistd.h>

namespace vantor {
namespace {

Platform& fakePlatform() {
    FakePlatform& platform = FakePlatform::shared();
    platform.reset();
    platform.addRemoteContexts();
    platform.screens().add(1);
    platform.codeIdentity().validity[getpid()] = true;
    platform.loader().symbols["malloc"] = reinterpret_cast<void*>(&std::malloc);
    return platform;
}

bool runFakeUntil(Platform& platform, const std::function<bool()>& holds) {
    auto& queue = dynamic_cast<FakeMainQueue&>(platform.mainQueue());
    queue.drain();
    for (int i = 0; i < 300 && !holds(); ++i) {
        queue.advance(0.01);
    }
    return holds();
}

Platform& linuxPlatform() {
    static const PrivateBus bus("DBUS_SESSION_BUS_ADDRESS");
    return systemPlatform();
}

bool runLinuxUntil(Platform& platform, const std::function<bool()>& holds) {
    auto& loop = dynamic_cast<MainLoop&>(platform.mainQueue());
    for (int i = 0; i < 300 && !holds(); ++i) {
        loop.asyncAfter(0.01, [&loop] { loop.stop(0); });
        loop.run();
    }
    return holds();
}

constexpr std::array kSubjects{
    ContractSubject{.name = "Fake",
                    .platform = fakePlatform,
                    .runUntil = runFakeUntil,
                    .draws = false,
                    .notifies = false},
    ContractSubject{.name = "Linux",
                    .platform = linuxPlatform,
                    .runUntil = runLinuxUntil,
                    .draws = true,
                    .notifies = true},
};

} // namespace

std::span<const ContractSubject> contractSubjects() { return kSubjects; }

} // namespace vantor
