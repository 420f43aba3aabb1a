#include "platform/linux/settings/XMLForm.h"

#include <algorithm>
#include <utility>

#include "platform/linux/settings/PropertyListLimits.h"
#include "platform/linux/settings/PropertyListNode.h"
#include "platform/linux/settings/XMLScanner.h"
#include "platform/values/Text.h"

namespace quennel {
namespace {

/// The characters that the marked-up text of a key stands for.
std::optional<std::string> keyOfMarkup(std::string_view markup) {
  if (markup.find_first_of("&<") == std::string_view::npos) {
    return std::string(markup);
  }
  const PropertyListNode node =
      nodeOfXML("<plist><string>" + std::string(markup) + "</string></plist>");
  const auto value = node ? propertyListOfNode(node.get()) : std::nullopt;
  return value && value->string() ? std::optional(*value->string()) : std::nullopt;
}

/// Walks the tags once and notes what stands in the top dictionary.
class OutlineBuilder {
 public:
  explicit OutlineBuilder(std::string_view text) : _text(text) {}

  std::optional<XMLOutline> build() {
    XMLScanner scanner(_text);
    while (const auto tag = scanner.next()) {
      if (!take(*tag)) {
        return std::nullopt;
      }
    }
    const bool isComplete = !scanner.failed() && _open.empty() && _foundDictionary;
    return isComplete ? std::optional(std::move(_outline)) : std::nullopt;
  }

 private:
  using Tag = XMLScanner::Tag;
  using Kind = XMLScanner::Kind;

  // How many elements are open around the top dictionary, and around its entries.
  static constexpr std::size_t aroundDictionary = 1;
  static constexpr std::size_t aroundEntries = 2;

  bool take(const Tag& tag) {
    switch (tag.kind) {
      case Kind::Opening:
        return begin(tag);
      case Kind::Closing:
        return end(tag);
      case Kind::Empty:
        return begin(tag) && end(tag);
    }
    return false;
  }

  bool begin(const Tag& tag) {
    if (_open.empty() && (tag.name != "plist" || _foundDictionary)) {
      return false;
    }
    if (_open.size() == aroundDictionary && !beginDictionary(tag)) {
      return false;
    }
    if (_open.size() == aroundEntries && !beginPartOfEntry(tag)) {
      return false;
    }
    _open.push_back(tag.name);
    return _open.size() <= maximumPropertyListDepth && ++_count <= maximumPropertyListCount;
  }

  bool beginDictionary(const Tag& tag) {
    if (tag.name != "dict" || std::exchange(_foundDictionary, true)) {
      return false;
    }
    _outline.start = tag.start;
    _outline.contentsStart = tag.end;
    return true;
  }

  bool beginPartOfEntry(const Tag& tag) {
    if (_hasKey) {
      return true;
    }
    _entry.start = tag.start;
    _keyStart = tag.end;
    return tag.name == "key";
  }

  bool end(const Tag& tag) {
    if (_open.empty() || _open.back() != tag.name) {
      return false;
    }
    _open.pop_back();
    if (_open.size() == aroundEntries) {
      return endPartOfEntry(tag);
    }
    return !(_open.size() == aroundDictionary && _hasKey);
  }

  bool endPartOfEntry(const Tag& tag) {
    if (_hasKey) {
      _entry.end = tag.end;
      _outline.entries.push_back(std::move(_entry));
      _hasKey = false;
      return true;
    }
    const std::size_t keyEnd = std::max(_keyStart, tag.start);
    const auto key = keyOfMarkup(_text.substr(_keyStart, keyEnd - _keyStart));
    _entry.key = key.value_or("");
    _hasKey = true;
    return key.has_value();
  }

  std::string_view _text;
  XMLOutline _outline;
  XMLOutline::Entry _entry;
  std::vector<std::string_view> _open;
  std::size_t _keyStart = 0;
  std::size_t _count = 0;
  bool _foundDictionary = false;
  bool _hasKey = false;
};

/// XML has no way to write most control characters, and readers turn a carriage return into a
/// newline.
void checkCharacters(std::string_view entry) {
  const bool hasControl = std::ranges::any_of(
      entry, [](char c) { return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n'; });
  if (hasControl || entry.find("\xEF\xBF\xBE") != std::string_view::npos ||
      entry.find("\xEF\xBF\xBF") != std::string_view::npos) {
    throw PropertyListError("A control character cannot be stored in an XML property list.");
  }
}

/// The lines of the entry as they stand in a top dictionary, from its first tag to its last.
std::string markupOfEntry(const std::string& key, const PropertyList& value) {
  const std::string file = xmlOfNode(nodeOfEntry(key, value).get());
  const std::size_t start = file.find("<key>");
  const std::size_t end = file.rfind('>', file.rfind("</dict>") - 1) + 1;
  std::string markup = file.substr(start, end - start);
  checkCharacters(markup);
  return markup;
}

/// Removes the entry and the white space before it.
void removeEntry(std::string& text, const XMLOutline::Entry& entry) {
  const std::size_t last = text.find_last_not_of(" \t\r\n", entry.start - 1);
  text.erase(last + 1, entry.end - (last + 1));
}

void addEntry(std::string& text, const XMLOutline& outline, const std::string& markup) {
  if (outline.isEmptyTag(text)) {
    text.replace(outline.start, outline.contentsStart - outline.start,
                 "<dict>\n\t" + markup + "\n</dict>");
  } else if (outline.entries.empty()) {
    text.insert(outline.contentsStart, "\n\t" + markup);
  } else {
    text.insert(outline.entries.back().end, "\n\t" + markup);
  }
}

}  // namespace

std::optional<XMLOutline> XMLOutline::create(std::string_view text) {
  // Other encodings are not understood, whatever the declaration says.
  return isValidUTF8(text) ? OutlineBuilder(text).build() : std::nullopt;
}

std::string settingXMLEntry(std::string text, const std::string& key,
                            const std::optional<PropertyList>& value) {
  const auto outline = XMLOutline::create(text);
  if (!outline) {
    throw PropertyListError("The file is not a property list.");
  }
  std::string markup = value ? markupOfEntry(key, *value) : std::string();
  // From the end, so that the places before stay right.
  for (std::size_t place = outline->entries.size(); place-- > 0;) {
    const XMLOutline::Entry& entry = outline->entries[place];
    if (entry.key != key) {
      continue;
    }
    if (markup.empty()) {
      removeEntry(text, entry);
    } else {
      text.replace(entry.start, entry.end - entry.start, std::exchange(markup, {}));
    }
  }
  if (!markup.empty()) {
    addEntry(text, *outline, markup);
  }
  return text;
}

}  // namespace quennel
