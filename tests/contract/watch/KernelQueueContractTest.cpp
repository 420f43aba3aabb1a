#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/KernelQueue.h"
#include "platform/linux/watch/InotifyKernelQueueFactory.h"
#include "tests/support/Deadline.h"
#include "tests/support/FakeKernelQueue.h"
#include "tests/support/Sentence.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

/// Queues and files that they watch.
class World {
 public:
  virtual ~World() = default;
  virtual KernelQueueFactory& queues() = 0;
  virtual void endFactory() = 0;
  virtual std::string folder() = 0;
  virtual void addFile(const std::string& path) = 0;
  virtual void append(const std::string& path) = 0;
  virtual void changeMode(const std::string& path) = 0;
  virtual void addLink(const std::string& path, const std::string& existing) = 0;
  virtual void rename(const std::string& path, const std::string& newPath) = 0;
  virtual void remove(const std::string& path) = 0;
};

class FakeWorld : public World {
 public:
  KernelQueueFactory& queues() override { return *_queues; }
  void endFactory() override { _queues.reset(); }
  std::string folder() override { return "/files"; }
  void addFile(const std::string& path) override { _queue.addFile(path); }
  void append(const std::string& path) override { _queue.touch(path, NOTE_WRITE | NOTE_EXTEND); }
  void changeMode(const std::string& path) override { _queue.touch(path, NOTE_ATTRIB); }
  void addLink(const std::string& path, const std::string& existing) override {
    _queue.addLink(path, existing);
  }
  void rename(const std::string& path, const std::string& newPath) override {
    _queue.renameFile(path, newPath);
  }
  void remove(const std::string& path) override { _queue.removeFile(path); }

 private:
  std::unique_ptr<FakeKernelQueueFactory> _queues = std::make_unique<FakeKernelQueueFactory>();
  FakeKernelQueue& _queue = _queues->queue();
};

class LinuxWorld : public World {
 public:
  KernelQueueFactory& queues() override { return *_queues; }
  void endFactory() override { _queues.reset(); }
  std::string folder() override { return _folder.path(); }
  void addFile(const std::string& path) override { std::ofstream(path) << "text"; }
  void append(const std::string& path) override { std::ofstream(path, std::ios::app) << "more"; }
  void changeMode(const std::string& path) override {
    std::filesystem::permissions(path, std::filesystem::perms::others_exec,
                                 std::filesystem::perm_options::add);
  }
  void addLink(const std::string& path, const std::string& existing) override {
    std::filesystem::create_hard_link(existing, path);
  }
  void rename(const std::string& path, const std::string& newPath) override {
    std::filesystem::rename(path, newPath);
  }
  void remove(const std::string& path) override { std::filesystem::remove(path); }

 private:
  TemporaryDirectory _folder;
  std::unique_ptr<KernelQueueFactory> _queues = std::make_unique<InotifyKernelQueueFactory>();
};

std::unique_ptr<World> makeWorld(const std::string& name) {
  if (name == "fake") {
    return std::make_unique<FakeWorld>();
  }
  return std::make_unique<LinuxWorld>();
}

class KernelQueueContract : public ::testing::TestWithParam<const char*> {
 protected:
  using Happened = std::pair<int, std::uint32_t>;
  struct Target : KernelEventTarget {};

  std::string at(const std::string& name) { return _world->folder() + "/" + name; }
  void addFile(const std::string& name) { _world->addFile(at(name)); }
  void append(const std::string& name) { _world->append(at(name)); }
  void rename(const std::string& name, const std::string& newName) {
    _world->rename(at(name), at(newName));
  }

  int open(const std::string& name) { return _queue->open(SharedText(at(name))); }
  KernelEvent registration(int descriptor, std::uint32_t notes) {
    return {descriptor, EVFILT_VNODE, EV_ADD | EV_ENABLE | EV_CLEAR, notes, 0, _target};
  }
  /// A descriptor on the file that is registered for those kinds.
  int watch(const std::string& name, std::uint32_t notes = 0x7f) {
    const int descriptor = open(name);
    EXPECT_EQ(_queue->kevent(registration(descriptor, notes)), 0);
    return descriptor;
  }

