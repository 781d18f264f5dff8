#include "agent/supervision/restart_policy.h"

#include <algorithm>

namespace vantor::agent {
namespace {

// Seconds.
constexpr double kFirstDelay = 0.25;
constexpr double kLongestDelay = 30;
/// A life of this length was a healthy one.
constexpr double kHealthyLife = 60;

constexpr std::size_t kDeathsToSetAside = 5;
constexpr double kTimeToSetAside = 60;

} // namespace

RestartPolicy::Verdict RestartPolicy::died(double now) {
    const double death = std::max(now - delayed_, lastDeath_);
    if (death - lastDeath_ >= kHealthyLife) {
        delay_ = 0;
    }
    lastDeath_ = death;
    delay_ = delay_ == 0 ? kFirstDelay : std::min(delay_ * 2, kLongestDelay);
    delayed_ += delay_;

    std::erase_if(deaths_, [death](double each) { return death - each > kTimeToSetAside; });
    deaths_.push_back(death);
    const bool setAside = deaths_.size() == kDeathsToSetAside;
    if (setAside) {
        deaths_.clear();
    }
    return {.delay = delay_, .setAside = setAside};
}

} // namespace vantor::agent
