#pragma once

#include <sys/types.h>

#include <string>

#include "platform/linux/base/FileDescriptor.h"

namespace quennel {

// Items that come into being out of sight, in the folder where they are to appear, and get their
// name once they are complete. One that is destroyed unpublished leaves nothing behind. All
// operations throw FileFailure.

/// A path as the folder to open and the name in it.
struct FolderAndName {
  explicit FolderAndName(const std::string& path);

  std::string folder;
  std::string name;
};

/// A regular file without a name, or with a temporary one where the filesystem wants a name.
class StagedFile {
 public:
  /// Opens the file for writing, for `path`, with the permissions that the process's mask leaves of
  /// `permissions`.
  StagedFile(const std::string& path, mode_t permissions);
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;
  ~StagedFile();

  int descriptor() const { return _file.get(); }

  /// Gives the file its name; never replaces what already has it.
  void publish();
  /// Gives the file its name, in place of a file that has it.
  void publishReplacing();
  /// Gives the file its name, in place of whatever has it.
  void takePlace();

 private:
  void openUnderTemporaryName(mode_t permissions);
  void linkUnderTemporaryName();
  void linkUnnamed(const std::string& path);
  bool moveWithoutReplacing();
  bool linkTemporary();
  void moveOverPlaceholder();

  std::string _path;
  /// Empty as long as the file has no name.
  std::string _temporaryPath;
  FileDescriptor _file;
};

/// A folder under a temporary name, closed to everybody else.
class StagedFolder {
 public:
  explicit StagedFolder(const std::string& path);
  StagedFolder(const StagedFolder&) = delete;
  StagedFolder& operator=(const StagedFolder&) = delete;
  ~StagedFolder();

  /// The folder that will hold it.
  int parent() const { return _parent.get(); }
  int descriptor() const { return _folder.get(); }

  /// Fails when something has the name already: the copy of a large folder should not end with the
  /// news that the name was taken all along.
  void refuseTakenName() const;

  /// Gives the folder its name; never replaces what already has it.
  void publish();
  /// Gives the folder its name, in place of whatever has it.
  void takePlace();

 private:
  void makeTemporary();
  void moveOverPlaceholder();

  std::string _path;
  FolderAndName _place;
  /// Empty once the folder has its name.
  std::string _temporaryName;
  FileDescriptor _parent;
  FileDescriptor _folder;
};

}  // namespace quennel