  /// All events that there are now, as descriptors and kinds.
  std::vector<Happened> happened() {
    std::vector<Happened> all;
    KernelEvent event;
    while (_queue->kevent(event, seconds(0)) > 0) {
      all.emplace_back(event.ident, event.fflags);
    }
    return all;
  }

  std::unique_ptr<World> _world = makeWorld(GetParam());
  std::shared_ptr<KernelQueue> _queue = _world->queues().kqueue();
  std::shared_ptr<Target> _target = std::make_shared<Target>();
};

INSTANTIATE_TEST_SUITE_P(Worlds, KernelQueueContract, ::testing::Values("fake", "inotify"),
                         [](const auto& suite) { return suite.param; });

TEST_P(KernelQueueContract, AMissingPathCannotBeOpened) {
  Error error;
  EXPECT_EQ(_queue->open(SharedText(at("missing")), &error), -1);
  EXPECT_EQ(error.code, ENOENT);
  EXPECT_FALSE(sentenceOf(error).empty());
}

TEST_P(KernelQueueContract, AnEventCarriesFilterDescriptorKindsAndReference) {
  addFile("file");
  const int descriptor = watch("file");
  append("file");

  KernelEvent event;
  ASSERT_EQ(_queue->kevent(event, seconds(0)), 1);
  EXPECT_EQ(event.ident, descriptor);
  EXPECT_EQ(event.filter, EVFILT_VNODE);
  EXPECT_EQ(event.fflags, NOTE_WRITE | NOTE_EXTEND);
  EXPECT_EQ(event.udata.lock(), _target);
}

TEST_P(KernelQueueContract, TheReferenceDoesNotOwn) {
  addFile("file");
  watch("file");
  append("file");
  _target.reset();

  KernelEvent event;
  ASSERT_EQ(_queue->kevent(event, seconds(0)), 1);
  EXPECT_EQ(event.udata.lock(), nullptr);
}

TEST_P(KernelQueueContract, AnEventIsReturnedOnce) {
  addFile("file");
  const int descriptor = watch("file");
  append("file");
  EXPECT_EQ(happened().size(), 1U);
  EXPECT_THAT(happened(), IsEmpty());

  _world->changeMode(at("file"));
  EXPECT_THAT(happened(), ElementsAre(Happened(descriptor, NOTE_ATTRIB)));
}

TEST_P(KernelQueueContract, WhatHappensBetweenTwoWaitsComesAsOneEvent) {
  addFile("file");
  const int descriptor = watch("file");
  append("file");
  _world->changeMode(at("file"));
  append("file");
  EXPECT_THAT(happened(),
              ElementsAre(Happened(descriptor, NOTE_WRITE | NOTE_EXTEND | NOTE_ATTRIB)));
}

TEST_P(KernelQueueContract, OneWaitReturnsOneEventAndTheNextTheNext) {
  addFile("first");
  addFile("second");
  const int first = watch("first", NOTE_WRITE);
  const int second = watch("second", NOTE_WRITE);
  append("second");
  append("first");
  EXPECT_THAT(happened(), ElementsAre(Happened(second, NOTE_WRITE), Happened(first, NOTE_WRITE)));
}

TEST_P(KernelQueueContract, OnlyTheKindsOfTheMaskAreDelivered) {
  addFile("file");
  const int descriptor = watch("file", NOTE_EXTEND);
  _world->changeMode(at("file"));
  EXPECT_THAT(happened(), IsEmpty());
  append("file");
  EXPECT_THAT(happened(), ElementsAre(Happened(descriptor, NOTE_EXTEND)));
}

TEST_P(KernelQueueContract, ASecondAddReplacesTheMask) {
  addFile("file");
  const int descriptor = watch("file", NOTE_WRITE);
  EXPECT_EQ(_queue->kevent(registration(descriptor, NOTE_ATTRIB)), 0);
  append("file");
  EXPECT_THAT(happened(), IsEmpty());
  _world->changeMode(at("file"));
  EXPECT_THAT(happened(), ElementsAre(Happened(descriptor, NOTE_ATTRIB)));
}

TEST_P(KernelQueueContract, ASecondAddTakesBackKindsThatHaveFiredAndAreNotWantedAnyMore) {
  addFile("file");
  const int descriptor = watch("file");
  append("file");
  _world->changeMode(at("file"));
  EXPECT_EQ(_queue->kevent(registration(descriptor, NOTE_ATTRIB)), 0);
  for (const auto& [ident, notes] : happened()) {
    EXPECT_EQ(notes, NOTE_ATTRIB);
  }
}

