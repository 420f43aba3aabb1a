#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/linux/notifications/LocalNotificationCenter.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeKernelQueue.h"
#include "tests/support/FakeRunLoop.h"
#include "tests/support/FakeWorkspace.h"
#include "watch/VDKQueue.h"

namespace quennel::test {
namespace {

using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string renamed = "VDKQueueFileRenamedNotification";
const std::string writtenTo = "VDKQueueFileWrittenToNotification";
const std::string deleted = "VDKQueueFileDeletedNotification";
const std::string attributesChanged = "VDKQueueFileAttributesChangedNotification";
const std::string sizeIncreased = "VDKQueueFileSizeIncreasedNotification";
const std::string linkCountChanged = "VDKQueueLinkCountChangedNotification";
const std::string accessWasRevoked = "VDKQueueAccessWasRevokedNotification";

class RecordingWorkspace final : public FakeWorkspace {
 public:
  using FakeWorkspace::FakeWorkspace;

  std::vector<std::string> noted;
  std::function<void()> whileNoting = [] {};

  void noteFileSystemChanged(std::string_view path) override {
    noted.emplace_back(path);
    whileNoting();
  }
};

/// A watcher whose thread is started in name only: the test makes its passes.
class AVDKQueue : public ::testing::Test, protected VDKQueueDelegate {
 protected:
  AVDKQueue() {
    for (const auto& name : {renamed, writtenTo, deleted, attributesChanged, sizeIncreased,
                             linkCountChanged, accessWasRevoked}) {
      _observers.push_back(_center.addObserver(name, nullptr, [this](const auto& notification) {
        _happened.push_back("posted " + notification.name);
        _posted.push_back(notification);
      }));
    }
    _kernel.addFile("/file");
    _kernel.addFile("/other");
  }

  void receivedNotification(VDKQueue& queue, std::string_view notification,
                            std::string_view path) override {
    EXPECT_EQ(&queue, _watcher.get());
    EXPECT_EQ(path, "/file");
    _happened.push_back("told " + std::string(notification));
    _whileTold();
  }

  std::shared_ptr<VDKQueue> makeWatcher() {
    const auto startThread = [this](const VDKQueue::ThreadBody&) {
      ++_startedThreads;
      return _hasThreads;
    };
    return VDKQueue::create({_factory, _runLoop, _workspace, _center}, startThread);
  }

  /// One pass of the watcher's thread.
  void pass() { _watcher->watcherPass(_kernel, _names); }
  void passAndDeliver() {
    pass();
    _runLoop.runUntilIdle();
  }
  /// Something happened to "/file": a pass for it, and the delivery.
  void event(std::uint32_t notes) {
    _kernel.touch("/file", notes);
    passAndDeliver();
  }

  CallLog _log;
  FakeRunLoop _runLoop;
  RecordingWorkspace _workspace{_log};
  LocalNotificationCenter _center;
  FakeKernelQueueFactory _factory;
  FakeKernelQueue& _kernel = _factory.queue();
  int _startedThreads = 0;
  bool _hasThreads = true;
  std::vector<std::string> _happened;  // what was told and posted, in order
  std::vector<NotificationCenter::Notification> _posted;
  std::vector<std::unique_ptr<Registration>> _observers;
  std::function<void()> _whileTold = [] {};
  VDKQueue::Names _names;
  std::shared_ptr<VDKQueue> _watcher = makeWatcher();
};

// Making

TEST_F(AVDKQueue, IsNullWhenThereIsNoKernelQueue) {
  _factory.refuses = true;
  EXPECT_EQ(makeWatcher(), nullptr);
}

TEST_F(AVDKQueue, StartsWithoutDelegatePathsOrThread) {
  EXPECT_EQ(_watcher->delegate(), nullptr);
  EXPECT_FALSE(_watcher->alwaysPostNotifications());
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 0U);
  EXPECT_EQ(_startedThreads, 0);
}

// Adding

TEST_F(AVDKQueue, RegistersAPathForAllKinds) {
  _watcher->addPath("/file");
  ASSERT_EQ(_kernel.changes().size(), 1U);
  EXPECT_EQ(_kernel.changes()[0].fflags, 127U);
}

TEST_F(AVDKQueue, RegistersAPathForTheKindsAskedFor) {
  _watcher->addPath("/file", 35);
  ASSERT_EQ(_kernel.changes().size(), 1U);
  EXPECT_EQ(_kernel.changes()[0].fflags, 35U);
}

TEST_F(AVDKQueue, SubmitsACompleteChangeRecord) {
  const auto entry = _watcher->addPathToQueue("/file", 35);
  ASSERT_EQ(_kernel.changes().size(), 1U);
  const KernelEvent change = _kernel.changes()[0];
  EXPECT_EQ(change.ident, entry->watchedFD());
  EXPECT_EQ(change.filter, -4);
  EXPECT_EQ(change.flags, 0x25);
  EXPECT_EQ(change.fflags, 35U);
  EXPECT_EQ(change.data, 0);
  EXPECT_EQ(change.udata.lock(), entry);
  EXPECT_EQ(entry->path().view(), "/file");
  EXPECT_EQ(entry->subscriptionFlags(), 35U);
}

TEST_F(AVDKQueue, KeepsOneEntryWithTheFirstMaskWhenAPathIsAddedTwice) {
  _watcher->addPath("/file");
  _watcher->addPath("/file");
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 1U);
  EXPECT_EQ(_kernel.changes().size(), 1U);
}

