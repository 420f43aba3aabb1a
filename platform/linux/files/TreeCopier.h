#pragma once

#include <sys/stat.h>

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/files/DirectoryEntries.h"
#include "platform/linux/files/FileCopier.h"
#include "platform/linux/files/Metadata.h"
#include "platform/linux/files/WorkStack.h"

namespace quennel {

/// Copies what a folder holds into a fresh folder, with all metadata, and the metadata of the
/// folder itself. Links inside are copied as links, and names that share a file still do. A second
/// thread helps from the moment there is work for it, where that is of use.
class TreeCopier {
 public:
  /// The paths are for messages; the rules are those of the place of the copy.
  TreeCopier(std::string sourcePath, std::string copyPath, PlaceRules rules)
      : _sourcePath(std::move(sourcePath)), _copyPath(std::move(copyPath)), _rules(rules) {}
  TreeCopier(const TreeCopier&) = delete;
  TreeCopier& operator=(const TreeCopier&) = delete;
  ~TreeCopier();

  /// `copy` is open, empty and stays with the caller. Throws FileFailure, and may then leave an
  /// unfinished copy.
  void copy(FileDescriptor source, const struct stat& status, int copy);

 private:
  struct Folder;
  /// Some entries of a folder, or one folder in it to start with.
  struct Task {
    std::shared_ptr<Folder> folder;
    std::optional<DirectoryEntries> entries;
    std::string subfolder;
  };
  /// A file that has other names: its device and number, and the path of the first copy.
  using LinkedFiles = std::map<std::pair<dev_t, ino_t>, std::string>;

  void add(Task task);
  void startHelper();
  void work();
  void perform(const Task& task, FileCopier& copier);
  void startFolder(const Folder& parent, const std::string& name, FileCopier& copier);
  void readEntries(const std::shared_ptr<Folder>& folder);
  void release(Folder& folder);
  void copyEntry(const std::shared_ptr<Folder>& folder, const char* name, unsigned char type,
                 FileCopier& copier);
  void copyFile(const Folder& folder, const char* name, FileCopier& copier);
  void copyLinkedFile(const Folder& folder, const char* name, int source, const struct stat& status,
                      FileCopier& copier);
  void fillFile(const Folder& folder, const char* name, int source, const struct stat& status,
                FileCopier& copier);
  template <typename Operation>
  void located(const Folder& folder, const char* name, const Operation& operation);

  std::string _sourcePath;
  std::string _copyPath;
  PlaceRules _rules;
  /// The folder being filled, which must not be met again among what is copied.
  struct stat _rootStatus {};
  int _root = -1;
  off_t _smallestClone = FileCopier::defaultSmallestClone;
  WorkStack<Task> _tasks;
  /// Whether a second thread may still be started.
  bool _mayHaveHelper = true;
  std::thread _helper;
  std::mutex _linkedFilesMutex;
  LinkedFiles _linkedFiles;
};

}  // namespace quennel
