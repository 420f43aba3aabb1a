#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string_view>

namespace quennel {

/// Proof that a message was written by someone who has the key: HMAC with SHA-256, by the system's
/// cryptographic library, which is loaded when it is first needed.
class MessageAuthentication {
 public:
  static constexpr std::size_t size = 32;
  using Key = std::array<char, size>;
  using Tag = std::array<char, size>;

  /// Nothing when the library is not there.
  static std::optional<Tag> tagOf(std::string_view message, const Key& key);

  /// Whether the tag, of any size, is that of the message. Takes the same time for every tag of the
  /// right size. Without the library no tag is genuine.
  static bool isGenuine(std::string_view tag, std::string_view message, const Key& key);
};

}  // namespace quennel
