#include "platform/linux/keys/x11/X11Keyboard.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon.h>

#include <algorithm>
#include <cstddef>
#include <string>

#include "platform/keys/KeyTable.h"

namespace quennel {
namespace {

/// X counts the keys from 8, the kernel from 0.
constexpr unsigned firstKeycode = 8;

/// From here on, a symbol is a character by its number.
constexpr xkb_keysym_t firstNumberedSymbol = 0x01000000;

/// Whether the layout's symbol is the wanted one. Many layouts still have symbols that are older
/// than the numbered ones for characters outside Latin 1.
bool isSame(xkb_keysym_t symbol, xkb_keysym_t wanted) {
  return symbol == wanted || (wanted >= firstNumberedSymbol && symbol != XKB_KEY_NoSymbol &&
                              xkb_keysym_to_utf32(symbol) == xkb_keysym_to_utf32(wanted));
}

/// Keys of the number pad give their digits with Num Lock, which is a level like Shift's.
bool isOfNumberPad(xkb_keysym_t symbol) {
  return symbol >= XKB_KEY_KP_Space && symbol <= XKB_KEY_KP_Equal;
}

xkb_keysym_t symbolNamed(const std::string& name) {
  return xkb_keysym_to_lower(xkb_keysym_from_name(name.c_str(), XKB_KEYSYM_NO_FLAGS));
}

}  // namespace

std::optional<X11Keyboard> X11Keyboard::read(xcb_connection_t* connection) {
  const auto mapCookie =
      xcb_xkb_get_map(connection, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_MAP_PART_KEY_SYMS, 0, 0, 0, 0, 0,
                      0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
  const auto modifiersCookie = xcb_get_modifier_mapping(connection);
  const XCBReply<xcb_xkb_get_map_reply_t> map(
      xcb_xkb_get_map_reply(connection, mapCookie, nullptr));
  const XCBReply<xcb_get_modifier_mapping_reply_t> modifiers(
      xcb_get_modifier_mapping_reply(connection, modifiersCookie, nullptr));
  if (!map || !modifiers) {
    return std::nullopt;
  }
  X11Keyboard keyboard;
  keyboard.takeSymbols(*map);
  keyboard.takeModifiers(*modifiers);
  return keyboard;
}

void X11Keyboard::takeSymbols(const xcb_xkb_get_map_reply_t& reply) {
  xcb_xkb_get_map_map_t parts{};
  xcb_xkb_get_map_map_unpack(xcb_xkb_get_map_map(&reply), reply.nTypes, reply.nKeySyms,
                             reply.nKeyActions, reply.totalActions, reply.totalKeyBehaviors,
                             reply.virtualMods, reply.totalKeyExplicit, reply.totalModMapKeys,
                             reply.totalVModMapKeys, reply.present, &parts);
  std::size_t keycode = reply.firstKeySym;
  for (auto entry = xcb_xkb_get_map_map_syms_rtrn_iterator(&reply, &parts);
       entry.rem > 0 && keycode < _keys.size(); xcb_xkb_key_sym_map_next(&entry), ++keycode) {
    const Symbol* const symbols = xcb_xkb_key_sym_map_syms(entry.data);
    const std::size_t width = entry.data->width;
    const unsigned layouts = std::min(entry.data->groupInfo & 0xFU, layoutLimit);
    for (unsigned layout = 0; layout < layouts && width > 0; ++layout) {
      _keys[keycode].plain[layout] = symbols[layout * width];
      _keys[keycode].shifted[layout] = width > 1 ? symbols[layout * width + 1] : Symbol{};
    }
  }
}

void X11Keyboard::takeModifiers(const xcb_get_modifier_mapping_reply_t& reply) {
  _numLock = modifierWith(reply, XKB_KEY_Num_Lock, XKB_KEY_Num_Lock, 0);
  _alt = modifierWith(reply, XKB_KEY_Alt_L, XKB_KEY_Alt_R, XCB_MOD_MASK_1);
  _super = modifierWith(reply, XKB_KEY_Super_L, XKB_KEY_Super_R, XCB_MOD_MASK_4);
}

/// The modifier that a key with one of these symbols sets.
std::uint16_t X11Keyboard::modifierWith(const xcb_get_modifier_mapping_reply_t& reply, Symbol left,
                                        Symbol right, std::uint16_t otherwise) const {
  const xcb_keycode_t* const keycodes = xcb_get_modifier_mapping_keycodes(&reply);
  const int width = reply.keycodes_per_modifier;
  for (int index = 0; index < xcb_get_modifier_mapping_keycodes_length(&reply); ++index) {
    const Key& key = _keys[keycodes[index]];
    const auto isThis = [&](Symbol symbol) { return symbol == left || symbol == right; };
    if (std::ranges::any_of(key.plain, isThis) || std::ranges::any_of(key.shifted, isThis)) {
      return static_cast<std::uint16_t>(1U << (index / width));
    }
  }
  return otherwise;
}

std::array<std::uint16_t, 4> X11Keyboard::lockStates() const {
  return {0, XCB_MOD_MASK_LOCK, _numLock, lockModifiers()};
}

std::uint16_t X11Keyboard::lockModifiers() const {
  return static_cast<std::uint16_t>(XCB_MOD_MASK_LOCK | _numLock);
}

X11Keyboard::Keycodes X11Keyboard::keysThat(const auto& give) const {
  Keycodes keycodes;
  for (std::size_t keycode = firstKeycode; keycode < _keys.size(); ++keycode) {
    if (give(_keys[keycode])) {
      keycodes.push_back(static_cast<xcb_keycode_t>(keycode));
    }
  }
  return keycodes;
}

X11KeyPlace X11Keyboard::placeOfSymbol(Symbol symbol, const std::string& name) const {
  for (unsigned layout = 0; layout < layoutLimit; ++layout) {
    auto keycodes = keysThat([&](const Key& key) {
      return isSame(key.plain[layout], symbol) ||
             (isOfNumberPad(symbol) && isSame(key.shifted[layout], symbol));
    });
    if (!keycodes.empty()) {
      return {std::move(keycodes), 0};
    }
  }
  const KeyInformation* const information = keyNamed(name);
  if (information && information->usPosition != KeyInformation::noPosition) {
    return {{static_cast<xcb_keycode_t>(information->usPosition + firstKeycode)}, 0};
  }
  for (unsigned layout = 0; layout < layoutLimit; ++layout) {
    auto keycodes = keysThat([&](const Key& key) { return isSame(key.shifted[layout], symbol); });
    if (!keycodes.empty()) {
      return {std::move(keycodes), XCB_MOD_MASK_SHIFT};
    }
  }
  return {};
}

X11KeyPlace X11Keyboard::placeOf(const KeyCombination& combination) const {
  const Symbol symbol = symbolNamed(combination.key);
  X11KeyPlace place =
      symbol == XKB_KEY_NoSymbol ? X11KeyPlace() : placeOfSymbol(symbol, combination.key);
  unsigned modifiers = place.modifiers;
  modifiers |= combination.modifiers & KeyCombination::shift ? XCB_MOD_MASK_SHIFT : 0;
  modifiers |= combination.modifiers & KeyCombination::control ? XCB_MOD_MASK_CONTROL : 0;
  modifiers |= combination.modifiers & KeyCombination::alt ? _alt : 0;
  modifiers |= combination.modifiers & KeyCombination::super ? _super : 0;
  place.modifiers = static_cast<std::uint16_t>(modifiers);
  return place;
}

}  // namespace quennel
