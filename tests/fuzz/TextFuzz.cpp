#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "platform/values/Path.h"
#include "platform/values/PercentEscape.h"
#include "platform/values/PropertyList.h"
#include "platform/values/Text.h"
#include "tests/fuzz/Require.h"

namespace quennel::test {
namespace {

void checkNumbers(const std::string& text) {
  require(integerValue(text) == std::strtoll(text.c_str(), nullptr, 10),
          "the leading integer is the C library's");
  const PropertyList value = text;
  require(value.integerValue() == integerValue(text), "a stored text has the same integer");
  require(value.boolValue() == textBoolValue(text), "a stored text has the same boolean");
  require(integerValue(text) == 0 || textBoolValue(text), "a number that is not zero is true");
}

void checkEscapes(const std::string& text) {
  std::string escaped;
  for (const char byte : text) {
    appendPercentEscape(escaped, byte);
  }
  require(percentDecoded(escaped) == text, "every byte comes back from its escape");
  require(removingPercentEscapes(escaped).has_value() == isValidUTF8(text),
          "only text in UTF-8 comes out of escapes");
  const auto decoded = percentDecoded(text);
  require(!decoded || decoded->size() <= text.size(), "decoding does not lengthen");
}

void checkTrimming(const std::string& text) {
  const std::string trimmed = trimmingNewlines(text);
  require(text.find(trimmed) != std::string::npos, "what is trimmed is a part of the text");
  require(trimmingNewlines(trimmed) == trimmed, "trimming twice is trimming once");
  require(trimmingNewlines("\n" + text + "\xE2\x80\xA9") == trimmed,
          "newlines around do not count");
}

void checkFormat(const std::string& text) {
  require(formatted(text) == text, "a format without arguments is itself");
  require(formatted("<%@>", text) == "<" + text + ">", "an argument is not a format");
}

bool endsInSlash(const std::string& path) { return path.size() > 1 && path.back() == '/'; }

void checkPaths(const std::string& text) {
  require(!endsInSlash(lastPathComponent(text)) && !endsInSlash(deletingLastPathComponent(text)) &&
              !endsInSlash(appendingPathComponent("/a", text)) &&
              !endsInSlash(deletingPathExtension(text)),
          "no path ends in a slash");
  require(lastPathComponent(text) == "/" || lastPathComponent(text).find('/') == std::string::npos,
          "a component holds no slash");
  const std::string path = standardizingPath(text);
  // "./~" becomes "~", which is then the home folder.
  require(path.starts_with('~') || standardizingPath(path) == path,
          "a standard path stays as it is");
  require(path == "/" || appendingPathComponent(deletingLastPathComponent(path),
                                                lastPathComponent(path)) == path,
          "a path is its folder and its name");
  const std::string extension = pathExtension(path);
  require(appendingPathExtension(deletingPathExtension(path), extension) == path,
          "a path is its base and its extension");
}

}  // namespace
}  // namespace quennel::test

extern "C" int LLVMFuzzerInitialize(int*, char***) { return setenv("HOME", "/home/me", 1); }

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  quennel::test::checkNumbers(text);
  quennel::test::checkEscapes(text);
  quennel::test::checkTrimming(text);
  quennel::test::checkFormat(text);
  quennel::test::checkPaths(text);
  return 0;
}
