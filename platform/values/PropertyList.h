#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace quennel {

/// One value of the settings: a boolean, a number, a text, bytes, a date, or an array or dictionary
/// of such values. An immutable value: copying is cheap, contents are shared.
class PropertyList {
 public:
  using Array = std::vector<PropertyList>;
  using Dictionary = std::map<std::string, PropertyList, std::less<>>;
  using Date = std::chrono::system_clock::time_point;
  struct Data {
    std::string bytes;
    bool operator==(const Data&) const = default;
  };

  // Implicit on purpose: a property list is written down as the values it holds.
  PropertyList(bool value) : _value(value) {}
  PropertyList(int value) : _value(std::int64_t{value}) {}
  PropertyList(std::int64_t value) : _value(value) {}
  PropertyList(std::uint64_t value);
  PropertyList(double value) : _value(value) {}
  PropertyList(std::string value);
  PropertyList(const char* value) : PropertyList(std::string(value)) {}
  // No other pointer may turn into a boolean.
  PropertyList(const void* value) = delete;
  PropertyList(Data value);
  PropertyList(Date value) : _value(value) {}
  PropertyList(Array value);
  PropertyList(Dictionary value);

  /// The contents if the value is of that kind, else null. Lives as long as this value or a copy.
  const bool* boolean() const;
  const std::int64_t* integer() const;
  /// Only for numbers above the signed range; all other integers are `integer`s.
  const std::uint64_t* largeInteger() const;
  const double* real() const;
  const Date* date() const;
  const std::string* string() const;
  const Data* data() const;
  const Array* array() const;
  const Dictionary* dictionary() const;

  /// The platform's boolean of a stored value: a number is true when it is not zero; a text when it
  /// starts, after white space, with Y, y, T, t or, after an optional sign and zeros, a digit that
  /// is not zero; anything else is false.
  bool boolValue() const;

  /// The number as an integer, a fraction cut off, what does not fit held at the limits; a text by
  /// its leading integer (see `integerValue` in Text.h); else 0.
  std::int64_t integerValue() const;

  /// The entry under `key` if this is a dictionary that has one, else null.
  const PropertyList* objectForKey(std::string_view key) const;

  /// Deep equality. Numbers and booleans are equal by value whatever their kind: true equals 1. The
  /// comparison is exact, nothing is rounded first. A value always equals its copy, NaN too.
  friend bool operator==(const PropertyList& left, const PropertyList& right);

  /// One line that shows the value to a person: yes and no for booleans, a text without quotes (but
  /// with quotes inside an array or a dictionary), control characters as escapes.
  std::string description() const;

 private:
  template <typename T>
  using Shared = std::shared_ptr<const T>;
  using Value = std::variant<bool, std::int64_t, std::uint64_t, double, Date, Shared<std::string>,
                             Shared<Data>, Shared<Array>, Shared<Dictionary>>;
  Value _value;
};

}  // namespace quennel