TEST_P(KernelQueueContract, ASecondAddReplacesTheReference) {
  addFile("file");
  const int descriptor = watch("file");
  _target = std::make_shared<Target>();
  EXPECT_EQ(_queue->kevent(registration(descriptor, NOTE_WRITE)), 0);
  append("file");

  KernelEvent event;
  ASSERT_EQ(_queue->kevent(event, seconds(0)), 1);
  EXPECT_EQ(event.udata.lock(), _target);
}

TEST_P(KernelQueueContract, ADescriptorThatIsNotRegisteredGivesNoEvents) {
  addFile("file");
  EXPECT_GE(open("file"), 0);
  append("file");
  EXPECT_THAT(happened(), IsEmpty());
}

TEST_P(KernelQueueContract, ARecordThatAsksForSomethingElseIsRefused) {
  addFile("file");
  const int descriptor = open("file");
  KernelEvent otherFilter = registration(descriptor, NOTE_WRITE);
  otherFilter.filter = -1;
  EXPECT_EQ(_queue->kevent(otherFilter), -1);
  KernelEvent noAdd = registration(descriptor, NOTE_WRITE);
  noAdd.flags = EV_CLEAR;
  EXPECT_EQ(_queue->kevent(noAdd), -1);
  EXPECT_EQ(_queue->kevent(registration(descriptor + 1, NOTE_WRITE)), -1);
  EXPECT_EQ(_queue->kevent(registration(-1, NOTE_WRITE)), -1);
  append("file");
  EXPECT_THAT(happened(), IsEmpty());
}

TEST_P(KernelQueueContract, TwoDescriptorsOnOneFileBothGetItsEvents) {
  addFile("file");
  _world->addLink(at("link"), at("file"));
  const int one = watch("file");
  const int two = watch("file", NOTE_WRITE);
  const int three = watch("link", NOTE_EXTEND);
  append("file");
  EXPECT_THAT(happened(),
              UnorderedElementsAre(Happened(one, NOTE_WRITE | NOTE_EXTEND),
                                   Happened(two, NOTE_WRITE), Happened(three, NOTE_EXTEND)));
}

TEST_P(KernelQueueContract, ClosingOneOfTwoDescriptorsOnAFileLeavesTheOther) {
  addFile("file");
  const int one = watch("file");
  const int two = watch("file", NOTE_WRITE);
  _queue->close(one);
  append("file");
  EXPECT_THAT(happened(), ElementsAre(Happened(two, NOTE_WRITE)));
}

TEST_P(KernelQueueContract, ClosingTakesBackEventsThatWereNotReturned) {
  addFile("file");
  addFile("other");
  const int descriptor = watch("file");
  const int other = watch("other", NOTE_WRITE);
  append("other");
  append("file");
  KernelEvent event;
  ASSERT_EQ(_queue->kevent(event, seconds(0)), 1);
  ASSERT_EQ(event.ident, other);
  _queue->close(descriptor);
  EXPECT_THAT(happened(), IsEmpty());
}

TEST_P(KernelQueueContract, AReusedNumberGetsNoEventsOfTheDescriptorBefore) {
  addFile("old");
  addFile("new");
  const int before = watch("old");
  append("old");
  _queue->close(before);
  const int after = watch("new", NOTE_WRITE);
  EXPECT_EQ(after, before);
  append("old");
  EXPECT_THAT(happened(), IsEmpty());
  append("new");
  EXPECT_THAT(happened(), ElementsAre(Happened(after, NOTE_WRITE)));
}

TEST_P(KernelQueueContract, ADescriptorGetsNoEventsFromBeforeItWasRegistered) {
  addFile("file");
  const int early = watch("file", NOTE_WRITE);
  append("file");
  const int late = watch("file");
  EXPECT_THAT(happened(), ElementsAre(Happened(early, NOTE_WRITE)));
  append("file");
  EXPECT_THAT(happened(), UnorderedElementsAre(Happened(early, NOTE_WRITE),
                                               Happened(late, NOTE_WRITE | NOTE_EXTEND)));
}

