#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/values/PropertyList.h"

namespace quennel {

/// A key and the modifiers that are held down with it.
struct KeyCombination {
  static constexpr unsigned shift = 1;
  static constexpr unsigned control = 2;
  static constexpr unsigned alt = 4;
  /// The key with the logo; Command in what comes from macOS.
  static constexpr unsigned super = 8;

  /// The sum of the above.
  unsigned modifiers = 0;
  /// The X11 name of the key's symbol: "n", "F5", "plus", "U00F6". Shift is never part of it: the
  /// key for capital letters is "n" as well.
  std::string key;

  bool operator==(const KeyCombination&) const = default;

  /// The combination that a stored value says, whichever way it was written:
  /// - a record of a key code and modifier flags, both of macOS: a dictionary in which the name of
  ///   one entry ends in "keyCode" and that of another in "modifiers" or "modifierFlags". The flags
  ///   may be of either kind that macOS has (see `fromVirtualCode`);
  /// - the keyed archive of such a record;
  /// - an accelerator text.
  /// Nothing for anything else, and for a combination that would take a typing key away from all
  /// programs: such a key needs Control, Alt or Super.
  static std::optional<KeyCombination> fromPropertyList(const PropertyList& value);

  /// "<Super><Shift>n" or "Ctrl+Shift+N": modifiers in any order, case does not count.
  static std::optional<KeyCombination> fromAccelerator(std::string_view text);

  /// Flags that use the bits from 16 up are those of events, flags below that are those of the
  /// older interface (256 Command, 512 Shift, 2048 Option, 4096 Control).
  static std::optional<KeyCombination> fromVirtualCode(std::int64_t code, std::int64_t flags);

  /// "Ctrl+Alt+Shift+Super+N": what `fromAccelerator` reads, in its usual order.
  std::string acceleratorText() const;
};

}  // namespace quennel
