#include "platform/plist/XMLScalar.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <system_error>

#include "platform/plist/PropertyListDate.h"
#include "platform/plist/XMLText.h"

namespace quennel {
namespace {

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view space = " \t\r\n";
  const std::size_t first = text.find_first_not_of(space);
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(space) - first + 1);
}

/// The number that is all of `digits`; one that does not fit is the greatest.
std::optional<std::uint64_t> magnitude(std::string_view digits) {
  const bool isHexadecimal = digits.starts_with("0x") || digits.starts_with("0X");
  digits.remove_prefix(isHexadecimal ? 2 : 0);
  std::uint64_t number = 0;
  const auto [end, failure] = std::from_chars(digits.data(), digits.data() + digits.size(), number,
                                              isHexadecimal ? 16 : 10);
  if (end != digits.data() + digits.size() || failure == std::errc::invalid_argument) {
    return std::nullopt;
  }
  return failure == std::errc() ? number : std::numeric_limits<std::uint64_t>::max();
}

std::optional<PropertyList> integer(std::string_view text) {
  constexpr auto mostNegative = static_cast<std::uint64_t>(1) << 63;
  const bool isNegative = text.starts_with('-');
  text.remove_prefix(isNegative || text.starts_with('+') ? 1 : 0);
  const auto number = magnitude(text);
  if (!number || !isNegative) {
    return number ? std::optional<PropertyList>(*number) : std::nullopt;
  }
  return *number >= mostNegative ? PropertyList(std::numeric_limits<std::int64_t>::min())
                                 : PropertyList(-static_cast<std::int64_t>(*number));
}

std::optional<PropertyList> real(std::string_view text) {
  text.remove_prefix(text.starts_with('+') ? 1 : 0);
  double number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool isNumber = end == text.data() + text.size() && failure != std::errc::invalid_argument;
  return isNumber ? std::optional<PropertyList>(number) : std::nullopt;
}

/// "2026-11-22T10:30:00Z", any year of four digits.
std::optional<PropertyList> date(const std::string& text) {
  using namespace std::chrono;
  int year = 0;
  unsigned month = 0;
  unsigned day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int length = 0;
  const int fields = std::sscanf(text.c_str(), "%4d-%2u-%2uT%2d:%2d:%2dZ%n", &year, &month, &day,
                                 &hour, &minute, &second, &length);
  const year_month_day calendar{std::chrono::year(year), std::chrono::month(month),
                                std::chrono::day(day)};
  if (fields != 6 || static_cast<std::size_t>(length) != text.size() || !calendar.ok()) {
    return std::nullopt;
  }
  const auto since1970 =
      sys_days(calendar).time_since_epoch() + hours(hour) + minutes(minute) + seconds(second);
  const auto start2001 = sys_days(2001y / January / 1).time_since_epoch();
  return PropertyList(
      dateOfPropertyListSeconds(static_cast<double>(seconds(since1970 - start2001).count())));
}

std::string xmlOfReal(double number) {
  std::array<char, 32> buffer{};
  const auto [end, failure] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
  return "<real>" + std::string(buffer.data(), end) + "</real>";
}

std::string xmlOfDate(PropertyList::Date date) {
  using namespace std::chrono;
  const auto second = floor<seconds>(date);
  const auto midnight = floor<days>(second);
  const year_month_day calendar(midnight);
  const hh_mm_ss time(second - midnight);
  std::array<char, 64> buffer{};
  const int length = std::snprintf(
      buffer.data(), buffer.size(), "<date>%04d-%02u-%02uT%02d:%02d:%02dZ</date>",
      static_cast<int>(calendar.year()), static_cast<unsigned>(calendar.month()),
      static_cast<unsigned>(calendar.day()), static_cast<int>(time.hours().count()),
      static_cast<int>(time.minutes().count()), static_cast<int>(time.seconds().count()));
  return {buffer.data(), static_cast<std::size_t>(length)};
}

}  // namespace

std::optional<PropertyList> scalarOfXML(std::string_view name, const std::string& text) {
  const std::string_view contents = trimmed(text);
  if (name == "string") {
    return text;
  }
  if (name == "true" || name == "false") {
    return contents.empty() ? std::optional<PropertyList>(name == "true") : std::nullopt;
  }
  if (name == "integer") {
    return integer(contents.empty() ? "0" : contents);
  }
  if (name == "real") {
    return real(contents.empty() ? "0" : contents);
  }
  if (name == "date") {
    return date(std::string(contents));
  }
  auto bytes = name == "data" ? bytesOfBase64(text) : std::nullopt;
  return bytes ? std::optional<PropertyList>(PropertyList::Data{*std::move(bytes)}) : std::nullopt;
}

std::string xmlOfScalar(const PropertyList& value) {
  if (const bool* const boolean = value.boolean()) {
    return *boolean ? "<true/>" : "<false/>";
  }
  if (const std::int64_t* const number = value.integer()) {
    return "<integer>" + std::to_string(*number) + "</integer>";
  }
  if (const std::uint64_t* const number = value.largeInteger()) {
    return "<integer>" + std::to_string(*number) + "</integer>";
  }
  if (const double* const number = value.real()) {
    return xmlOfReal(*number);
  }
  if (const PropertyList::Date* const date = value.date()) {
    return xmlOfDate(*date);
  }
  if (const PropertyList::Data* const data = value.data()) {
    return "<data>" + base64OfBytes(data->bytes) + "</data>";
  }
  return "<string>" + markupOfText(*value.string()) + "</string>";
}

}  // namespace quennel
