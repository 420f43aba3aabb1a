#include "platform/keys/KeyTable.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <utility>

#include "platform/values/Text.h"

namespace quennel {
namespace {

using enum KeyInformation::Use;
constexpr std::int16_t none = KeyInformation::noVirtualCode;
constexpr std::uint8_t nowhere = KeyInformation::noPosition;

// clang-format off
constexpr std::array<KeyInformation, 142> keys = {{
    {"a", 'a', 0x00, 30, Typing}, {"b", 'b', 0x0B, 48, Typing}, {"c", 'c', 0x08, 46, Typing},
    {"d", 'd', 0x02, 32, Typing}, {"e", 'e', 0x0E, 18, Typing}, {"f", 'f', 0x03, 33, Typing},
    {"g", 'g', 0x05, 34, Typing}, {"h", 'h', 0x04, 35, Typing}, {"i", 'i', 0x22, 23, Typing},
    {"j", 'j', 0x26, 36, Typing}, {"k", 'k', 0x28, 37, Typing}, {"l", 'l', 0x25, 38, Typing},
    {"m", 'm', 0x2E, 50, Typing}, {"n", 'n', 0x2D, 49, Typing}, {"o", 'o', 0x1F, 24, Typing},
    {"p", 'p', 0x23, 25, Typing}, {"q", 'q', 0x0C, 16, Typing}, {"r", 'r', 0x0F, 19, Typing},
    {"s", 's', 0x01, 31, Typing}, {"t", 't', 0x11, 20, Typing}, {"u", 'u', 0x20, 22, Typing},
    {"v", 'v', 0x09, 47, Typing}, {"w", 'w', 0x0D, 17, Typing}, {"x", 'x', 0x07, 45, Typing},
    {"y", 'y', 0x10, 21, Typing}, {"z", 'z', 0x06, 44, Typing},
    {"0", '0', 0x1D, 11, Typing}, {"1", '1', 0x12, 2, Typing}, {"2", '2', 0x13, 3, Typing},
    {"3", '3', 0x14, 4, Typing}, {"4", '4', 0x15, 5, Typing}, {"5", '5', 0x17, 6, Typing},
    {"6", '6', 0x16, 7, Typing}, {"7", '7', 0x1A, 8, Typing}, {"8", '8', 0x1C, 9, Typing},
    {"9", '9', 0x19, 10, Typing},
    {"minus", '-', 0x1B, 12, Typing}, {"equal", '=', 0x18, 13, Typing},
    {"bracketleft", '[', 0x21, 26, Typing}, {"bracketright", ']', 0x1E, 27, Typing},
    {"semicolon", ';', 0x29, 39, Typing}, {"apostrophe", '\'', 0x27, 40, Typing},
    {"grave", '`', 0x32, 41, Typing}, {"backslash", '\\', 0x2A, 43, Typing},
    {"comma", ',', 0x2B, 51, Typing}, {"period", '.', 0x2F, 52, Typing},
    {"slash", '/', 0x2C, 53, Typing}, {"less", '<', 0x0A, 86, Typing},
    {"space", ' ', 0x31, 57, Typing},
    // What needs Shift on a US keyboard, and may be a key of its own on another.
    {"exclam", '!', none, nowhere, Typing}, {"at", '@', none, nowhere, Typing},
    {"numbersign", '#', none, nowhere, Typing}, {"dollar", '$', none, nowhere, Typing},
    {"percent", '%', none, nowhere, Typing}, {"asciicircum", '^', none, nowhere, Typing},
    {"ampersand", '&', none, nowhere, Typing}, {"asterisk", '*', none, nowhere, Typing},
    {"parenleft", '(', none, nowhere, Typing}, {"parenright", ')', none, nowhere, Typing},
    {"underscore", '_', none, nowhere, Typing}, {"plus", '+', none, nowhere, Typing},
    {"braceleft", '{', none, nowhere, Typing}, {"braceright", '}', none, nowhere, Typing},
    {"colon", ':', none, nowhere, Typing}, {"quotedbl", '"', none, nowhere, Typing},
    {"asciitilde", '~', none, nowhere, Typing}, {"bar", '|', none, nowhere, Typing},
    {"greater", '>', none, nowhere, Typing}, {"question", '?', none, nowhere, Typing},
    {"Return", 0, 0x24, 28, Typing}, {"Tab", 0, 0x30, 15, Typing},
    {"BackSpace", 0, 0x33, 14, Typing}, {"Escape", 0, 0x35, 1, Typing},
    {"Delete", 0, 0x75, 111, Typing}, {"Insert", 0, none, 110, Typing},
    {"Home", 0, 0x73, 102, Typing}, {"End", 0, 0x77, 107, Typing}, {"Prior", 0, 0x74, 104, Typing},
    {"Next", 0, 0x79, 109, Typing}, {"Left", 0, 0x7B, 105, Typing}, {"Right", 0, 0x7C, 106, Typing},
    {"Up", 0, 0x7E, 103, Typing}, {"Down", 0, 0x7D, 108, Typing},
    {"KP_0", 0, 0x52, 82, Typing}, {"KP_1", 0, 0x53, 79, Typing}, {"KP_2", 0, 0x54, 80, Typing},
    {"KP_3", 0, 0x55, 81, Typing}, {"KP_4", 0, 0x56, 75, Typing}, {"KP_5", 0, 0x57, 76, Typing},
    {"KP_6", 0, 0x58, 77, Typing}, {"KP_7", 0, 0x59, 71, Typing}, {"KP_8", 0, 0x5B, 72, Typing},
    {"KP_9", 0, 0x5C, 73, Typing}, {"KP_Decimal", 0, 0x41, 83, Typing},
    {"KP_Multiply", 0, 0x43, 55, Typing}, {"KP_Add", 0, 0x45, 78, Typing},
    {"KP_Subtract", 0, 0x4E, 74, Typing}, {"KP_Divide", 0, 0x4B, 98, Typing},
    {"KP_Enter", 0, 0x4C, 96, Typing}, {"KP_Equal", 0, 0x51, 117, Typing},
    {"F1", 0, 0x7A, 59, Free}, {"F2", 0, 0x78, 60, Free}, {"F3", 0, 0x63, 61, Free},
    {"F4", 0, 0x76, 62, Free}, {"F5", 0, 0x60, 63, Free}, {"F6", 0, 0x61, 64, Free},
    {"F7", 0, 0x62, 65, Free}, {"F8", 0, 0x64, 66, Free}, {"F9", 0, 0x65, 67, Free},
    {"F10", 0, 0x6D, 68, Free}, {"F11", 0, 0x67, 87, Free}, {"F12", 0, 0x6F, 88, Free},
    {"F13", 0, 0x69, 183, Free}, {"F14", 0, 0x6B, 184, Free}, {"F15", 0, 0x71, 185, Free},
    {"F16", 0, 0x6A, 186, Free}, {"F17", 0, 0x40, 187, Free}, {"F18", 0, 0x4F, 188, Free},
    {"F19", 0, 0x50, 189, Free}, {"F20", 0, 0x5A, 190, Free}, {"F21", 0, none, 191, Free},
    {"F22", 0, none, 192, Free}, {"F23", 0, none, 193, Free}, {"F24", 0, none, 194, Free},
    {"F25", 0, none, nowhere, Free}, {"F26", 0, none, nowhere, Free},
    {"F27", 0, none, nowhere, Free}, {"F28", 0, none, nowhere, Free},
    {"F29", 0, none, nowhere, Free}, {"F30", 0, none, nowhere, Free},
    {"F31", 0, none, nowhere, Free}, {"F32", 0, none, nowhere, Free},
    {"F33", 0, none, nowhere, Free}, {"F34", 0, none, nowhere, Free},
    {"F35", 0, none, nowhere, Free},
    {"Print", 0, none, 99, Free}, {"Pause", 0, none, 119, Free}, {"Menu", 0, none, 127, Free},
    {"Help", 0, 0x72, 138, Free}, {"XF86AudioRaiseVolume", 0, 0x48, 115, Free},
    {"XF86AudioLowerVolume", 0, 0x49, 114, Free}, {"XF86AudioMute", 0, 0x4A, 113, Free},
}};

/// What people call keys, in lower case, beside their X11 names.
constexpr std::array<std::pair<std::string_view, std::string_view>, 18> otherNames = {{
    {"enter", "Return"}, {"esc", "Escape"}, {"del", "Delete"}, {"ins", "Insert"},
    {"backtab", "Tab"}, {"iso_left_tab", "Tab"},
    {"page_up", "Prior"}, {"pageup", "Prior"}, {"pgup", "Prior"},
    {"page_down", "Next"}, {"pagedown", "Next"}, {"pgdown", "Next"}, {"pgdn", "Next"},
    {"printscreen", "Print"}, {"sys_req", "Print"}, {"break", "Pause"},
    {"quoteleft", "grave"}, {"quoteright", "apostrophe"},
}};
// clang-format on

constexpr std::string_view vendorPrefix = "XF86";
constexpr std::size_t longestName = 40;

char lowerCase(char character) {
  return character >= 'A' && character <= 'Z' ? static_cast<char>(character - 'A' + 'a')
                                              : character;
}

bool isNameCharacter(char character) {
  const char lower = lowerCase(character);
  return (lower >= 'a' && lower <= 'z') || (character >= '0' && character <= '9') ||
         character == '_';
}

bool isVendorKey(std::string_view text) {
  return text.starts_with(vendorPrefix) && text.size() > vendorPrefix.size() &&
         text.size() <= longestName && std::ranges::all_of(text, isNameCharacter);
}

/// X11 has a symbol for every character above ASCII and the controls behind it.
std::string nameOfCharacter(std::uint32_t character) {
  if (character <= 0xA0 || character > 0x10FFFF || (character >= 0xD800 && character <= 0xDFFF)) {
    return {};
  }
  std::array<char, 8> name;
  const int length = std::snprintf(name.data(), name.size(), "U%04X", character);
  return length > 0 ? std::string(name.data(), static_cast<std::size_t>(length)) : std::string();
}

/// "U00F6", in either case, in the form that this program writes.
std::string nameForCodePoint(std::string_view text) {
  if (text.size() < 5 || text.size() > 7 || lowerCase(text.front()) != 'u') {
    return {};
  }
  std::uint32_t character = 0;
  const char* const end = text.data() + text.size();
  const auto result = std::from_chars(text.data() + 1, end, character, 16);
  return result.ec == std::errc() && result.ptr == end ? nameOfCharacter(character) : std::string();
}

/// The name for a text that is a single character above ASCII.
std::string nameForSingleCharacter(std::string_view text) {
  if (text.size() < 2 || text.size() > 4 || !isValidUTF8(text)) {
    return {};
  }
  // How many bits of a sequence's first byte belong to the character.
  const unsigned leadingMask = 0x7FU >> text.size();
  std::uint32_t character = static_cast<unsigned char>(text.front()) & leadingMask;
  for (const char byte : text.substr(1)) {
    if (static_cast<unsigned char>(byte) >> 6 != 2) {
      return {};  // the next character begins
    }
    character = (character << 6) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return nameOfCharacter(character);
}

}  // namespace

const KeyInformation* keyWithVirtualCode(std::int64_t code) {
  const auto key = std::ranges::find(keys, code, &KeyInformation::virtualCode);
  return key == keys.end() || code == none ? nullptr : &*key;
}

const KeyInformation* keyNamed(std::string_view name) {
  const auto key = std::ranges::find(keys, name, &KeyInformation::name);
  return key == keys.end() ? nullptr : &*key;
}

std::string keyNameForText(std::string_view text) {
  for (const KeyInformation& key : keys) {
    const bool isCharacter =
        text.size() == 1 && key.character != 0 && lowerCase(text.front()) == key.character;
    if (isCharacter || equalIgnoringCase(key.name, text)) {
      return std::string(key.name);
    }
  }
  for (const auto& [otherName, name] : otherNames) {
    if (equalIgnoringCase(otherName, text)) {
      return std::string(name);
    }
  }
  if (isVendorKey(text)) {
    return std::string(text);
  }
  const std::string name = nameForCodePoint(text);
  return name.empty() ? nameForSingleCharacter(text) : name;
}

bool equalIgnoringCase(std::string_view left, std::string_view right) {
  return std::ranges::equal(left, right, {}, lowerCase, lowerCase);
}

bool isTypingKey(std::string_view name) {
  const KeyInformation* key = keyNamed(name);
  return key ? key->use == Typing : !isVendorKey(name);
}

}  // namespace quennel
