#pragma once

#include <optional>
#include <utility>
#include <variant>

namespace quennel {

/// What an operation made, or why it could not. Ignoring one does not pass without a warning.
template <class Value, class Failure>
class [[nodiscard]] Result {
 public:
  // Implicit, so that an operation returns the one or the other as it is.
  Result(Value value) : _outcome(std::in_place_index<0>, std::move(value)) {}
  Result(Failure failure) : _outcome(std::in_place_index<1>, std::move(failure)) {}

  explicit operator bool() const { return _outcome.index() == 0; }

  /// Only of a success.
  Value& value() & { return std::get<0>(_outcome); }
  const Value& value() const& { return std::get<0>(_outcome); }
  // Of a temporary the value itself, so that a loop over it does not outlive what it goes through.
  Value value() && { return std::get<0>(std::move(_outcome)); }
  Value* operator->() { return &value(); }
  const Value* operator->() const { return &value(); }

  /// Only of a failure.
  const Failure& failure() const { return std::get<1>(_outcome); }

 private:
  std::variant<Value, Failure> _outcome;
};

/// The same of an operation that makes nothing.
template <class Failure>
class [[nodiscard]] Result<void, Failure> {
 public:
  Result() = default;
  Result(Failure failure) : _failure(std::move(failure)) {}

  explicit operator bool() const { return !_failure; }

  /// Only of a failure.
  const Failure& failure() const { return *_failure; }

 private:
  std::optional<Failure> _failure;
};

}  // namespace quennel
