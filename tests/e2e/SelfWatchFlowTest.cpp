#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/HelperTest.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;

/// The helper in a prefix of its own, serving, with the program of the next version beside it.
class SelfWatchFlow : public HelperTest {
 protected:
  void SetUp() override {
    HelperTest::SetUp();
    if (IsSkipped()) {
      return;
    }
    std::filesystem::create_directories(_root / "prefix/bin");
    std::filesystem::copy(QUENNEL_HELPER, _executable);
    std::filesystem::copy(QUENNEL_HELPER, _next);
    _helper.emplace(std::vector{_executable}, environment());
    ASSERT_TRUE(eventually([&] { return ownsName(); }));
    serve();
  }

  /// What was asked for before is done once this is.
  void serve() {
    const auto before = countEntries(folder());
    open({requestFor(folder(), "0")});
    ASSERT_TRUE(eventually([&] { return countEntries(folder()) > before; }));
  }
  void run(const std::vector<std::string>& command) { ASSERT_EQ(Process(command).wait(), 0); }
  void expectToLeaveWithinASecond() {
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(_helper->wait(), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
  }

  const std::string _executable = _root / "prefix/bin/quennelhelper";
  const std::string _next = _root / "next";
  std::optional<Process> _helper;
};

TEST_F(SelfWatchFlow, AnExecutableReplacedByInstallEndsTheHelper) {
  run({"install", "-m", "755", _next, _executable});
  expectToLeaveWithinASecond();
}

TEST_F(SelfWatchFlow, AnExecutableReplacedByARenameAsPackagesDoEndsTheHelper) {
  run({"mv", "-f", _next, _executable});
  expectToLeaveWithinASecond();
}

TEST_F(SelfWatchFlow, AnExecutableReplacedByACopyEndsTheHelper) {
  run({"cp", "--remove-destination", _next, _executable});
  expectToLeaveWithinASecond();
}

TEST_F(SelfWatchFlow, ADeletedExecutableEndsTheHelper) {
  run({"rm", _executable});
  expectToLeaveWithinASecond();
}

TEST_F(SelfWatchFlow, ARenamedExecutableEndsTheHelper) {
  run({"mv", _executable, _executable + ".old"});
  expectToLeaveWithinASecond();
}

TEST_F(SelfWatchFlow, AMovedPrefixEndsTheHelper) {
  run({"mv", _root / "prefix", _root / "moved"});
  expectToLeaveWithinASecond();
}

TEST_F(SelfWatchFlow, OtherChangesAroundTheExecutableLeaveTheHelperServing) {
  run({"chmod", "700", _executable});
  run({"touch", _executable});
  run({"cp", _next, _root / "prefix/bin/other"});
  run({"mv", _root / "prefix/bin/other", _root / "prefix/bin/another"});
  run({"rm", _root / "prefix/bin/another"});
  serve();
  EXPECT_TRUE(_helper->isRunning());
}

}  // namespace
}  // namespace quennel::test