TEST_F(AVDKQueue, ChangesNothingWhenAWatchedPathIsAddedWithMoreKinds) {
  const auto entry = _watcher->addPathToQueue("/file", 2);
  _watcher->addPath("/file", 3);
  _watcher->addPath("/file");
  EXPECT_EQ(_kernel.changes().size(), 1U);
  EXPECT_EQ(entry->subscriptionFlags(), 2U);
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 1U);
}

TEST_F(AVDKQueue, GivesTheExistingEntryForKindsThatAreCovered) {
  const auto entry = _watcher->addPathToQueue("/file", 35);
  EXPECT_EQ(_watcher->addPathToQueue("/file", 35), entry);
  EXPECT_EQ(_watcher->addPathToQueue("/file", 3), entry);
  EXPECT_EQ(_watcher->addPathToQueue("/file", 0), entry);
  EXPECT_EQ(_kernel.changes().size(), 1U);
}

TEST_F(AVDKQueue, RegistersTheUnionForNewKinds) {
  const auto entry = _watcher->addPathToQueue("/file", 3);
  EXPECT_EQ(_watcher->addPathToQueue("/file", 6), entry);
  ASSERT_EQ(_kernel.changes().size(), 2U);
  EXPECT_EQ(_kernel.changes()[1].ident, entry->watchedFD());
  EXPECT_EQ(_kernel.changes()[1].fflags, 7U);
  EXPECT_EQ(entry->subscriptionFlags(), 7U);
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 1U);
  EXPECT_EQ(_startedThreads, 1);
}

TEST_F(AVDKQueue, TakesTwoSpellingsOfOnePathForTwoPaths) {
  _kernel.addLink("/./file", "/file");
  _watcher->addPath("/file");
  _watcher->addPath("/./file");
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 2U);
}

TEST_F(AVDKQueue, DoesNothingForNoPath) {
  _watcher->addPath("/file");
  _watcher->addPath(std::nullopt);
  _watcher->addPath(std::nullopt, 35);
  _watcher->removePath(std::nullopt);
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 1U);
}

TEST_F(AVDKQueue, GivesNoEntryAndStartsNoThreadForAPathThatDoesNotExist) {
  EXPECT_EQ(_watcher->addPathToQueue("/missing", 35), nullptr);
  _watcher->addPath("/missing");
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 0U);
  EXPECT_TRUE(_kernel.changes().empty());
  EXPECT_EQ(_startedThreads, 0);
}

TEST_F(AVDKQueue, StartsItsThreadOnceWithTheFirstPathThatCanBeWatched) {
  _watcher->addPath("/missing");
  _watcher->addPath("/file");
  EXPECT_EQ(_startedThreads, 1);
  _watcher->addPath("/other");
  _watcher->removeAllPaths();
  _watcher->addPath("/file");
  EXPECT_EQ(_startedThreads, 1);
}

TEST_F(AVDKQueue, RegistersAPathBeforeItStartsItsThread) {
  std::size_t registered = 0;
  const auto startThread = [&](const VDKQueue::ThreadBody&) {
    registered = _kernel.changes().size();
    return true;
  };
  const auto watcher = VDKQueue::create({_factory, _runLoop, _workspace, _center}, startThread);
  watcher->addPath("/file");
  EXPECT_EQ(registered, 1U);
}

