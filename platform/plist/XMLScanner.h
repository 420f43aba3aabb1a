#pragma once

#include <cstddef>
#include <optional>
#include <string_view>

namespace quennel {

/// Finds the tags of an XML text and skips everything between them. Refuses what no property list
/// needs: declarations of its own, and sections between elements.
class XMLScanner {
 public:
  enum class Kind { Opening, Closing, Empty };

  struct Tag {
    Kind kind;
    std::string_view name;
    /// The place of "<", and the one behind ">".
    std::size_t start;
    std::size_t end;
  };

  explicit XMLScanner(std::string_view text) : _text(text) {}

  /// The next tag; nothing at the end of the text and where it is not well formed.
  std::optional<Tag> next();

  bool failed() const { return _failed; }

 private:
  bool skipMarkup();
  bool skipTo(std::string_view end);
  bool skipDeclaration();
  std::optional<Tag> takeTag();
  std::optional<Tag> fail();

  std::string_view _text;
  std::size_t _place = 0;
  /// Whether the last tag began an element that holds text, not elements.
  bool _isInText = false;
  bool _failed = false;
};

}  // namespace quennel
