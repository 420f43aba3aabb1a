#pragma once

#include <string>

namespace quennel {

class Bundle;

/// Why a platform operation failed: what was being done, to which item, and the system's reason.
/// Operations take an optional `Error*`, which they fill only when they report failure by their
/// result; a null pointer means that nobody asks. Plain data, so that whoever knows more (the path
/// by which the user knows the item) can put it right; the sentence is made of it once, where it is
/// shown.
struct Error {
  /// Each has a sentence of its own in the string table.
  enum class Kind {
    /// Nothing but the reason is known.
    Unknown,

    // Files and folders; the item is the path.
    Reading,
    Creating,
    Writing,
    Removing,
    ChangingAttributes,
    CopyingSpecialFile,
    CopyingIntoItself,

    // Grants; the item is the path.
    ChangingUngranted,
    Remembering,
    NoKeyOfGrants,
    KeyOfAnotherUser,
    KeyOpenToOthers,

    // Settings; the item is the file, or the key that was to be stored.
    UnreadableSettings,
    StoringSetting,

    // Keys; the item is empty.
    NoKeyCombination,
    CombinationInUseHere,
    CombinationInUse,
    CombinationRefused,
    UnknownKey,
    SilentKeyboard,
    UnreachableDisplay,
    UnreachableBus,
    MissingKeyModule,
    NoKeysInSession,

    // Scripts; the item is the path, or the limit, signal or status.
    StartingScript,
    MissingInterpreter,
    ScriptTookTooLong,
    ScriptPrintedTooMuch,
    ScriptEndedBySignal,
    ScriptFailed,

    // The watcher; the item is the path.
    Watching,
    TooManyWatches,
  };

  /// The errno value behind the failure, 0 when there is none.
  int code = 0;
  Kind kind = Kind::Unknown;
  std::string item = {};

  bool operator==(const Error&) const = default;

  /// The one sentence for the user, in the user's language, that says which item and what happened.
  /// Any thread.
  std::string localizedDescription(const Bundle& texts) const;

  /// The same in English, for programs of the terminal, which have no other language.
  std::string description() const;
};

}  // namespace quennel
