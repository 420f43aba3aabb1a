#include "ctl/KeyReport.h"

#include "ctl/Sentence.h"

namespace quennel {

std::string shortcutShown(const FileTemplate& template_) {
  return shortcutText(template_).value_or("?");
}

std::string obstacleTo(std::size_t index, const BoundKeys& keys) {
  if (keys.silence()) {
    return sentenceOf(*keys.silence(), "does not say");
  }
  const HelperKey* const key = keys.keyOf(index);
  if (!key) {
    return "the helper has not read it yet";
  }
  return key->isBound ? "" : key->reason;
}

}  // namespace quennel
