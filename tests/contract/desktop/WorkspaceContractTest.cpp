// What every workspace does, run on a bus with a file manager and an opener that take note, and on
// the fake.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "platform/linux/desktop/DesktopWorkspace.h"
#include "platform/values/URL.h"
#include "tests/support/CallLog.h"
#include "tests/support/Deadline.h"
#include "tests/support/FakeWorkspace.h"
#include "tests/support/FileManagerStandIn.h"
#include "tests/support/OpenerStandIn.h"
#include "tests/support/PrivateBus.h"

namespace quennel::test {
namespace {

using Paths = std::vector<std::string>;

class BusWorkspace {
 public:
  static bool isAvailable() { return PrivateBus::isAvailable(); }

  Workspace& get() { return _workspace; }
  bool eventually(const std::function<bool()>& condition) {
    return test::eventually([&] {
      _runLoop.serve();
      return condition();
    });
  }
  std::vector<Paths> revealed() const {
    std::vector<Paths> calls;
    for (const auto& uris : _fileManager.shown) {
      calls.emplace_back();
      for (const auto& uri : uris) {
        calls.back().push_back(URL::create(uri)->path());
      }
    }
    return calls;
  }
  Paths opened() const {
    Paths paths;
    std::istringstream lines(_opener.opened());
    for (std::string line; std::getline(lines, line);) {
      paths.push_back(line);
    }
    return paths;
  }
  void removeOpener() { _opener.remove(); }

 private:
  OpenerStandIn _opener;
  PrivateBus _private;
  EventRunLoop _runLoop;
  FileManagerStandIn _fileManager{_runLoop, _private.address(), FileManagerStandIn::Answer::Shown};
  SessionBus _bus{_runLoop, _private.address()};
  DesktopWorkspace _workspace{_runLoop, _bus};
};

class FakedWorkspace {
 public:
  static bool isAvailable() { return true; }

  Workspace& get() { return _workspace; }
  static bool eventually(const std::function<bool()>& condition) { return condition(); }
  const std::vector<Paths>& revealed() const { return _workspace.revealed; }
  const Paths& opened() const { return _workspace.opened; }
  void removeOpener() { _workspace.hasOpener = false; }

 private:
  CallLog _log;
  FakeWorkspace _workspace{_log};
};

template <typename Subject>
class WorkspaceContract : public testing::Test {
 protected:
  void SetUp() override {
    if (!Subject::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    _subject = std::make_unique<Subject>();
  }
  Workspace& workspace() { return _subject->get(); }
  bool eventuallyOpened(const Paths& paths) {
    return _subject->eventually([&] { return _subject->opened() == paths; });
  }
  bool eventuallyRevealed(const std::vector<Paths>& calls) {
    return _subject->eventually([&] { return _subject->revealed() == calls; });
  }

  std::unique_ptr<Subject> _subject;
};

using Subjects = testing::Types<BusWorkspace, FakedWorkspace>;
struct SubjectNames {
  template <typename Subject>
  static std::string GetName(int) {
    return std::is_same_v<Subject, FakedWorkspace> ? "Fake" : "Bus";
  }
};
TYPED_TEST_SUITE(WorkspaceContract, Subjects, SubjectNames);

TYPED_TEST(WorkspaceContract, ItemsAreRevealedTogether) {
  const Paths paths{"/d/a b.txt", "/d/100%?#.txt", "/d/caf\xe9"};
  this->workspace().activateFileViewerSelectingItems(paths);
  EXPECT_TRUE(this->eventuallyRevealed({paths}));
  EXPECT_EQ(this->_subject->opened(), Paths{});
}

TYPED_TEST(WorkspaceContract, EachCallRevealsInItsTurn) {
  this->workspace().activateFileViewerSelectingItems({"/d/one"});
  this->workspace().activateFileViewerSelectingItems({"/d/two"});
  EXPECT_TRUE(this->eventuallyRevealed({{"/d/one"}, {"/d/two"}}));
}

TYPED_TEST(WorkspaceContract, OfNoItemsNothingIsShown) {
  this->workspace().activateFileViewerSelectingItems({});
  this->workspace().activateFileViewerSelectingItems({"/d/after"});
  EXPECT_TRUE(this->eventuallyRevealed({{"/d/after"}}));
  EXPECT_EQ(this->_subject->opened(), Paths{});
}

TYPED_TEST(WorkspaceContract, AFileIsOpenedUnderItsOwnNameWhateverItsBytes) {
  EXPECT_TRUE(this->workspace().openFile("/d/a 'b' 100%?#caf\xe9"));
  EXPECT_TRUE(this->eventuallyOpened({"/d/a 'b' 100%?#caf\xe9"}));
  EXPECT_TRUE(this->_subject->revealed().empty());
}

TYPED_TEST(WorkspaceContract, WithoutAnOpenerAFileIsNotOpenedAndTheCallerKnows) {
  this->_subject->removeOpener();
  EXPECT_FALSE(this->workspace().openFile("/d/a"));
  EXPECT_EQ(this->_subject->opened(), Paths{});
}

TYPED_TEST(WorkspaceContract, AnyThreadMayNoteAChangeWhichShowsNothing) {
  std::thread([&] { this->workspace().noteFileSystemChanged("/d/a"); }).join();
  this->workspace().activateFileViewerSelectingItems({"/d/after"});
  EXPECT_TRUE(this->eventuallyRevealed({{"/d/after"}}));
  EXPECT_EQ(this->_subject->opened(), Paths{});
}

}  // namespace
}  // namespace quennel::test