TEST_F(AVDKQueue, TriesAgainWithTheNextPathWhenThereWasNoThreadToBeHad) {
  _hasThreads = false;
  _watcher->addPath("/file");
  EXPECT_EQ(_startedThreads, 1);
  _hasThreads = true;
  _watcher->addPath("/other");
  EXPECT_EQ(_startedThreads, 2);
}

TEST_F(AVDKQueue, KeepsAnEntryWhoseRegistrationFails) {
  _kernel.refuseRegistrations(true);
  EXPECT_NE(_watcher->addPathToQueue("/file", 127), nullptr);
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 1U);
  EXPECT_EQ(_startedThreads, 1);
}

// Removing

TEST_F(AVDKQueue, ClosesTheDescriptorOfAPathThatIsRemovedAndSubmitsNothing) {
  _watcher->addPath("/file");
  _watcher->addPath("/other");
  _watcher->removePath("/file");
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 1U);
  EXPECT_EQ(_kernel.openDescriptorCount(), 1U);
  EXPECT_EQ(_kernel.changes().size(), 2U);
}

TEST_F(AVDKQueue, DoesNothingWhenAPathThatIsNotWatchedIsRemoved) {
  _watcher->addPath("/file");
  _watcher->removePath("/other");
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 1U);
}

TEST_F(AVDKQueue, RemovesAllPaths) {
  _watcher->addPath("/file");
  _watcher->addPath("/other");
  _watcher->removeAllPaths();
  EXPECT_EQ(_watcher->numberOfWatchedPaths(), 0U);
  EXPECT_EQ(_kernel.openDescriptorCount(), 0U);
}

TEST_F(AVDKQueue, WatchesAPathAnewAfterItWasRemoved) {
  _watcher->addPath("/file", 2);
  _watcher->removePath("/file");
  _watcher->addPath("/file", 1);
  ASSERT_EQ(_kernel.changes().size(), 2U);
  EXPECT_EQ(_kernel.changes()[1].fflags, 1U);
}

TEST_F(AVDKQueue, RemovesItsPathsAtItsEnd) {
  _watcher->addPath("/file");
  _watcher.reset();
  EXPECT_EQ(_kernel.openDescriptorCount(), 0U);
}

// Passes of the thread

TEST_F(AVDKQueue, WaitsASecondAtMost) {
  _kernel.answerNextWait(0);
  pass();
  EXPECT_THAT(_kernel.timeouts(), ElementsAre(seconds(1)));
}

TEST_F(AVDKQueue, TakesOneEventInAPass) {
  _watcher->addPath("/file");
  _watcher->addPath("/other");
  _kernel.touch("/file", NOTE_WRITE);
  _kernel.touch("/other", NOTE_WRITE);
  pass();
  EXPECT_THAT(_workspace.noted, ElementsAre("/file"));
  pass();
  EXPECT_THAT(_workspace.noted, ElementsAre("/file", "/other"));
}

TEST_F(AVDKQueue, DoesNothingWhenAWaitEndsWithoutAnEventOrFails) {
  _watcher->addPath("/file");
  for (const int result : {0, -1}) {
    _kernel.answerNextWait(result);
    pass();
  }
  EXPECT_EQ(_runLoop.pendingCount(), 0U);
  event(NOTE_WRITE);
  EXPECT_THAT(_happened, ElementsAre("posted " + writtenTo));
}

TEST_F(AVDKQueue, TellsTheWorkspaceOfAnEventBeforeItIsDelivered) {
  _watcher->addPath("/file");
  _kernel.touch("/file", NOTE_WRITE);
  _workspace.whileNoting = [this] { EXPECT_EQ(_runLoop.pendingCount(), 0U); };
  pass();
  EXPECT_THAT(_workspace.noted, ElementsAre("/file"));
  EXPECT_THAT(_happened, IsEmpty());
  _runLoop.runUntilIdle();
  EXPECT_THAT(_happened, ElementsAre("posted " + writtenTo));
}

TEST_F(AVDKQueue, TellsTheWorkspaceOfAnEventThatHasNoName) {
  const auto entry = _watcher->addPathToQueue("/file", 127);
  _kernel.deliver({entry->watchedFD(), EVFILT_VNODE, 0, 0x80, 0, entry});
  passAndDeliver();
  EXPECT_THAT(_workspace.noted, ElementsAre("/file"));
  EXPECT_THAT(_happened, IsEmpty());
}

