#include "platform/linux/settings/PropertyListDocument.h"

#include <string_view>
#include <utility>

#include "platform/linux/settings/BinaryForm.h"
#include "platform/linux/settings/PropertyListLimits.h"
#include "platform/linux/settings/PropertyListNode.h"
#include "platform/linux/settings/XMLForm.h"

namespace quennel {
namespace {

constexpr std::string_view emptyFile =
    R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict/>
</plist>
)";

PropertyListNode parsed(std::string_view bytes) {
  if (bytes.size() > maximumPropertyListSize) {
    return nullptr;
  }
  if (isBinaryPropertyList(bytes)) {
    return isSoundBinaryPropertyList(bytes) ? nodeOfBinary(bytes) : nullptr;
  }
  constexpr std::string_view byteOrderMark = "\xEF\xBB\xBF";
  if (bytes.starts_with(byteOrderMark)) {
    bytes.remove_prefix(byteOrderMark.size());
  }
  return XMLOutline::create(bytes) ? nodeOfXML(bytes) : nullptr;
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
  const PropertyListNode node = parsed(bytes);
  const auto value = node ? propertyListOfNode(node.get()) : std::nullopt;
  if (!value || !value->dictionary()) {
    return std::nullopt;
  }
  return PropertyListDocument(std::move(bytes), *value->dictionary());
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
