#include "platform/plist/XMLReader.h"

#include <utility>

#include "platform/plist/PropertyListLimits.h"
#include "platform/plist/XMLScalar.h"
#include "platform/plist/XMLScanner.h"
#include "platform/plist/XMLText.h"
#include "platform/values/Text.h"

namespace quennel {
namespace {

using Tag = XMLScanner::Tag;
using Kind = XMLScanner::Kind;

/// Descends through the elements; every step answers nothing where the text is not well formed.
class Reader {
 public:
  explicit Reader(std::string_view text) : _text(text), _scanner(text) {}

  std::optional<XMLPropertyList> read() {
    const auto file = _scanner.next();
    const auto top = file && isOpening(*file, "plist") ? _scanner.next() : std::nullopt;
    if (!top || top->name != "dict" || top->kind == Kind::Closing || !readTop(*top)) {
      return std::nullopt;
    }
    const auto end = _scanner.next();
    const bool isWhole = end && isClosing(*end, "plist") && !_scanner.next() && !_scanner.failed();
    return isWhole ? std::optional(std::move(_list)) : std::nullopt;
  }

 private:
  struct Element {
    std::string key;
    PropertyList value;
    std::size_t start;
    std::size_t end;
  };

  static bool isOpening(const Tag& tag, std::string_view name) {
    return tag.kind == Kind::Opening && tag.name == name;
  }
  static bool isClosing(const Tag& tag, std::string_view name) {
    return tag.kind == Kind::Closing && tag.name == name;
  }

  bool readTop(const Tag& dictionary) {
    _list.start = dictionary.start;
    _list.contentsStart = dictionary.end;
    auto value = readDictionary(dictionary, 1, &_list.entries);
    if (!value) {
      return false;
    }
    _list.dictionary = *std::move(value);
    return true;
  }

  /// Also notes where the entries are, in `places` if there is one.
  std::optional<PropertyList::Dictionary> readDictionary(
      const Tag& opening, std::size_t depth, std::vector<XMLPropertyList::Entry>* places) {
    PropertyList::Dictionary dictionary;
    while (opening.kind != Kind::Empty) {
      const auto tag = _scanner.next();
      if (!tag || isClosing(*tag, "dict")) {
        _end = tag ? tag->end : _end;
        return tag ? std::optional(std::move(dictionary)) : std::nullopt;
      }
      auto key = tag->name == "key" && count() ? readText(*tag) : std::nullopt;
      const auto opened = key ? _scanner.next() : std::nullopt;
      auto value = opened ? readValue(*opened, depth + 1) : std::nullopt;
      if (!value) {
        return std::nullopt;
      }
      if (places) {
        places->push_back({tag->start, _end, *key});
      }
      dictionary.insert_or_assign(*std::move(key), *std::move(value));
    }
    return dictionary;
  }

  std::optional<PropertyList> readArray(const Tag& opening, std::size_t depth) {
    PropertyList::Array array;
    while (opening.kind != Kind::Empty) {
      const auto tag = _scanner.next();
      if (!tag || isClosing(*tag, "array")) {
        _end = tag ? tag->end : _end;
        return tag ? std::optional<PropertyList>(std::move(array)) : std::nullopt;
      }
      auto value = readValue(*tag, depth + 1);
      if (!value) {
        return std::nullopt;
      }
      array.push_back(*std::move(value));
    }
    return array;
  }

  std::optional<PropertyList> readValue(const Tag& tag, std::size_t depth) {
    if (tag.kind == Kind::Closing || depth > maximumPropertyListDepth || !count()) {
      return std::nullopt;
    }
    _end = tag.end;
    if (tag.name == "array") {
      return readArray(tag, depth);
    }
    if (tag.name == "dict") {
      auto dictionary = readDictionary(tag, depth, nullptr);
      return dictionary ? std::optional<PropertyList>(*std::move(dictionary)) : std::nullopt;
    }
    const auto text = readText(tag);
    return text ? scalarOfXML(tag.name, *text) : std::nullopt;
  }

  /// The text of an element that holds nothing else.
  std::optional<std::string> readText(const Tag& opening) {
    _end = opening.end;
    if (opening.kind != Kind::Opening) {
      return opening.kind == Kind::Empty ? std::optional(std::string()) : std::nullopt;
    }
    const auto closing = _scanner.next();
    if (!closing || !isClosing(*closing, opening.name)) {
      return std::nullopt;
    }
    _end = closing->end;
    return textOfMarkup(_text.substr(opening.end, closing->start - opening.end));
  }

  bool count() { return ++_count <= maximumPropertyListCount; }

  std::string_view _text;
  XMLScanner _scanner;
  XMLPropertyList _list;
  /// Behind the last tag of the value that was read last.
  std::size_t _end = 0;
  std::size_t _count = 0;
};

}  // namespace

std::optional<XMLPropertyList> XMLPropertyList::create(std::string_view text) {
  // Other encodings are not understood, whatever the declaration says.
  return isValidUTF8(text) ? Reader(text).read() : std::nullopt;
}

}  // namespace quennel
