#include <gtest/gtest.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "platform/linux/mounts/MountTableEvents.h"
#include "tests/support/FakeVolumeEvents.h"
#include "tests/support/RootCommands.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

/// A volume, and what tells of it.
class World {
 public:
  virtual ~World() = default;
  virtual std::string whyUnavailable() = 0;
  virtual VolumeEvents& events() = 0;
  virtual void mountVolume() = 0;
  virtual void unmountVolume() = 0;
  /// Runs what is queued until the condition holds; false when that takes too long.
  virtual bool runUntil(const std::function<bool()>& condition) = 0;
};

class FakeWorld : public World {
 public:
  std::string whyUnavailable() override { return {}; }
  VolumeEvents& events() override { return _events; }
  void mountVolume() override { _events.mountVolume(); }
  void unmountVolume() override { _events.unmountVolume(); }
  bool runUntil(const std::function<bool()>& condition) override { return condition(); }

 private:
  FakeVolumeEvents _events;
};

class MountTableWorld : public World {
 public:
  MountTableWorld() { settle(); }
  ~MountTableWorld() override { unmountAll(); }

  std::string whyUnavailable() override { return RootCommands::whyUnavailable(); }
  VolumeEvents& events() override { return _events; }
  void mountVolume() override {
    const std::string point = _folder / std::to_string(_count++);
    std::filesystem::create_directory(point);
    ASSERT_TRUE(RootCommands::run("mount -t tmpfs none " + point));
  }
  void unmountVolume() override {
    ASSERT_TRUE(RootCommands::run("umount " + (_folder / std::to_string(--_count))));
  }
  bool runUntil(const std::function<bool()>& condition) override {
    // Shared with the work on the queue, which this call does not wait for.
    const auto late = std::make_shared<bool>(false);
    _runLoop.dispatchAfter(std::chrono::seconds(10), [late] { *late = true; });
    return _runLoop.runUntil([&] { return *late || condition(); }) && !*late;
  }

  /// Lets the events take their first look.
  void settle() {
    bool settled = false;
    _runLoop.dispatchAfter(std::chrono::milliseconds(1), [&] { settled = true; });
    _runLoop.runUntil([&] { return settled; });
  }

 private:
  void unmountAll() {
    while (_count > 0) {
      RootCommands::run("umount " + (_folder / std::to_string(--_count)));
    }
  }

  TemporaryDirectory _folder;
  int _count = 0;
  EventRunLoop _runLoop;
  MountTableEvents _events{_runLoop};
};

template <typename AnyWorld>
class VolumeEventsContract : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const auto why = _world.whyUnavailable(); !why.empty()) {
      GTEST_SKIP() << why;
    }
    _observer = _world.events().addObserver([this] { ++mounts; }, [this] { ++unmounts; });
  }

  AnyWorld _world;
  int mounts = 0;
  int unmounts = 0;
  std::unique_ptr<Registration> _observer;
};

using Worlds = ::testing::Types<FakeWorld, MountTableWorld>;
class WorldNames {
 public:
  template <typename AnyWorld>
  static std::string GetName(int index) {
    return index == 0 ? "Fake" : "MountTable";
  }
};
TYPED_TEST_SUITE(VolumeEventsContract, Worlds, WorldNames);

TYPED_TEST(VolumeEventsContract, TellOfAVolumeThatWasMounted) {
  this->_world.mountVolume();
  EXPECT_TRUE(this->_world.runUntil([this] { return this->mounts == 1; }));
  EXPECT_EQ(this->unmounts, 0);
}

TYPED_TEST(VolumeEventsContract, TellOfAVolumeThatWasUnmounted) {
  this->_world.mountVolume();
  ASSERT_TRUE(this->_world.runUntil([this] { return this->mounts == 1; }));
  this->_world.unmountVolume();
  EXPECT_TRUE(this->_world.runUntil([this] { return this->unmounts == 1; }));
  EXPECT_EQ(this->mounts, 1);
}

TYPED_TEST(VolumeEventsContract, TellOfEveryVolume) {
  for (int count = 1; count <= 5; ++count) {
    this->_world.mountVolume();
    EXPECT_TRUE(this->_world.runUntil([&] { return this->mounts == count; })) << count;
  }
  for (int count = 1; count <= 5; ++count) {
    this->_world.unmountVolume();
    EXPECT_TRUE(this->_world.runUntil([&] { return this->unmounts == count; })) << count;
  }
}

TYPED_TEST(VolumeEventsContract, TellOfVolumesThatComeTogetherAtLeastOnce) {
  this->_world.mountVolume();
  this->_world.mountVolume();
  EXPECT_TRUE(this->_world.runUntil([this] { return this->mounts >= 1; }));
  EXPECT_LE(this->mounts, 2);
  EXPECT_EQ(this->unmounts, 0);
}

TYPED_TEST(VolumeEventsContract, TellAllObservers) {
  int otherMounts = 0;
  const auto other = this->_world.events().addObserver([&] { ++otherMounts; }, [] {});
  this->_world.mountVolume();
  EXPECT_TRUE(this->_world.runUntil([&] { return this->mounts == 1 && otherMounts == 1; }));
}

TYPED_TEST(VolumeEventsContract, TellNobodyWhoDoesNotWantToKnowAnyMore) {
  int otherMounts = 0;
  auto other = this->_world.events().addObserver([&] { ++otherMounts; }, [] {});
  other.reset();
  this->_world.mountVolume();
  EXPECT_TRUE(this->_world.runUntil([this] { return this->mounts == 1; }));
  EXPECT_EQ(otherMounts, 0);
}

TYPED_TEST(VolumeEventsContract, BearARegistrationThatEndsInItsOwnCall) {
  std::unique_ptr<Registration> other;
  int otherMounts = 0;
  other = this->_world.events().addObserver(
      [&] {
        ++otherMounts;
        other.reset();
      },
      [] {});
  this->_world.mountVolume();
  this->_world.mountVolume();
  EXPECT_TRUE(this->_world.runUntil([&] { return this->mounts >= 1 && otherMounts == 1; }));
}

// A helper that is just starting has not seen the table yet.

class MountTableAtTheStart : public ::testing::Test {
 protected:
  void SetUp() override {
    if (const auto why = RootCommands::whyUnavailable(); !why.empty()) {
      GTEST_SKIP() << why;
    }
  }
  void TearDown() override { RootCommands::run("umount " + _folder.path()); }

  TemporaryDirectory _folder;
};

TEST_F(MountTableAtTheStart, MissesNoVolumeThatComesBeforeTheFirstLook) {
  EventRunLoop runLoop;
  MountTableEvents events(runLoop);
  bool mounted = false;
  bool late = false;
  const auto observer = events.addObserver([&] { mounted = true; }, [] {});
  ASSERT_TRUE(RootCommands::run("mount -t tmpfs none " + _folder.path()));
  runLoop.dispatchAfter(std::chrono::seconds(10), [&] { late = true; });
  runLoop.runUntil([&] { return mounted || late; });
  EXPECT_TRUE(mounted);
}

}  // namespace
}  // namespace quennel::test