TEST_F(AVDKQueue, DropsAnEventOfAnotherFilter) {
  const auto entry = _watcher->addPathToQueue("/file", 127);
  _kernel.deliver({entry->watchedFD(), -1, 0, NOTE_WRITE, 0, entry});
  pass();
  EXPECT_THAT(_workspace.noted, IsEmpty());
  EXPECT_EQ(_runLoop.pendingCount(), 0U);
}

TEST_F(AVDKQueue, DropsAnEventWithoutKinds) {
  const auto entry = _watcher->addPathToQueue("/file", 127);
  _kernel.deliver({entry->watchedFD(), EVFILT_VNODE, 0, 0, 0, entry});
  pass();
  EXPECT_THAT(_workspace.noted, IsEmpty());
  EXPECT_EQ(_runLoop.pendingCount(), 0U);
}

TEST_F(AVDKQueue, DropsAnEventWithoutAReference) {
  _kernel.deliver({0, EVFILT_VNODE, 0, NOTE_WRITE, 0, {}});
  pass();
  EXPECT_THAT(_workspace.noted, IsEmpty());
  EXPECT_EQ(_runLoop.pendingCount(), 0U);
}

TEST_F(AVDKQueue, DropsAnEventThatRefersToSomethingThatHasNoPath) {
  const auto other = std::make_shared<KernelEventTarget>();
  _kernel.deliver({0, EVFILT_VNODE, 0, NOTE_WRITE, 0, other});
  pass();
  const auto entry = _watcher->addPathToQueue("/file", 127);
  entry->setPath(SharedText());
  _kernel.deliver({0, EVFILT_VNODE, 0, NOTE_WRITE, 0, entry});
  pass();
  EXPECT_THAT(_workspace.noted, IsEmpty());
  EXPECT_EQ(_runLoop.pendingCount(), 0U);
}

TEST_F(AVDKQueue, DropsAnEventWhoseEntryIsGone) {
  _watcher->addPath("/file");
  KernelEvent event = _kernel.changes()[0];
  event.fflags = NOTE_WRITE;
  _watcher->removePath("/file");
  _kernel.deliver(event);
  pass();
  EXPECT_THAT(_workspace.noted, IsEmpty());
  EXPECT_EQ(_runLoop.pendingCount(), 0U);
}

TEST_F(AVDKQueue, KeepsAnEntryThatIsRemovedWhileItsEventIsHandledUntilThePassIsOver) {
  const std::weak_ptr<VDKQueuePathEntry> entry = _watcher->addPathToQueue("/file", 127);
  _workspace.whileNoting = [&] {
    _watcher->removePath("/file");
    EXPECT_EQ(_watcher->numberOfWatchedPaths(), 0U);
    EXPECT_FALSE(entry.expired());
  };
  event(NOTE_WRITE);
  EXPECT_TRUE(entry.expired());
  EXPECT_EQ(_kernel.openDescriptorCount(), 0U);
  EXPECT_THAT(_happened, ElementsAre("posted " + writtenTo));
}

TEST_F(AVDKQueue, DropsAnExceptionAndGoesOn) {
  _watcher->addPath("/file");
  _workspace.whileNoting = [] { throw std::runtime_error("no"); };
  event(NOTE_WRITE);
  EXPECT_THAT(_happened, IsEmpty());
  _workspace.whileNoting = [] {};
  event(NOTE_WRITE);
  EXPECT_THAT(_happened, ElementsAre("posted " + writtenTo));
}

TEST_F(AVDKQueue, DoesNotCatchWhatIsNoException) {
  _watcher->addPath("/file");
  _workspace.whileNoting = [] { throw 1; };
  _kernel.touch("/file", NOTE_WRITE);
  EXPECT_THROW(pass(), int);
}

// Names

TEST_F(AVDKQueue, NamesEveryKind) {
  const std::map<std::uint32_t, std::string> names{
      {0x20, renamed},           {0x02, writtenTo},     {0x01, deleted},
      {0x08, attributesChanged}, {0x04, sizeIncreased}, {0x10, linkCountChanged},
      {0x40, accessWasRevoked}};
  _watcher->addPath("/file");
  for (const auto& [note, name] : names) {
    _happened.clear();
    event(note);
    EXPECT_THAT(_happened, ElementsAre("posted " + name));
  }
}

TEST_F(AVDKQueue, TellsSeveralKindsOfOneEventInTheirOrder) {
  _watcher->addPath("/file");
  event(0xff);
  EXPECT_THAT(_happened,
              ElementsAre("posted " + renamed, "posted " + writtenTo, "posted " + deleted,
                          "posted " + attributesChanged, "posted " + sizeIncreased,
                          "posted " + linkCountChanged, "posted " + accessWasRevoked));
}

