#include "platform/values/URL.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/values/PercentEscape.h"

namespace quennel {
namespace {

// What a part may hold beside escapes, unreserved characters and sub-delimiters.
constexpr std::string_view inUserInformation = ":";
constexpr std::string_view inAuthority = ":@";
constexpr std::string_view inPath = "/:@";
constexpr std::string_view inPathWithoutColon = "/@";
constexpr std::string_view inQuery = "/:@?";

bool isDigit(char c) { return c >= '0' && c <= '9'; }

bool isLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }

bool isHexadecimalDigit(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

bool contains(std::string_view characters, char c) {
  return characters.find(c) != std::string_view::npos;
}

bool isUnreserved(char c) { return isLetter(c) || isDigit(c) || contains("-._~", c); }

bool isPlain(char c, std::string_view others) {
  return isUnreserved(c) || contains("!$&'()*+,;=", c) || contains(others, c);
}

struct Parts {
  std::optional<std::string_view> scheme;
  std::optional<std::string_view> authority;
  std::string_view path;
  std::optional<std::string_view> query;
  std::optional<std::string_view> fragment;
};

/// Cuts `text` off at the first `mark` and gives what followed it.
std::optional<std::string_view> cutAt(char mark, std::string_view& text) {
  const std::size_t place = text.find(mark);
  if (place == std::string_view::npos) {
    return std::nullopt;
  }
  const std::string_view rest = text.substr(place + 1);
  text = text.substr(0, place);
  return rest;
}

Parts split(std::string_view text) {
  Parts parts;
  parts.fragment = cutAt('#', text);
  parts.query = cutAt('?', text);
  const std::size_t end = text.find_first_of(":/");
  if (end != std::string_view::npos && text[end] == ':') {
    parts.scheme = text.substr(0, end);
    text.remove_prefix(end + 1);
  }
  if (text.starts_with("//")) {
    text.remove_prefix(2);
    parts.authority = text.substr(0, text.find('/'));
    text.remove_prefix(parts.authority->size());
  }
  parts.path = text;
  return parts;
}

bool consistsOf(std::string_view text, std::string_view others) {
  while (!text.empty()) {
    const bool isEscape = startsWithPercentEscape(text);
    if (!isEscape && !isPlain(text.front(), others)) {
      return false;
    }
    text.remove_prefix(isEscape ? 3 : 1);
  }
  return true;
}

bool isScheme(std::string_view text) {
  const auto isAllowed = [](char c) { return isLetter(c) || isDigit(c) || contains("+-.", c); };
  return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, isAllowed);
}

bool isDecimalByte(std::string_view text) {
  if (text.empty() || text.size() > 3 || !std::ranges::all_of(text, isDigit)) {
    return false;
  }
  const bool hasLeadingZero = text.size() > 1 && text.front() == '0';
  return !hasLeadingZero && (text.size() < 3 || text <= "255");
}

bool isIPv4Address(std::string_view text) {
  for (int dots = 0; dots < 3; ++dots) {
    const std::size_t dot = text.find('.');
    if (dot == std::string_view::npos || !isDecimalByte(text.substr(0, dot))) {
      return false;
    }
    text.remove_prefix(dot + 1);
  }
  return isDecimalByte(text);
}

bool isIPv6Group(std::string_view text) {
  return !text.empty() && text.size() <= 4 && std::ranges::all_of(text, isHexadecimalDigit);
}

/// Counts the 16-bit groups of colon-separated `text`, an IPv4 address at its end as two; nothing
/// when something in it is neither.
std::optional<int> countOfIPv6Groups(std::string_view text, bool mayEndInIPv4) {
  if (text.empty()) {
    return 0;
  }
  int count = 0;
  while (const auto rest = cutAt(':', text)) {
    if (!isIPv6Group(text)) {
      return std::nullopt;
    }
    ++count;
    text = *rest;
  }
  if (isIPv6Group(text)) {
    return count + 1;
  }
  return mayEndInIPv4 && isIPv4Address(text) ? std::optional(count + 2) : std::nullopt;
}

bool isIPv6Address(std::string_view text) {
  const std::size_t gap = text.find("::");
  if (gap == std::string_view::npos) {
    return countOfIPv6Groups(text, true) == 8;
  }
  const auto before = countOfIPv6Groups(text.substr(0, gap), false);
  const auto after = countOfIPv6Groups(text.substr(gap + 2), true);
  return before && after && *before + *after <= 7;
}

bool isFutureAddress(std::string_view text) {
  if (!text.starts_with('v') && !text.starts_with('V')) {
    return false;
  }
  text.remove_prefix(1);
  const auto address = cutAt('.', text);
  const auto isAllowed = [](char c) { return isPlain(c, ":"); };
  return address && !address->empty() && std::ranges::all_of(*address, isAllowed) &&
         !text.empty() && std::ranges::all_of(text, isHexadecimalDigit);
}

bool isPort(std::string_view text) { return std::ranges::all_of(text, isDigit); }

bool isHostAndPort(std::string_view text) {
  if (!text.starts_with('[')) {
    const auto port = cutAt(':', text);
    return consistsOf(text, {}) && (!port || isPort(*port));
  }
  text.remove_prefix(1);
  const auto rest = cutAt(']', text);
  return rest && (isIPv6Address(text) || isFutureAddress(text)) &&
         (rest->empty() || (rest->front() == ':' && isPort(rest->substr(1))));
}

bool isAuthority(std::string_view text) {
  if (const auto host = cutAt('@', text)) {
    return consistsOf(text, inUserInformation) && isHostAndPort(*host);
  }
  return isHostAndPort(text);
}

bool areValid(const Parts& parts) {
  return (!parts.scheme || isScheme(*parts.scheme)) &&
         (!parts.authority || isAuthority(*parts.authority)) && consistsOf(parts.path, inPath) &&
         (!parts.query || consistsOf(*parts.query, inQuery)) &&
         (!parts.fragment || consistsOf(*parts.fragment, inQuery));
}

enum class Percent { StartsEscape, IsPlainText };

std::string escaped(std::string_view text, std::string_view others,
                    Percent percent = Percent::StartsEscape) {
  std::string result;
  result.reserve(text.size());
  for (; !text.empty(); text.remove_prefix(1)) {
    const char c = text.front();
    const bool isEscape = percent == Percent::StartsEscape && startsWithPercentEscape(text);
    if (isEscape || isPlain(c, others)) {
      result += c;
    } else {
      appendPercentEscape(result, c);
    }
  }
  return result;
}

std::string escapedAuthority(std::string_view text) {
  if (isAuthority(text)) {
    return std::string(text);
  }
  const std::string withDelimiters = escaped(text, inAuthority);
  return isAuthority(withDelimiters) ? withDelimiters : escaped(text, {});
}

/// The path of valid parts as `URL::path` gives it.
std::string decodedPath(const Parts& parts) {
  const bool isOpaque = parts.scheme && !parts.authority && !parts.path.starts_with('/');
  if (isOpaque) {
    return {};
  }
  std::string path = percentDecoded(parts.path).value_or("");
  if (contains(path, '\0')) {
    return {};
  }
  if (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  return path;
}

}  // namespace

URL::URL(std::string_view string, std::string path, std::optional<std::string> query)
    : _string(string), _path(std::move(path)), _query(std::move(query)) {}

std::optional<URL> URL::create(std::string_view string) {
  const Parts parts = split(string);
  if (!areValid(parts)) {
    return std::nullopt;
  }
  std::optional<std::string> query;
  if (parts.query) {
    query = std::string(*parts.query);
  }
  return URL(string, decodedPath(parts), std::move(query));
}

std::string escapingInvalidCharacters(std::string_view string) {
  Parts parts = split(string);
  const bool startsWithNoScheme = parts.scheme && !isScheme(*parts.scheme);
  std::string result;
  if (startsWithNoScheme) {
    // The colon belongs to the first segment of a relative path, where it must be escaped.
    parts.path = string.substr(0, string.find_first_of("?#"));
    parts.authority.reset();
  } else if (parts.scheme) {
    result.append(*parts.scheme).append(":");
  }
  if (parts.authority) {
    result.append("//").append(escapedAuthority(*parts.authority));
  }
  result += escaped(parts.path, startsWithNoScheme ? inPathWithoutColon : inPath);
  if (parts.query) {
    result.append("?").append(escaped(*parts.query, inQuery));
  }
  if (parts.fragment) {
    result.append("#").append(escaped(*parts.fragment, inQuery));
  }
  return result;
}

std::string resolvingRelativePath(std::string_view reference, std::string_view folder) {
  const Parts parts = split(reference);
  if (parts.scheme || parts.authority || parts.path.empty() || parts.path.starts_with('/')) {
    return std::string(reference);
  }
  return escaped(folder, inPath, Percent::IsPlainText).append("/").append(reference);
}

std::string fileURL(std::string_view path) {
  return "file://" + escaped(path, inPath, Percent::IsPlainText);
}

std::string urlForDirectory(std::string_view scheme, std::string_view path,
                            std::string_view query) {
  std::string result(scheme);
  result.append("://").append(escaped(path, inPath, Percent::IsPlainText));
  return result.append("?").append(escaped(query, inQuery));
}

}  // namespace quennel
