#include "ctl/BoundKeys.h"

#include <algorithm>

#include "ctl/CommandError.h"
#include "platform/keys/KeyCombination.h"

namespace quennel {

BoundKeys::BoundKeys(HelperConnection& helper) {
  try {
    _keys = helper.keys();
  } catch (const CommandFailure& failure) {
    _failure = failure.what();
  }
}

const HelperKey* BoundKeys::find(std::size_t index) const {
  const auto key =
      std::ranges::find(_keys, "shortcut" + std::to_string(index), &HelperKey::identifier);
  return key == _keys.end() ? nullptr : &*key;
}

bool BoundKeys::isBound(std::size_t index) const {
  const HelperKey* const key = find(index);
  return key && key->isBound;
}

std::string BoundKeys::reason(std::size_t index) const {
  if (!_failure.empty()) {
    return _failure;
  }
  const HelperKey* const key = find(index);
  return key ? key->reason : "the helper has not read it yet";
}

bool hasShortcut(const FileTemplate& template_) {
  return template_.objectForKey("shortcut") != nullptr;
}

std::string shortcutText(const FileTemplate& template_) {
  const PropertyList* const stored = template_.objectForKey("shortcut");
  const auto combination =
      stored ? KeyCombination::fromPropertyList(*stored) : std::optional<KeyCombination>();
  return combination ? combination->acceleratorText() : "?";
}

}  // namespace quennel
