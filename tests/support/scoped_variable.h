#pragma once
// An environment variable with another value while a test's object lives.

#include <cstdlib>
#include <optional>
#include <string>

namespace vantor {

class ScopedVariable {
  public:
    /// Nothing takes the variable away.
    ScopedVariable(const char* name, const std::optional<std::string>& value) : name_(name) {
        if (const char* old = std::getenv(name)) {
            old_ = old;
        }
        set(value);
    }
    ~ScopedVariable() { set(old_); }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

  private:
    void set(const std::optional<std::string>& value) const {
        if (value) {
            setenv(name_, value->c_str(), 1);
        } else {
            unsetenv(name_);
        }
    }

    const char* name_;
    std::optional<std::string> old_;
};

} // namespace vantor
