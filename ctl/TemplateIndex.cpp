#include "ctl/TemplateIndex.h"

#include <charconv>

#include "ctl/CommandError.h"
#include "ctl/FilePath.h"
#include "settings/SharedSettings.h"

namespace quennel {
namespace {

std::string rangeOf(std::size_t count) {
  switch (count) {
    case 0:
      return "there are none";
    case 1:
      return "there is only template 0";
    default:
      return "they go from 0 to " + std::to_string(count - 1);
  }
}

}  // namespace

PropertyList::Array templatesOf(const std::optional<PropertyList>& stored) {
  if (!stored) {
    return {};
  }
  if (!stored->array()) {
    throw CommandFailure("the settings hold something else than a list under " +
                         std::string(fileTemplatesKey));
  }
  return *stored->array();
}

std::size_t templateIndex(const std::string& text, std::size_t count) {
  std::size_t index = 0;
  const char* end = text.data() + text.size();
  const auto [stopped, error] = std::from_chars(text.data(), end, index);
  if (text.empty() || stopped != end || error == std::errc::invalid_argument) {
    throw UsageError("'" + shown(text) + "' is not the index of a template");
  }
  if (error != std::errc() || index >= count) {
    throw CommandFailure("there is no template " + text + "; " + rangeOf(count));
  }
  return index;
}

}  // namespace quennel
