#pragma once

#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace skavlo {

struct Error {
    std::string message;
};

// What a construction that may fail returns: the value or the reason why there is none.
template <typename T>
class Result {
  public:
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}      // NOLINT
    Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}  // NOLINT
    explicit operator bool() const { return state_.index() == 0; }
    T& operator*() { return std::get<0>(state_); }
    T* operator->() { return &std::get<0>(state_); }
    [[nodiscard]] const Error& error() const { return std::get<1>(state_); }

  private:
    std::variant<T, Error> state_;
};

}  // namespace skavlo
