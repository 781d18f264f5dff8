#pragma once
// The platforms that the seam's contracts are held against. The tests are the same for each; a
// program is linked with the subjects of the system it is built for.

#include "platform/main_queue.h"
#include "platform/platform.h"

#include <gtest/gtest.h>

#include <functional>
#include <ostream>
#include <span>

namespace vantor {

struct ContractSubject {
    const char* name;
    Platform& (*platform)();
    /// Runs the main loop until `holds` or for a few seconds; whether it holds.
    bool (*runUntil)(Platform& platform, const std::function<bool()>& holds);
    /// Its GPU executes shaders.
    bool draws;
    /// Notifications reach other processes, and so the sender.
    bool notifies;
};
inline std::ostream& operator<<(std::ostream& out, const ContractSubject& subject) {
    return out << subject.name;
}

std::span<const ContractSubject> contractSubjects();

class Contract : public testing::TestWithParam<ContractSubject> {
  protected:
    bool runUntil(const std::function<bool()>& holds) {
        return GetParam().runUntil(platform, holds);
    }

    Platform& platform = GetParam().platform();
};

/// Names a suite of the contract, for every subject.
#define VANTOR_CONTRACT(suite)                                                                     \
    INSTANTIATE_TEST_SUITE_P(Each, suite, testing::ValuesIn(contractSubjects()),                   \
                             [](const auto& subject) { return std::string(subject.param.name); })

} // namespace vantor
