#pragma once
// A value or the reason why there is none, for operations that can fail while the program is
// healthy. It must not be dropped; an access to the side that is not there stops the process.

#include <cstdlib>
#include <string>
#include <utility>
#include <variant>

namespace vantor {

/// What went wrong, as it crosses a connection or reaches a log line.
/// `domain` names who defines the numbers in `code`; `message` is a sentence for a person.
struct Error {
    std::string domain;
    int code = 0;
    std::string message;

    bool operator==(const Error&) const = default;
};

/// Wraps a failure so that `return Failure{...}` works when T and E convert into each other.
template <typename E>
struct Failure {
    E error;
};
template <typename E>
Failure(E) -> Failure<E>;

template <typename T, typename E = Error>
class [[nodiscard]] Result {
  public:
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    template <typename F>
    Result(Failure<F> failure) : state_(std::in_place_index<1>, std::move(failure.error)) {}

    bool hasValue() const { return state_.index() == 0; }
    explicit operator bool() const { return hasValue(); }

    T& value() & { return require<0>(); }
    const T& value() const& { return const_cast<Result*>(this)->template require<0>(); }
    T&& value() && { return std::move(require<0>()); }
    const E& error() const { return const_cast<Result*>(this)->template require<1>(); }

    T* operator->() { return &value(); }
    T& operator*() { return value(); }

  private:
    template <std::size_t I>
    auto& require() {
        if (state_.index() != I) {
            std::abort();
        }
        return *std::get_if<I>(&state_);
    }

    std::variant<T, E> state_;
};

/// The empty value of operations that give nothing but can fail.
struct Done {};

} // namespace vantor
