#pragma once

#include <string>
#include <vector>

#include "platform/Workspace.h"
#include "tests/support/CallLog.h"

namespace quennel::test {

/// Records what was revealed and opened, also in the log that the fakes of one test share.
class FakeWorkspace : public Workspace {
 public:
  explicit FakeWorkspace(CallLog& log) : _log(log) {}

  std::vector<std::vector<std::string>> revealed;
  std::vector<std::string> opened;
  /// Whether there is a program that opens files.
  bool hasOpener = true;

  void activateFileViewerSelectingItems(const std::vector<std::string>& paths) override {
    if (paths.empty()) {
      return;
    }
    revealed.push_back(paths);
    _log.add("reveal");
  }
  bool openFile(const std::string& path) override {
    if (!hasOpener) {
      return false;
    }
    opened.push_back(path);
    _log.add("open");
    return true;
  }

 private:
  CallLog& _log;
};

}  // namespace quennel::test
