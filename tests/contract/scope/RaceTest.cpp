#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdio.h>
#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <tuple>

#include "tests/contract/scope/VolumeTest.h"

namespace quennel::test {
namespace {

constexpr int swaps = 10'000;
constexpr int leastRounds = 200;

/// While the helper works in a folder of a grant, another thread swaps that folder again and again
/// for a link that leads outside.
class Race : public VolumeTest, public ::testing::WithParamInterface<std::tuple<Filesystem, int>> {
 protected:
  void SetUp() override {
    const auto [filesystem, landlockVersion] = GetParam();
    if (const auto why = Volume::whyUnavailable(filesystem); !why.empty()) {
      GTEST_SKIP() << Volume::nameOf(filesystem) << ": " << why;
    }
    mountFresh(filesystem);
    makeFolder(place);
    makeFolder(outside);
    std::filesystem::create_directory_symlink(outside, granted + "/link");
    writeFile(place + "/victim", "inside");
    writeFile(outside + "/victim", "outside");
    chmod((outside + "/victim").c_str(), 0640);
    writeFile(templateFile, "template");
    scope = newScope(landlockVersion);
    grant(granted);
  }

  void TearDown() override { stopSwapping(); }

  void startSwapping() {
    _swapper = std::thread([this] {
      for (int count = 0; count < swaps || !_enough; ++count) {
        if (renameat2(AT_FDCWD, place.c_str(), AT_FDCWD, (granted + "/link").c_str(),
                      RENAME_EXCHANGE) != 0) {
          _failed = true;
        }
      }
      _done = true;
    });
  }

  void stopSwapping() {
    _enough = true;
    if (_swapper.joinable()) {
      _swapper.join();
    }
  }

  bool isSwapping() const { return !_done; }

  const std::string granted = volume + "/granted";
  const std::string place = granted + "/place";
  const std::string outside = volume + "/outside";
  const std::string templateFile = temporary / "template";
  std::atomic<bool> _failed = false;
  std::atomic<bool> _enough = false;

 private:
  std::atomic<bool> _done = false;
  std::thread _swapper;
};

TEST_P(Race, NeverCarriesAChangeOutOfTheGrant) {
  ConfinedFileManager confined(posixFiles, *scope);
  FileManager& files = confined;
  FileAttributes attributes;
  attributes.posixPermissions = 0600;
  int made = 0;
  int set = 0;
  startSwapping();
  for (int round = 0; isSwapping(); ++round) {
    const std::string name = place + "/" + std::to_string(round % 50);
    made += files.copyItemAtPath(templateFile, name) ? 1 : 0;
    set += files.setAttributes(attributes, place + "/victim") ? 1 : 0;
    files.removeItemAtPath(name);
    files.createDirectoryAtPath(place + "/a/b", true);
    files.removeItemAtPath(place + "/a");
    _enough = round >= leastRounds && made > 0 && set > 0;
  }
  EXPECT_FALSE(_failed);
  EXPECT_GT(made, 0);
  EXPECT_GT(set, 0);
  EXPECT_EQ(contentsOf(outside + "/victim"), "outside");
  EXPECT_EQ(modeOf(outside + "/victim"), 0640U);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(outside), {}), 1);
}

std::string nameOfParameters(const ::testing::TestParamInfo<std::tuple<Filesystem, int>>& info) {
  return std::string(Volume::nameOf(std::get<0>(info.param))) +
         (std::get<1>(info.param) == 0 ? "_without_landlock" : "");
}

INSTANTIATE_TEST_SUITE_P(On, Race,
                         ::testing::Combine(::testing::Values(Filesystem::Ext4, Filesystem::Xfs,
                                                              Filesystem::Btrfs, Filesystem::Tmpfs,
                                                              Filesystem::Overlay),
                                            ::testing::Values(99, 0)),
                         nameOfParameters);

}  // namespace
}  // namespace quennel::test
