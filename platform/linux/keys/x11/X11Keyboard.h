#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/keys/KeyCombination.h"
#include "platform/linux/keys/x11/XKB.h"
#include "platform/linux/x11/XCB.h"

namespace quennel {

/// Where a combination is on a keyboard: the keys that give it and the X modifiers to hold.
struct X11KeyPlace {
  std::vector<xcb_keycode_t> keycodes;
  std::uint16_t modifiers = 0;

  bool operator==(const X11KeyPlace&) const = default;
};

/// What the keys of a display give, and which modifiers it has: a snapshot of the layouts in force.
class X11Keyboard {
 public:
  /// Asks the server, which must have been told that this client knows the keyboard extension.
  /// Nothing when it does not answer.
  static std::optional<X11Keyboard> read(xcb_connection_t* connection);

  /// Without keycodes when no key gives it. The first layout in which the symbol stands unshifted
  /// decides. A symbol that no layout has (Latin letters in Russian or Greek ones) is looked for at
  /// its place on a US keyboard; last where it needs Shift, which is then held as well.
  X11KeyPlace placeOf(const KeyCombination& combination) const;

  /// The modifier states in which a key counts as pressed without them: nothing, Caps Lock, Num
  /// Lock, both. The same one may occur twice.
  std::array<std::uint16_t, 4> lockStates() const;
  std::uint16_t lockModifiers() const;

  bool operator==(const X11Keyboard&) const = default;

 private:
  using Symbol = xcb_keysym_t;
  static constexpr unsigned layoutLimit = 4;

  /// What a key gives in each layout, without and with Shift.
  struct Key {
    std::array<Symbol, layoutLimit> plain{};
    std::array<Symbol, layoutLimit> shifted{};

    bool operator==(const Key&) const = default;
  };
  using Keycodes = std::vector<xcb_keycode_t>;

  void takeSymbols(const xcb_xkb_get_map_reply_t& reply);
  void takeModifiers(const xcb_get_modifier_mapping_reply_t& reply);
  std::uint16_t modifierWith(const xcb_get_modifier_mapping_reply_t& reply, Symbol left,
                             Symbol right, std::uint16_t otherwise) const;
  Keycodes keysThat(const auto& give) const;
  X11KeyPlace placeOfSymbol(Symbol symbol, const std::string& name) const;

  std::array<Key, 256> _keys{};
  std::uint16_t _numLock = 0;
  std::uint16_t _alt = 0;
  std::uint16_t _super = 0;
};

}  // namespace quennel
