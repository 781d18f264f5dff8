#pragma once
// When an extension that died is started again, and when what it shows is to blame. Main thread.

#include <vector>

namespace vantor::agent {

class RestartPolicy {
  public:
    struct Verdict {
        /// Seconds until the next start.
        double delay = 0;
        /// It died too often in too short a time: what it was showing is to be set aside.
        bool setAside = false;
    };

    /// The extension died; `now` is media time. Delays grow with each death and fall back once it
    /// has lived for a while.
    Verdict died(double now);

  private:
    /// Media times of the last deaths, the oldest first.
    std::vector<double> deaths_;
    double delay_ = 0;
};

} // namespace vantor::agent
