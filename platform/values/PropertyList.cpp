#include "platform/values/PropertyList.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <ctime>
#include <limits>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/values/Text.h"

namespace quennel {
namespace {

template <typename T>
concept Number = std::is_arithmetic_v<T>;

// The bounds of the 64-bit integers as doubles. The upper ones are powers of two and therefore
// exact, but lie one above the largest integer.
constexpr double belowInt64 = -0x1p63;
constexpr double aboveInt64 = 0x1p63;
constexpr double aboveUInt64 = 0x1p64;

std::int64_t asNumber(bool value) { return value ? 1 : 0; }

template <Number T>
T asNumber(T value) {
  return value;
}

bool equalNumbers(double left, double right) {
  return left == right || (std::isnan(left) && std::isnan(right));
}

bool equalNumbers(double left, std::int64_t right) {
  return left >= belowInt64 && left < aboveInt64 && std::trunc(left) == left &&
         static_cast<std::int64_t>(left) == right;
}

bool equalNumbers(double left, std::uint64_t right) {
  return left >= 0 && left < aboveUInt64 && std::trunc(left) == left &&
         static_cast<std::uint64_t>(left) == right;
}

bool equalNumbers(std::integral auto left, std::integral auto right) {
  return std::cmp_equal(left, right);
}

bool equalNumbers(std::integral auto left, double right) { return equalNumbers(right, left); }

std::int64_t integerOf(double number) {
  if (std::isnan(number)) {
    return 0;
  }
  if (number < belowInt64) {
    return std::numeric_limits<std::int64_t>::min();
  }
  if (number >= aboveInt64) {
    return std::numeric_limits<std::int64_t>::max();
  }
  return static_cast<std::int64_t>(number);
}

std::string described(std::uint64_t number) { return std::to_string(number); }
std::string described(std::int64_t number) { return std::to_string(number); }
std::string described(bool value) { return value ? "yes" : "no"; }

std::string described(double number) {
  std::array<char, 32> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number).ptr;
  return {text.data(), end};
}

std::string described(PropertyList::Date date) {
  // Not by way of a time point of the clock: the second in which its range begins starts before it.
  const std::time_t seconds =
      std::chrono::floor<std::chrono::seconds>(date.time_since_epoch()).count();
  std::tm parts{};
  if (!gmtime_r(&seconds, &parts)) {
    return "date out of range";
  }
  std::array<char, 64> text;
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%SZ", &parts);
  return {text.data(), length};
}

std::string described(const PropertyList::Data& data) {
  const std::size_t count = data.bytes.size();
  return "<" + std::to_string(count) + (count == 1 ? " byte>" : " bytes>");
}

std::string escaped(char character) {
  switch (character) {
    case '\n':
      return "\\n";
    case '\t':
      return "\\t";
    case '\r':
      return "\\r";
    default:
      break;
  }
  constexpr std::string_view digits = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(character);
  return {'\\', 'x', digits[byte >> 4], digits[byte & 15]};
}

bool isControl(char character) {
  const auto byte = static_cast<unsigned char>(character);
  return byte < 0x20 || byte == 0x7F;
}

/// How many bytes at the start of `text` a line must not show as they are: control characters,
/// those above ASCII (U+0080 to U+009F) too, and bytes that are no text at all.
std::size_t lengthToEscape(std::string_view text, bool isText) {
  if (isControl(text[0])) {
    return 1;
  }
  const bool isHighControl =
      text.size() > 1 && text[0] == '\xC2' && static_cast<unsigned char>(text[1]) < 0xA0;
  if (isText && isHighControl) {
    return 2;
  }
  return !isText && static_cast<unsigned char>(text[0]) >= 0x80 ? 1 : 0;
}

/// What stands on one line for `text`; a `quote` is put around it, and escaped inside it.
std::string described(std::string_view text, std::string_view quote = {}) {
  const bool isText = isValidUTF8(text);
  std::string line(quote);
  while (!text.empty()) {
    const std::size_t length = lengthToEscape(text, isText);
    for (const char byte : text.substr(0, length)) {
      line += escaped(byte);
    }
    if (length == 0) {
      const bool isSpecial = !quote.empty() && (text[0] == '"' || text[0] == '\\');
      line.append(isSpecial ? "\\" : "").push_back(text[0]);
    }
    text.remove_prefix(std::max<std::size_t>(length, 1));
  }
  return line.append(quote);
}

std::string describedInside(const PropertyList& value) {
  const std::string* text = value.string();
  return text ? described(*text, "\"") : value.description();
}

std::string described(const PropertyList::Array& array) {
  std::string line = "[";
  for (const PropertyList& element : array) {
    line += (line.size() > 1 ? ", " : "") + describedInside(element);
  }
  return line + "]";
}

std::string described(const PropertyList::Dictionary& dictionary) {
  std::string line = "{";
  for (const auto& [key, value] : dictionary) {
    line += (line.size() > 1 ? ", " : "") + described(key) + ": " + describedInside(value);
  }
  return line + "}";
}

}  // namespace

