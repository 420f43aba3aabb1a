#include "platform/plist/PropertyListDocument.h"

#include <string_view>
#include <utility>

#include "platform/plist/BinaryPropertyList.h"
#include "platform/plist/BinaryReader.h"
#include "platform/plist/BinaryWriter.h"
#include "platform/plist/PropertyListError.h"
#include "platform/plist/PropertyListLimits.h"
#include "platform/plist/XMLReader.h"
#include "platform/plist/XMLWriter.h"

namespace quennel {
namespace {

constexpr std::string_view emptyFile =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict/>
</plist>
)";

std::optional<PropertyList::Dictionary> dictionaryOfBytes(std::string_view bytes) {
  if (bytes.size() > maximumPropertyListSize) {
    return std::nullopt;
  }
  if (isBinaryPropertyList(bytes)) {
    return dictionaryOfBinary(bytes);
  }
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (bytes.starts_with(byteOrderMark)) {
    bytes.remove_prefix(byteOrderMark.size());
  }
  auto list = XMLPropertyList::create(bytes);
  return list ? std::optional(std::move(list->dictionary)) : std::nullopt;
}

PropertyList::Dictionary without(const std::string& key, PropertyList::Dictionary dictionary) {
  dictionary.erase(key);
  return dictionary;
}

}  // namespace

PropertyListDocument::PropertyListDocument() : _bytes(emptyFile) {}

PropertyListDocument::PropertyListDocument(std::string bytes, PropertyList::Dictionary dictionary)
    : _bytes(std::move(bytes)), _dictionary(std::move(dictionary)) {}

std::optional<PropertyListDocument> PropertyListDocument::create(std::string bytes) {
  auto dictionary = dictionaryOfBytes(bytes);
  return dictionary ? std::optional(PropertyListDocument(std::move(bytes), *std::move(dictionary)))
                    : std::nullopt;
}

void PropertyListDocument::setObject(const std::optional<PropertyList>& value,
                                     const std::string& key) {
  auto changed = create(isBinaryPropertyList(_bytes) ? settingBinaryEntry(_bytes, key, value)
                                                     : settingXMLEntry(_bytes, key, value));
  // Read back before anybody trusts it: the user's other settings are not to be lost to a mistake.
  const bool isWhatWasMeant = changed && changed->_dictionary.contains(key) == value.has_value() &&
                              without(key, changed->_dictionary) == without(key, _dictionary);
  if (!isWhatWasMeant) {
    throw PropertyListError("The value cannot be stored in this property list.");
  }
  *this = *std::move(changed);
}

}  // namespace quennel
