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
    // Times are counted on a clock that stands still during the delays. Long ones would otherwise
    // keep deaths too far apart for a second wallpaper to be found out.

    /// Of the last deaths, the oldest first.
    std::vector<double> deaths_;
    double lastDeath_ = 0;
    double delay_ = 0;
    /// All delays until now.
    double delayed_ = 0;
};

} // namespace vantor::agent
