#include "platform/plist/StorableText.h"

#include "platform/plist/PropertyListError.h"
#include "platform/values/PropertyList.h"
#include "platform/values/Text.h"

namespace quennel {

const std::string& storable(const std::string& text) {
  if (!isValidUTF8(text)) {
    throw PropertyListError("Text that is not UTF-8 cannot be stored in a property list: " +
                            PropertyList(text).description());
  }
  if (text.find('\0') != std::string::npos) {
    throw PropertyListError("Text with a NUL character cannot be stored in a property list: " +
                            PropertyList(text).description());
  }
  return text;
}

}  // namespace quennel
