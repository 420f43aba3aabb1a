#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Error.h"

namespace quennel {

/// What can be read of, and set on, an item. An absent field is unknown (reading) or left as it is
/// (setting).
struct FileAttributes {
  using Date = std::chrono::system_clock::time_point;

  /// The permission bits 07777.
  std::optional<std::uint16_t> posixPermissions = std::nullopt;
  /// Reading: the birth time where the filesystem keeps one. No Linux filesystem lets it be set, so
  /// setting it does nothing and is no error.
  std::optional<Date> creationDate = std::nullopt;
  std::optional<Date> modificationDate = std::nullopt;
};

/// Files and folders. Paths are absolute byte strings in the POSIX form; a name need not be UTF-8.
/// Symbolic links are followed unless an operation says otherwise. Main thread only; every
/// operation blocks until it is done.
class FileManager {
 public:
  enum class ItemKind { File, Directory };

  /// How it ended to put a copy in the place of an item.
  enum class Replacement { Done, NotSetAside, NotCopied };

  /// One name of a folder. `isLink` is set when the entry is, or may be, a symbolic link.
  struct DirectoryEntry {
    std::string_view name;
    bool isLink;
  };

  virtual ~FileManager() = default;

  /// What is at `path`; nothing when no item is there (a dangling link is none). Everything that is
  /// not a folder counts as a file.
  virtual std::optional<ItemKind> itemKindAtPath(const std::string& path) const = 0;

  bool fileExistsAtPath(const std::string& path) const { return itemKindAtPath(path).has_value(); }

  /// Visits every name of the folder at `path` in one pass, in no order, "." and ".." left out.
  /// Entry names live for the call of `visit` only. False when the folder cannot be read.
  virtual bool visitDirectory(const std::string& path,
                              const std::function<void(const DirectoryEntry&)>& visit) const = 0;

  /// Visits every item below the folder at `path`, a folder before what it holds, by its path
  /// relative to `path`. Links are visited, not entered. Stops early when `visit` answers false.
  virtual void enumerateItemsAtPath(const std::string& path,
                                    const std::function<bool(const std::string&)>& visit) const = 0;

  /// Copies a file or a whole folder, with permissions, owner (as far as allowed), extended
  /// attributes, ACLs, dates, holes and the links inside it. In a folder with the set-group bit or
  /// a default ACL, that group and those rules hold instead. The copy appears at `toPath` complete
  /// or not at all, and nothing is ever replaced: an item at `toPath` is an error. A source that is
  /// itself a symbolic link is followed. A FIFO, socket or device, as the source or inside it, is
  /// an error, at once.
  virtual bool copyItemAtPath(const std::string& path, const std::string& toPath,
                              Error* error = nullptr) = 0;

  /// Puts a copy, as `copyItemAtPath` makes it, in the place of the item at `path`: a file, a link
  /// (not what it points to) or a folder with all it holds. The copy is finished out of sight and
  /// takes the name in one step, so that the old item or the whole new one is there at every
  /// moment; a process that is killed leaves a hidden temporary item at most. Where the filesystem
  /// cannot exchange two names, a folder is away for the time of three renames. Unless it is done,
  /// the old item is there: `NotSetAside` when it may not be taken away (what could be removed of a
  /// folder before is gone), `NotCopied` when the copy failed, or when the way to its source leads
  /// through the old item, which would be lost with it.
  virtual Replacement replaceItemAtPath(const std::string& path, const std::string& withCopyOf,
                                        Error* error = nullptr) = 0;

  /// Removes a file, a link (not what it points to) or a folder with all it holds.
  virtual bool removeItemAtPath(const std::string& path, Error* error = nullptr) = 0;

  /// Makes a folder with the user's default permissions. With intermediate directories, missing
  /// parents are made too and a folder that is already there is no error.
  virtual bool createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories,
                                     Error* error = nullptr) = 0;

  /// The whole contents of a regular file; nothing when it cannot be read or is none.
  virtual std::optional<std::string> contentsAtPath(const std::string& path) const = 0;

  /// Writes `contents` to a temporary file beside `path` and moves it into place, replacing a file
  /// that is there.
  virtual bool writeContents(std::string_view contents, const std::string& toPath,
                             Error* error = nullptr) = 0;

  virtual std::optional<FileAttributes> attributesOfItemAtPath(const std::string& path,
                                                               Error* error = nullptr) const = 0;
  virtual bool setAttributes(const FileAttributes& attributes, const std::string& ofItemAtPath,
                             Error* error = nullptr) = 0;

  /// Whether this process could write the file, or make entries in the folder, at `path` now.
  virtual bool isWritableFileAtPath(const std::string& path) const = 0;

  /// The login name of the process's user.
  virtual std::string userName() const = 0;
};

}  // namespace quennel