PropertyList::PropertyList(std::uint64_t value) : _value(value) {
  if (std::in_range<std::int64_t>(value)) {
    _value = static_cast<std::int64_t>(value);
  }
}

PropertyList::PropertyList(std::string value)
    : _value(std::make_shared<const std::string>(std::move(value))) {}

PropertyList::PropertyList(Data value) : _value(std::make_shared<const Data>(std::move(value))) {}

PropertyList::PropertyList(Array value) : _value(std::make_shared<const Array>(std::move(value))) {}

PropertyList::PropertyList(Dictionary value)
    : _value(std::make_shared<const Dictionary>(std::move(value))) {}

const bool* PropertyList::boolean() const { return std::get_if<bool>(&_value); }

const std::int64_t* PropertyList::integer() const { return std::get_if<std::int64_t>(&_value); }

const std::uint64_t* PropertyList::largeInteger() const {
  return std::get_if<std::uint64_t>(&_value);
}

const double* PropertyList::real() const { return std::get_if<double>(&_value); }

const PropertyList::Date* PropertyList::date() const { return std::get_if<Date>(&_value); }

const std::string* PropertyList::string() const {
  const auto* shared = std::get_if<Shared<std::string>>(&_value);
  return shared ? shared->get() : nullptr;
}

const PropertyList::Data* PropertyList::data() const {
  const auto* shared = std::get_if<Shared<Data>>(&_value);
  return shared ? shared->get() : nullptr;
}

const PropertyList::Array* PropertyList::array() const {
  const auto* shared = std::get_if<Shared<Array>>(&_value);
  return shared ? shared->get() : nullptr;
}

const PropertyList::Dictionary* PropertyList::dictionary() const {
  const auto* shared = std::get_if<Shared<Dictionary>>(&_value);
  return shared ? shared->get() : nullptr;
}

bool PropertyList::boolValue() const {
  if (const std::string* text = string()) {
    return textBoolValue(*text);
  }
  const auto isTrue = [](const auto& value) {
    if constexpr (Number<std::decay_t<decltype(value)>>) {
      return value != std::decay_t<decltype(value)>{};
    }
    return false;
  };
  return std::visit(isTrue, _value);
}

std::int64_t PropertyList::integerValue() const {
  if (const std::string* text = string()) {
    return quennel::integerValue(*text);
  }
  if (largeInteger()) {
    return std::numeric_limits<std::int64_t>::max();
  }
  if (const double* number = real()) {
    return integerOf(*number);
  }
  const std::int64_t* number = integer();
  return number ? *number : boolValue();
}

const PropertyList* PropertyList::objectForKey(std::string_view key) const {
  const Dictionary* entries = dictionary();
  if (!entries) {
    return nullptr;
  }
  const auto entry = entries->find(key);
  return entry == entries->end() ? nullptr : &entry->second;
}

bool operator==(const PropertyList& left, const PropertyList& right) {
  const auto equal = []<typename L, typename R>(const L& a, const R& b) {
    if constexpr (Number<L> && Number<R>) {
      return equalNumbers(asNumber(a), asNumber(b));
    } else if constexpr (!std::is_same_v<L, R>) {
      return false;
    } else if constexpr (std::is_same_v<L, PropertyList::Date>) {
      return a == b;
    } else {
      return a == b || *a == *b;
    }
  };
  return std::visit(equal, left._value, right._value);
}

std::string PropertyList::description() const {
  const auto describe = []<typename T>(const T& value) {
    if constexpr (Number<T> || std::is_same_v<T, Date>) {
      return described(value);
    } else {
      return described(*value);
    }
  };
  return std::visit(describe, _value);
}

}  // namespace quennel
