#pragma once

#include <string>

#include "bench/request/Requester.h"
#include "platform/linux/base/FileDescriptor.h"

namespace quennel::bench {

/// Fresh folders to make files in, one for each request, so that no service ever meets the files
/// that were made before.
class TargetFolders {
 public:
  explicit TargetFolders(std::string parent) : _parent(std::move(parent)) {}
  std::string make();

 private:
  std::string _parent;
  int _count = 0;
};

/// Readable once a file has appeared in the folder.
class FolderWatch {
 public:
  explicit FolderWatch(const std::string& folder);
  int descriptor() const { return _inotify.get(); }

 private:
  FileDescriptor _inotify;
};

/// What one process holds of the memory, in kB.
struct Memory {
  double proportional;
  double resident;
  double private_;
};

/// One of the two that are compared: the helper, or the program that does the same bare.
class Service {
 public:
  Service(std::string name, Requester& requester, TargetFolders& folders)
      : _name(std::move(name)), _requester(requester), _folders(folders) {}

  /// The time from sending a request until the file exists, in milliseconds. Starts the service
  /// when it does not run.
  double requestToFile();

  /// How many requests a second it serves when they come as fast as they can be sent.
  double requestsPerSecond(int count);

  Memory memory();

  /// How often it woke up in that many seconds without requests.
  double wakeUpsWithin(int seconds);

  /// Ends it and waits until it is gone. Answers whether it is.
  bool stop();

 private:
  int runningProcess();

  std::string _name;
  Requester& _requester;
  TargetFolders& _folders;
};

}  // namespace quennel::bench
