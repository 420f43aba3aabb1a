#include "platform/keys/KeyCombination.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <initializer_list>
#include <limits>
#include <utility>

#include "platform/keys/KeyTable.h"
#include "platform/keys/KeyedArchive.h"

namespace quennel {
namespace {

constexpr std::size_t longestAccelerator = 128;

struct ModifierName {
  std::string_view name;
  unsigned modifier;
};

constexpr std::array<ModifierName, 18> modifierNames = {{
    {"ctrl", KeyCombination::control},
    {"control", KeyCombination::control},
    {"ctl", KeyCombination::control},
    {"primary", KeyCombination::control},
    {"alt", KeyCombination::alt},
    {"option", KeyCombination::alt},
    {"opt", KeyCombination::alt},
    {"mod1", KeyCombination::alt},
    {"shift", KeyCombination::shift},
    {"shft", KeyCombination::shift},
    {"super", KeyCombination::super},
    {"meta", KeyCombination::super},
    {"win", KeyCombination::super},
    {"windows", KeyCombination::super},
    {"logo", KeyCombination::super},
    {"command", KeyCombination::super},
    {"cmd", KeyCombination::super},
    {"mod4", KeyCombination::super},
}};

struct FlagMeaning {
  std::uint32_t flags;
  unsigned modifier;
};

constexpr std::array<FlagMeaning, 4> eventFlags = {{
    {1U << 17, KeyCombination::shift},
    {1U << 18, KeyCombination::control},
    {1U << 19, KeyCombination::alt},
    {1U << 20, KeyCombination::super},
}};

// The second bit of a pair is the key on the right-hand side.
constexpr std::array<FlagMeaning, 4> olderFlags = {{
    {1U << 8, KeyCombination::super},
    {1U << 9 | 1U << 13, KeyCombination::shift},
    {1U << 11 | 1U << 14, KeyCombination::alt},
    {1U << 12 | 1U << 15, KeyCombination::control},
}};

std::string_view trimmed(std::string_view text) {
  const std::size_t start = text.find_first_not_of(' ');
  return start == std::string_view::npos
             ? std::string_view()
             : text.substr(start, text.find_last_not_of(' ') - start + 1);
}

/// The modifier of that name, 0 when it names none.
unsigned modifierNamed(std::string_view name) {
  const auto entry = std::ranges::find_if(modifierNames, [&](const ModifierName& known) {
    return equalIgnoringCase(known.name, trimmed(name));
  });
  return entry == modifierNames.end() ? 0 : entry->modifier;
}

unsigned modifiersOfFlags(std::uint32_t flags) {
  unsigned modifiers = 0;
  for (const FlagMeaning& meaning : flags >> 16 != 0 ? eventFlags : olderFlags) {
    modifiers |= (flags & meaning.flags) != 0 ? meaning.modifier : 0;
  }
  return modifiers;
}

std::optional<KeyCombination> combination(unsigned modifiers, std::string key) {
  constexpr unsigned beyondShift =
      KeyCombination::control | KeyCombination::alt | KeyCombination::super;
  if (key.empty() || (isTypingKey(key) && (modifiers & beyondShift) == 0)) {
    return std::nullopt;
  }
  return KeyCombination{modifiers, std::move(key)};
}

std::optional<std::int64_t> wholeNumber(const PropertyList& value) {
  if (const std::int64_t* integer = value.integer()) {
    return *integer;
  }
  const double* real = value.real();
  const bool isWhole = real && std::trunc(*real) == *real &&
                       std::abs(*real) <= std::numeric_limits<std::int32_t>::max();
  return isWhole ? std::optional(static_cast<std::int64_t>(*real)) : std::nullopt;
}

bool endsIgnoringCase(std::string_view text, std::string_view ending) {
  return text.size() >= ending.size() &&
         equalIgnoringCase(text.substr(text.size() - ending.size()), ending);
}

/// The number of the first entry whose name ends in one of these ways. Entries that hold no number
/// are passed over: "charactersIgnoringModifiers" does not say which modifiers there are.
std::optional<std::int64_t> numberNamed(const PropertyList::Dictionary& record,
                                        std::initializer_list<std::string_view> endings) {
  for (const auto& [name, value] : record) {
    const auto isEndingOfName = [&name = name](auto ending) {
      return endsIgnoringCase(name, ending);
    };
    const auto number = wholeNumber(value);
    if (number && std::ranges::any_of(endings, isEndingOfName)) {
      return number;
    }
  }
  return std::nullopt;
}

std::optional<KeyCombination> fromRecord(const PropertyList::Dictionary& record) {
  const auto code = numberNamed(record, {"keyCode"});
  const auto flags = numberNamed(record, {"modifiers", "modifierFlags"});
  return code && flags ? KeyCombination::fromVirtualCode(*code, *flags) : std::nullopt;
}

}  // namespace

std::optional<KeyCombination> KeyCombination::fromPropertyList(const PropertyList& value) {
  if (const PropertyList::Data* data = value.data()) {
    const auto archived = KeyedArchive::rootOfData(data->bytes);
    // Nothing is archived twice.
    return archived && !archived->data() ? fromPropertyList(*archived) : std::nullopt;
  }
  if (const PropertyList::Dictionary* record = value.dictionary()) {
    return fromRecord(*record);
  }
  return value.string() ? fromAccelerator(*value.string()) : std::nullopt;
}

std::optional<KeyCombination> KeyCombination::fromAccelerator(std::string_view text) {
  if (text.size() > longestAccelerator) {
    return std::nullopt;
  }
  text = trimmed(text);
  unsigned found = 0;
  while (!text.empty()) {
    // A modifier ends with its bracket, or with a plus that is not the key itself.
    const bool isBracketed = text.front() == '<' && text.size() > 1;
    const std::size_t end = text.find(isBracketed ? '>' : '+', 1);
    if (end == std::string_view::npos || end + 1 == text.size()) {
      break;
    }
    const std::size_t start = isBracketed ? 1 : 0;
    const unsigned modifier = modifierNamed(text.substr(start, end - start));
    if (modifier == 0) {
      return std::nullopt;
    }
    found |= modifier;
    text = trimmed(text.substr(end + 1));
  }
  return combination(found, keyNameForText(text));
}

std::optional<KeyCombination> KeyCombination::fromVirtualCode(std::int64_t code,
                                                              std::int64_t flags) {
  const KeyInformation* information = keyWithVirtualCode(code);
  if (!information || flags < 0 || flags > std::numeric_limits<std::uint32_t>::max()) {
    return std::nullopt;
  }
  return combination(modifiersOfFlags(static_cast<std::uint32_t>(flags)),
                     std::string(information->name));
}

std::string KeyCombination::acceleratorText() const {
  std::string text;
  text += modifiers & control ? "Ctrl+" : "";
  text += modifiers & alt ? "Alt+" : "";
  text += modifiers & shift ? "Shift+" : "";
  text += modifiers & super ? "Super+" : "";
  const bool isLetter = key.size() == 1 && key.front() >= 'a' && key.front() <= 'z';
  return text += isLetter ? std::string(1, static_cast<char>(key.front() - 'a' + 'A')) : key;
}

}  // namespace quennel
