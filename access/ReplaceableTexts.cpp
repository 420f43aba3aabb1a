#include "access/ReplaceableTexts.h"

#include "platform/Bundle.h"
#include "platform/UserDefaults.h"
#include "platform/values/PropertyList.h"
#include "settings/SharedSettings.h"

namespace quennel {

std::string ReplaceableTexts::localizedStringForKey(const std::string& key) const {
  if (const auto replacements = _sharedDefaults.objectForKey(localizedStringsKey)) {
    const PropertyList* entry = replacements->objectForKey(key);
    const std::string* text = entry ? entry->string() : nullptr;
    if (text && !text->empty()) {
      return *text;
    }
  }
  return _bundle.localizedStringForKey(key);
}

}  // namespace quennel
