#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace quennel {

/// What is known of one key of a keyboard.
struct KeyInformation {
  /// A typing key is one that the program in front expects for itself (it types, edits or moves):
  /// it makes a system-wide key only together with Control, Alt or Super.
  enum class Use : std::uint8_t { Typing, Free };

  static constexpr std::int16_t noVirtualCode = -1;
  static constexpr std::uint8_t noPosition = 0;

  /// The X11 name of the symbol, which also names the key.
  std::string_view name;
  /// The ASCII character that the symbol is, 0 when it is none.
  char character;
  /// The virtual key code of macOS for the key that has the symbol on an ANSI keyboard.
  std::int16_t virtualCode;
  /// The Linux input code of that key on a US keyboard.
  std::uint8_t usPosition;
  Use use;
};

/// The key that has this virtual key code of macOS; null for a code that no key of an ANSI or ISO
/// keyboard has, and for modifier keys.
const KeyInformation* keyWithVirtualCode(std::int64_t code);

/// The key of exactly this X11 name; null when the table has none.
const KeyInformation* keyNamed(std::string_view name);

/// The X11 name of the key that people write as `text`: "N", "PgUp", "esc", "+", "ö". Empty when
/// there is no such key.
std::string keyNameForText(std::string_view text);

/// By ASCII alone: what keys are called does not depend on the user's language.
bool equalIgnoringCase(std::string_view left, std::string_view right);

/// Whether the key of this X11 name is one to leave to the program in front (see
/// `KeyInformation::Use`).
bool isTypingKey(std::string_view name);

}  // namespace quennel
