#include "tests/platform/contract/contract_subject.h"

#include <CoreFoundation/CoreFoundation.h>

#include <array>

namespace vantor {
namespace {

bool runUntil(Platform&, const std::function<bool()>& holds) {
    for (int i = 0; i < 300 && !holds(); ++i) {
        CFRunLoopRunInMode(kCFRunLoopDefaultMode, 0.01, false);
    }
    return holds();
}

constexpr std::array kSubjects{
    ContractSubject{.name = "Darwin",
                    .platform = systemPlatform,
                    .runUntil = runUntil,
                    .draws = true,
                    .notifies = true},
};

} // namespace

std::span<const ContractSubject> contractSubjects() { return kSubjects; }

} // namespace vantor
