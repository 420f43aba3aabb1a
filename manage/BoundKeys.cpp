#include "manage/BoundKeys.h"

#include <algorithm>
#include <utility>

#include "platform/keys/KeyCombination.h"

namespace quennel {

BoundKeys::BoundKeys(HelperConnection& helper) {
  auto answer = helper.keys();
  if (answer) {
    _keys = std::move(answer).value();
  } else {
    _silence = answer.failure();
  }
}

const HelperKey* BoundKeys::keyOf(std::size_t index) const {
  const auto key =
      std::ranges::find(_keys, "shortcut" + std::to_string(index), &HelperKey::identifier);
  return key == _keys.end() ? nullptr : &*key;
}

bool hasShortcut(const FileTemplate& template_) {
  return template_.objectForKey("shortcut") != nullptr;
}

std::optional<std::string> shortcutText(const FileTemplate& template_) {
  const PropertyList* const stored = template_.objectForKey("shortcut");
  const auto combination =
      stored ? KeyCombination::fromPropertyList(*stored) : std::optional<KeyCombination>();
  return combination ? std::optional(combination->acceleratorText()) : std::nullopt;
}

}  // namespace quennel
