#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/values/URL.h"
#include "tests/fuzz/Require.h"

namespace quennel::test {
namespace {

void checkURL(std::string_view text, const URL& url) {
  require(url.string() == text, "a URL keeps its string");
  require(url.path().find('\0') == std::string::npos, "a path holds no NUL");
  require(url.path().size() <= text.size(), "a path is no longer than its URL");
  require(!url.query() || text.find("?" + *url.query()) != std::string_view::npos,
          "the query is a part of the URL");
  require(escapingInvalidCharacters(text) == text, "a URL needs no escaping");
}

void checkEscaping(std::string_view text) {
  const std::string escaped = escapingInvalidCharacters(text);
  require(URL::create(escaped).has_value(), "what is escaped is a URL");
  require(std::ranges::all_of(escaped, [](char c) { return c > ' ' && c < '\x7F'; }),
          "what is escaped is printable ASCII");
  require(escapingInvalidCharacters(escaped) == escaped, "escaping twice is escaping once");
}

void checkPath(std::string_view text) {
  std::string path = "/" + std::string(text);
  std::erase(path, '\0');
  const auto directory = URL::create(urlForDirectory("quennel", path, "7"));
  const auto file = URL::create(fileURL(path));
  if (path.size() > 1 && path.back() == '/') {
    path.pop_back();
  }
  require(directory && directory->path() == path && directory->query() == "7",
          "a directory comes back from its URL");
  require(file && file->path() == path && !file->query(), "a file comes back from its URL");
  const auto withQuery = URL::create(urlForDirectory("quennel", "/", text));
  require(withQuery && withQuery->path() == "/" && withQuery->query(), "any query makes a URL");
}

}  // namespace
}  // namespace quennel::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quennel;
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (const auto url = URL::create(text)) {
    test::checkURL(text, *url);
  }
  test::checkEscaping(text);
  test::checkPath(text);
  return 0;
}
