#pragma once
// Tells of an extension that runs but answers nothing. Main thread.

#include "platform/linux/main_loop.h"

#include <functional>
#include <memory>

namespace vantor::agent {

/// Seconds; enough to compile the slowest shader on a busy machine.
inline constexpr double kPatience = 60;

class AnswerWatch {
  public:
    /// `silent` is called once something was asked and nothing answered for `patience` seconds. The
    /// loop outlives this.
    AnswerWatch(MainLoop& loop, double patience, std::function<void()> silent);

    /// A request is on its way.
    void asked();
    /// One of them was answered, however.
    void answered();

  private:
    void wait();
    void due();

    double patience_;
    std::function<void()> silent_;
    std::unique_ptr<Alarm> alarm_;
    int unanswered_ = 0;
    /// Half of the patience is over. It ends in two steps, for when this process itself stood still
    /// the first comes at once, and what was answered meanwhile has yet to be read.
    bool isDoubted_ = false;
};

} // namespace vantor::agent
