#pragma once
// How far long work is: one line on a terminal that rewrites itself and is gone at the end.
// Nowhere else, nothing.

#include "tools/command.h"

#include <string_view>

namespace vantor {

class Progress {
  public:
    explicit Progress(const Console& console) : console_(console) {}
    ~Progress() { clear(); }
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Replaces the line.
    void say(std::string_view line);
    /// Takes the line away, before anything else is said.
    void clear();

  private:
    const Console& console_;
    bool said_ = false;
};

} // namespace vantor