TEST_F(AVDKQueue, TellsAnExecutablesMaskRenamedWrittenToAndDeletedInThisOrder) {
  _watcher->addPath("/file", 35);
  event(127);
  EXPECT_THAT(_happened,
              ElementsAre("posted " + renamed, "posted " + writtenTo, "posted " + deleted));
}

// Delivery

TEST_F(AVDKQueue, TellsTheDelegateAndPostsNothing) {
  _watcher->addPath("/file");
  _watcher->setDelegate(this);
  event(NOTE_WRITE | NOTE_DELETE);
  EXPECT_THAT(_happened, ElementsAre("told " + writtenTo, "told " + deleted));
}

TEST_F(AVDKQueue, TellsTheDelegateFirstAndThenPostsEachNameWhenItAlwaysPosts) {
  _watcher->addPath("/file");
  _watcher->setDelegate(this);
  _watcher->setAlwaysPostNotifications(true);
  event(NOTE_WRITE | NOTE_DELETE);
  EXPECT_THAT(_happened, ElementsAre("told " + writtenTo, "posted " + writtenTo, "told " + deleted,
                                     "posted " + deleted));
}

TEST_F(AVDKQueue, PostsWithItselfAsTheObjectAndThePathAlone) {
  _watcher->addPath("/file");
  event(NOTE_WRITE);
  ASSERT_EQ(_posted.size(), 1U);
  EXPECT_EQ(_posted[0].object, _watcher.get());
  EXPECT_EQ(_posted[0].userInfo, (PropertyList::Dictionary{{"path", "/file"}}));
}

TEST_F(AVDKQueue, PostsWhenTheDelegateIsClearedBeforeTheDelivery) {
  _watcher->addPath("/file");
  _watcher->setDelegate(this);
  _kernel.touch("/file", NOTE_WRITE);
  pass();
  _watcher->setDelegate(nullptr);
  _runLoop.runUntilIdle();
  EXPECT_THAT(_happened, ElementsAre("posted " + writtenTo));
}

TEST_F(AVDKQueue, TellsADelegateThatIsSetBeforeTheDelivery) {
  _watcher->addPath("/file");
  _kernel.touch("/file", NOTE_WRITE);
  pass();
  _watcher->setDelegate(this);
  _runLoop.runUntilIdle();
  EXPECT_THAT(_happened, ElementsAre("told " + writtenTo));
}

TEST_F(AVDKQueue, PostsFromThereOnWhenTheDelegateIsClearedWhileItIsTold) {
  _watcher->addPath("/file");
  _watcher->setDelegate(this);
  _whileTold = [this] { _watcher->setDelegate(nullptr); };
  event(NOTE_WRITE | NOTE_DELETE);
  EXPECT_THAT(_happened,
              ElementsAre("told " + writtenTo, "posted " + writtenTo, "posted " + deleted));
}

TEST_F(AVDKQueue, DeliversAnEventThatCameBeforeItsPathWasRemoved) {
  _watcher->addPath("/file");
  _kernel.touch("/file", NOTE_WRITE);
  pass();
  _watcher->removeAllPaths();
  _runLoop.runUntilIdle();
  EXPECT_THAT(_happened, ElementsAre("posted " + writtenTo));
}

TEST_F(AVDKQueue, LivesUntilWhatIsQueuedIsDelivered) {
  _watcher->addPath("/file");
  _kernel.touch("/file", NOTE_WRITE);
  pass();
  const std::weak_ptr<VDKQueue> watcher = _watcher;
  _watcher.reset();
  EXPECT_FALSE(watcher.expired());
  _runLoop.runUntilIdle();
  EXPECT_TRUE(watcher.expired());
  EXPECT_THAT(_happened, ElementsAre("posted " + writtenTo));
}

TEST_F(AVDKQueue, GoesOnWatchingARenamedFileUnderTheOldPath) {
  _watcher->addPath("/file");
  _kernel.renameFile("/file", "/renamed");
  passAndDeliver();
  _kernel.touch("/renamed", NOTE_WRITE);
  passAndDeliver();
  ASSERT_EQ(_posted.size(), 2U);
  EXPECT_EQ(_posted[0].name, renamed);
  EXPECT_EQ(_posted[1].name, writtenTo);
  EXPECT_EQ(_posted[1].userInfo.at("path"), "/file");
}

}  // namespace
}  // namespace quennel::test
