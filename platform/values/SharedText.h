#pragma once

#include <algorithm>
#include <memory>
#include <string_view>

namespace quennel {

/// An immutable text, without NUL bytes, whose copies share one allocation: for texts that several
/// owners keep by the ten thousand. Copies may be made and dropped on any thread.
class SharedText {
 public:
  /// A null text: it has no characters to point at.
  SharedText() = default;
  /// Copies `text`, up to its first NUL byte.
  explicit SharedText(std::string_view text) {
    text = text.substr(0, text.find('\0'));
    const auto characters = std::make_shared<char[]>(text.size() + 1);  // zero at the end
    std::copy(text.begin(), text.end(), characters.get());
    _characters = characters;
  }

  explicit operator bool() const { return _characters != nullptr; }

  /// The characters and a zero; null for a null text. Lives as long as this text or a copy.
  const char* c_str() const { return _characters.get(); }
  std::string_view view() const {
    return _characters ? std::string_view(_characters.get()) : std::string_view();
  }

 private:
  std::shared_ptr<const char[]> _characters;
};

}  // namespace quennel
