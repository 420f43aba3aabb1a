#include "platform/linux/scope/SealedBookmark.h"

#include <cstddef>

namespace quennel {

namespace {

// The mark, the tag over all that follows (behind the purpose), and the bookmark.
constexpr std::string_view mark = "QBm1";
constexpr std::size_t headSize = mark.size() + MessageAuthentication::size;
constexpr std::size_t largestSize = std::size_t{16} * 1024;

}  // namespace

std::optional<std::string> sealed(const Bookmark& bookmark, const MessageAuthentication::Key& key,
                                  std::string_view purpose) {
  const std::string bytes = bytesOfBookmark(bookmark);
  const auto tag = MessageAuthentication::tagOf(std::string(purpose) + bytes, key);
  if (!tag) {
    return std::nullopt;
  }
  return std::string(mark) + std::string(tag->data(), tag->size()) + bytes;
}

std::optional<Bookmark> unsealed(std::string_view bytes, const MessageAuthentication::Key& key,
                                 std::string_view purpose) {
  if (bytes.size() < headSize || bytes.size() > largestSize || !bytes.starts_with(mark)) {
    return std::nullopt;
  }
  const std::string_view contents = bytes.substr(headSize);
  const std::string_view tag = bytes.substr(mark.size(), MessageAuthentication::size);
  return MessageAuthentication::isGenuine(tag, std::string(purpose) + std::string(contents), key)
             ? bookmarkOfBytes(contents)
             : std::nullopt;
}

}  // namespace quennel
