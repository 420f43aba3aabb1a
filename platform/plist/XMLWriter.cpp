#include "platform/plist/XMLWriter.h"

#include <cstddef>
#include <utility>

#include "platform/plist/PropertyListError.h"
#include "platform/plist/XMLReader.h"
#include "platform/plist/XMLScalar.h"
#include "platform/plist/XMLText.h"

namespace quennel {
namespace {

/// Appends elements, each on a line of its own with a tab for every element around it.
class Lines {
 public:
  explicit Lines(std::size_t depth) : _depth(depth) {}

  const std::string& text() const { return _text; }

  void addEntry(const std::string& key, const PropertyList& value) {
    addLine("<key>" + markupOfText(key) + "</key>");
    add(value);
  }

 private:
  void add(const PropertyList& value) {
    if (const auto* const array = value.array()) {
      addContainer("array", array->empty(), [&] {
        for (const PropertyList& element : *array) {
          add(element);
        }
      });
      return;
    }
    if (const auto* const dictionary = value.dictionary()) {
      addContainer("dict", dictionary->empty(), [&] {
        for (const auto& [key, element] : *dictionary) {
          addEntry(key, element);
        }
      });
      return;
    }
    addLine(xmlOfScalar(value));
  }

  template <typename Contents>
  void addContainer(const std::string& name, bool isEmpty, const Contents& addContents) {
    if (isEmpty) {
      addLine("<" + name + "/>");
      return;
    }
    addLine("<" + name + ">");
    ++_depth;
    addContents();
    --_depth;
    addLine("</" + name + ">");
  }

  void addLine(const std::string& line) {
    if (!_text.empty()) {
      _text += '\n';
      _text.append(_depth, '\t');
    }
    _text += line;
  }

  std::string _text;
  std::size_t _depth;
};

/// The lines of the entry as they stand in a top dictionary, from its first tag to its last.
std::string markupOfEntry(const std::string& key, const PropertyList& value) {
  Lines lines(1);
  lines.addEntry(key, value);
  return lines.text();
}

/// Removes the entry and the white space before it.
void removeEntry(std::string& text, const XMLPropertyList::Entry& entry) {
  const std::size_t last = text.find_last_not_of(" \t\r\n", entry.start - 1);
  text.erase(last + 1, entry.end - (last + 1));
}

void addEntry(std::string& text, const XMLPropertyList& list, const std::string& markup) {
  if (list.isEmptyTag(text)) {
    text.replace(list.start, list.contentsStart - list.start, "<dict>\n\t" + markup + "\n</dict>");
  } else if (list.entries.empty()) {
    text.insert(list.contentsStart, "\n\t" + markup);
  } else {
    text.insert(list.entries.back().end, "\n\t" + markup);
  }
}

}  // namespace

std::string settingXMLEntry(std::string text, const std::string& key,
                            const std::optional<PropertyList>& value) {
  const auto list = XMLPropertyList::create(text);
  if (!list) {
    throw PropertyListError("The file is not a property list.");
  }
  std::string markup = value ? markupOfEntry(key, *value) : std::string();
  // From the end, so that the places before stay right.
  for (std::size_t place = list->entries.size(); place-- > 0;) {
    const XMLPropertyList::Entry& entry = list->entries[place];
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
    addEntry(text, *list, markup);
  }
  return text;
}

}  // namespace quennel
