#pragma once

#include <optional>
#include <string>

#include "platform/linux/settings/FileStamp.h"
#include "platform/plist/PropertyListDocument.h"
#include "platform/values/PropertyList.h"

namespace quennel {

/// One look at a property-list file.
struct PropertyListFile {
  enum class State { Missing, Unreadable, Readable };

  /// Reads the file, XML or binary. What is not a regular file, cannot be read, is no property list
  /// with a dictionary at the top, or exceeds the limits (PropertyListLimits.h) is unreadable, with
  /// an empty document. Never waits (for the writer of a pipe, say) and never throws.
  static PropertyListFile read(const std::string& path);

  State state = State::Missing;
  PropertyListDocument document;
  /// Of the file as it was just before its contents were read. The default stamp when it could not
  /// be opened.
  FileStamp stamp;
  /// Whether every later change of the file shows in its stamp (see `FileStamp::isSettled`).
  bool isStampSettled = true;
};

/// The dictionary that the file at `path` holds, or nothing when there is none.
std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(const std::string& path);

}  // namespace quennel
