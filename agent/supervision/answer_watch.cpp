#include "agent/supervision/answer_watch.h"

#include <utility>

namespace vantor::agent {

AnswerWatch::AnswerWatch(MainLoop& loop, double patience, std::function<void()> silent)
    : patience_(patience), silent_(std::move(silent)), alarm_(loop.alarm([this] { due(); })) {}

void AnswerWatch::asked() {
    if (unanswered_++ == 0) {
        wait();
    }
}

void AnswerWatch::answered() {
    if (--unanswered_ == 0) {
        alarm_->cancel();
    } else {
        wait();
    }
}

void AnswerWatch::wait() {
    isDoubted_ = false;
    alarm_->set(patience_ / 2);
}

void AnswerWatch::due() {
    if (!std::exchange(isDoubted_, true)) {
        alarm_->set(patience_ / 2);
        return;
    }
    silent_();
}

} // namespace vantor::agent
