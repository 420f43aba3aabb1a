#pragma once

#include <cstddef>
#include <string>

#include "platform/Error.h"
#include "platform/HelperConnection.h"
#include "platform/values/Result.h"

namespace quennel {

/// Why an operation of this room could not be done. It says nothing yet: each face makes its own
/// sentence of it.
struct Failure {
  enum class Reason {
    /// `error` is why the settings could not be stored.
    SettingsNotStored,
    /// The settings hold something else than a list under the key `item`.
    NoList,

    /// There is no template at `index`, but `count` of them.
    NoSuchTemplate,
    /// The template that was meant is not in the list any more: it was changed or removed.
    TemplateChanged,
    EmptyTitle,
    /// A part of a file name holds a slash.
    SlashInPrefix,
    SlashInSuffix,
    /// The new files would have no name, or one that is too long for a file.
    NoName,
    NameTooLong,
    /// The text `item` is no key combination.
    NoKeyCombination,

    /// There is nothing to be found, or to be read, at the path `item`; `error` is why.
    UnreadableItem,
    /// At `item` is neither a file nor a folder.
    SpecialFile,
    /// The path `item` cannot be kept: settings hold UTF-8.
    UnstorablePath,
    NotAFolder,

    /// `error` is why no grant can be made.
    NotGrantable,
    /// The folder `item` was not granted.
    NotGranted,

    /// It is done, but not known to the helper that is running; `silence` is why.
    HelperNotTold,
    /// The helper was needed; `silence` is why it does not answer.
    HelperSilent,
  };

  Reason reason;
  std::string item = {};
  Error error = {};
  std::size_t index = 0;
  std::size_t count = 0;
  HelperSilence silence = {};
};

/// The length in bytes that the name of a file can have.
constexpr std::size_t longestFileName = 255;

}  // namespace quennel
