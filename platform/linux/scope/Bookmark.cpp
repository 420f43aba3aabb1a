#include "platform/linux/scope/Bookmark.h"

#include <climits>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace quennel {

namespace {

constexpr std::size_t longestText = PATH_MAX;

/// Appends values: numbers with the lowest byte first, texts behind their length.
class Writer {
 public:
  template <std::integral Number>
  void write(Number number) {
    auto rest = static_cast<std::make_unsigned_t<Number>>(number);
    for (std::size_t index = 0; index < sizeof rest; ++index) {
      _bytes += static_cast<char>(static_cast<unsigned char>(rest & 0xFFU));
      rest = static_cast<decltype(rest)>(rest >> 8U);
    }
  }
  void write(const std::string& text) {
    write(static_cast<std::uint16_t>(text.size()));
    _bytes += text;
  }
  std::string take() { return std::move(_bytes); }

 private:
  std::string _bytes;
};

/// The reverse; after the first value that is not there every other one is missing, too.
class Reader {
 public:
  explicit Reader(std::string_view bytes) : _bytes(bytes) {}

  template <std::integral Number>
  void read(Number& number) {
    std::make_unsigned_t<Number> value = 0;
    const std::string_view bytes = take(sizeof value);
    for (std::size_t index = bytes.size(); index > 0; --index) {
      value =
          static_cast<decltype(value)>(value << 8U) | static_cast<unsigned char>(bytes[index - 1]);
    }
    number = static_cast<Number>(value);
  }
  void read(std::string& text) {
    std::uint16_t size = 0;
    read(size);
    text = size <= longestText ? take(size) : take(_bytes.size() + 1);
  }
  bool isComplete() const { return !_failed && _bytes.empty(); }

 private:
  std::string_view take(std::size_t size) {
    if (_failed || size > _bytes.size()) {
      _failed = true;
      return {};
    }
    const std::string_view taken = _bytes.substr(0, size);
    _bytes.remove_prefix(size);
    return taken;
  }

  std::string_view _bytes;
  bool _failed = false;
};

/// Every field in the order of the bytes, for both directions.
template <typename AnyBookmark, typename Visitor>
void visitFields(AnyBookmark& bookmark, const Visitor& visit) {
  visit(bookmark.path);
  visit(bookmark.relativePath);
  visit(bookmark.filesystemType);
  visit(bookmark.identity.volume);
  visit(bookmark.identity.inode);
  visit(bookmark.identity.birthTime);
  visit(bookmark.identity.handleType);
  visit(bookmark.identity.handle);
}

bool isPath(const std::string& path) {
  return path.starts_with('/') && path.find('\0') == std::string::npos;
}

}  // namespace

std::string bytesOfBookmark(const Bookmark& bookmark) {
  Writer writer;
  visitFields(bookmark, [&](const auto& field) { writer.write(field); });
  return writer.take();
}

std::optional<Bookmark> bookmarkOfBytes(std::string_view bytes) {
  Bookmark bookmark;
  Reader reader(bytes);
  visitFields(bookmark, [&](auto& field) { reader.read(field); });
  const bool sound = reader.isComplete() && isPath(bookmark.path) &&
                     isPath("/" + bookmark.relativePath) && !bookmark.identity.volume.empty();
  return sound ? std::optional(std::move(bookmark)) : std::nullopt;
}

}  // namespace quennel