TEST_P(KernelQueueContract, ARenamedFileIsStillWatchedUnderItsDescriptor) {
  addFile("file");
  const int descriptor = watch("file");
  rename("file", "renamed");
  EXPECT_THAT(happened(), ElementsAre(Happened(descriptor, NOTE_RENAME)));
  append("renamed");
  EXPECT_THAT(happened(), ElementsAre(Happened(descriptor, NOTE_WRITE | NOTE_EXTEND)));
}

TEST_P(KernelQueueContract, TheFileThatReplacesAWatchedOneIsNotWatched) {
  addFile("file");
  addFile("new");
  const int descriptor = watch("file");
  rename("new", "file");
  EXPECT_THAT(happened(), ElementsAre(Happened(descriptor, NOTE_DELETE | NOTE_LINK)));
  append("file");
  _world->remove(at("file"));
  EXPECT_THAT(happened(), IsEmpty());
}

TEST_P(KernelQueueContract, ADeletedFileGivesOneEvent) {
  addFile("file");
  const int descriptor = watch("file");
  _world->remove(at("file"));
  EXPECT_THAT(happened(), ElementsAre(Happened(descriptor, NOTE_DELETE | NOTE_LINK)));
  addFile("file");
  append("file");
  EXPECT_THAT(happened(), IsEmpty());
}

TEST_P(KernelQueueContract, ClosingTheDescriptorOfADeletedFileLeavesTheOthers) {
  addFile("file");
  addFile("other");
  const int descriptor = watch("file");
  const int other = watch("other", NOTE_WRITE);
  _world->remove(at("file"));
  EXPECT_EQ(happened().size(), 1U);
  _queue->close(descriptor);
  append("other");
  EXPECT_THAT(happened(), ElementsAre(Happened(other, NOTE_WRITE)));
}

TEST_P(KernelQueueContract, AWaitWithoutEventsEndsWithItsTimeout) {
  KernelEvent event;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(_queue->kevent(event, milliseconds(30)), 0);
  EXPECT_GE(std::chrono::steady_clock::now() - start, milliseconds(30));
}

TEST_P(KernelQueueContract, AWaitEndsWithAnEventOfAFileThatWasAddedMeanwhile) {
  auto waited = std::async(std::launch::async, [this] {
    KernelEvent event;
    return std::pair(_queue->kevent(event, Deadline::standard), event.ident);
  });
  addFile("file");
  const int descriptor = watch("file");
  append("file");
  EXPECT_EQ(waited.get(), std::pair(1, descriptor));
}

TEST_P(KernelQueueContract, AQueueMayGoWithDescriptorsOpen) {
  addFile("file");
  watch("file");
  append("file");
  _queue.reset();
  _world->addFile(at("other"));
  EXPECT_NE(_world->queues().kqueue(), nullptr);
}

TEST_P(KernelQueueContract, AWaitDoesNotReturnOnceTheFactoryIsGone) {
  const auto isBack = std::make_shared<std::atomic<bool>>(false);
  std::thread([queue = _queue, isBack] {
    KernelEvent event;
    static_cast<void>(queue->kevent(event, Deadline::standard));
    *isBack = true;
  }).detach();
  addFile("file");
  watch("file");
  _world->endFactory();
  append("file");
  std::this_thread::sleep_for(milliseconds(50));
  EXPECT_FALSE(*isBack);
}

TEST_P(KernelQueueContract, TheEndOfTheFactoryWaitsForTheThreadThatHasAnEvent) {
  addFile("file");
  watch("file");
  const auto isDone = std::make_shared<std::atomic<bool>>(false);
  const auto hasEvent = std::make_shared<std::promise<void>>();
  std::thread([queue = _queue, isDone, hasEvent] {
    KernelEvent event;
    EXPECT_EQ(queue->kevent(event, Deadline::standard), 1);
    hasEvent->set_value();
    std::this_thread::sleep_for(milliseconds(50));
    *isDone = true;
    static_cast<void>(queue->kevent(event, Deadline::standard));
  }).detach();
  append("file");
  hasEvent->get_future().wait();
  _world->endFactory();
  EXPECT_TRUE(*isDone);
}

}  // namespace
}  // namespace quennel::test
