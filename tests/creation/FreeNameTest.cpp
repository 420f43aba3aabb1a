#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <random>
#include <string>

#include "creation/FreeName.h"
#include "platform/linux/files/PosixFileManager.h"
#include "platform/values/Path.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeFileManager.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

/// The search as it is meant, one name after the other.
std::string plainSearch(const FileManager& files, const std::string& path) {
  const std::string base = deletingPathExtension(lastPathComponent(path));
  const std::string extension = pathExtension(path);
  for (int number = 1;; ++number) {
    const std::string name = base + "-" + std::to_string(number);
    const std::string candidate =
        appendingPathComponent(deletingLastPathComponent(path),
                               extension.empty() ? name : appendingPathExtension(name, extension));
    if (!files.fileExistsAtPath(candidate)) {
      return candidate;
    }
  }
}

class FreeNames : public ::testing::Test {
 protected:
  void take(const std::string& start, int first, int last, const std::string& end) {
    for (int number = first; number <= last; ++number) {
      files.addFile(start + std::to_string(number) + end);
    }
  }
  std::string find(const std::string& path) { return FreeName(files, path).find(); }

  CallLog log;
  FakeFileManager files{log};
};

TEST_F(FreeNames, TheLowestFreeNumberIsTakenAlsoFromAGap) {
  take("/d/a-", 1, 40, ".txt");
  take("/d/a-", 42, 200, ".txt");
  EXPECT_EQ(find("/d/a.txt"), "/d/a-41.txt");
}

TEST_F(FreeNames, ManyTakenNamesAreFoundWithOneLookAtTheFolder) {
  take("/d/a-", 1, 1000, ".txt");
  EXPECT_EQ(find("/d/a.txt"), "/d/a-1001.txt");
  EXPECT_EQ(files.callCounts["visitDirectory"], 1);
  EXPECT_LT(files.callCounts["itemKindAtPath"], 12);
}

TEST_F(FreeNames, FewTakenNamesAreFoundWithoutALookAtTheFolder) {
  take("/d/a-", 1, 3, ".txt");
  EXPECT_EQ(find("/d/a.txt"), "/d/a-4.txt");
  EXPECT_EQ(files.callCounts["visitDirectory"], 0);
}

TEST_F(FreeNames, ADanglingLinkLeavesItsNameFree) {
  take("/d/a-", 1, 29, ".txt");
  take("/d/a-", 31, 50, ".txt");
  files.addLink("/d/a-30.txt", "nowhere");
  EXPECT_EQ(find("/d/a.txt"), "/d/a-30.txt");
}

TEST_F(FreeNames, ALinkThatLeadsSomewhereTakesItsName) {
  take("/d/a-", 1, 29, ".txt");
  files.addLink("/d/a-30.txt", "a-1.txt");
  EXPECT_EQ(find("/d/a.txt"), "/d/a-31.txt");
}

TEST_F(FreeNames, NumbersWrittenInAnotherWayTakeNothing) {
  take("/d/a-", 1, 19, ".txt");
  for (const char* number : {"020", "+20", " 20", "20 ", "20x", "0x14", "2 0", ""}) {
    files.addFile("/d/a-" + std::string(number) + ".txt");
  }
  EXPECT_EQ(find("/d/a.txt"), "/d/a-20.txt");
}

TEST_F(FreeNames, HugeNumbersAreNoTrouble) {
  take("/d/a-", 1, 19, ".txt");
  files.addFile("/d/a-99999999999.txt");
  files.addFile("/d/a-99999999999999999999999999.txt");
  files.addFile("/d/a-16777217.txt");
  EXPECT_EQ(find("/d/a.txt"), "/d/a-20.txt");
}

TEST_F(FreeNames, AFolderThatCannotBeReadIsSearchedNameByName) {
  take("/d/a-", 1, 30, "");
  files.failNext("visitDirectory");
  EXPECT_EQ(find("/d/a"), "/d/a-31");
}

TEST_F(FreeNames, EqualThePlainSearchWhateverIsTaken) {
  std::mt19937 random(20210917);
  const auto pick = [&](int count) {
    return static_cast<int>(random() % static_cast<unsigned>(count));
  };
  for (int round = 0; round < 200; ++round) {
    FakeFileManager folder(log);
    const std::string extension = pick(2) == 0 ? ".txt" : "";
    folder.addFile("/d/a" + extension);
    const int highest = 1 + pick(150);
    for (int number = 1; number <= highest; ++number) {
      const std::string path = "/d/a-" + std::to_string(number) + extension;
      switch (pick(40)) {
        case 0:
          break;
        case 1:
          folder.addLink(path, "nowhere");
          break;
        case 2:
          folder.addLink(path, "a" + extension);
          break;
        default:
          folder.addFile(path);
      }
    }
    EXPECT_EQ(FreeName(folder, "/d/a" + extension).find(), plainSearch(folder, "/d/a" + extension));
  }
}

TEST(FreeNamesOnDisk, EqualThePlainSearchWhateverIsTaken) {
  std::mt19937 random(20210918);
  const PosixFileManager files;
  for (int round = 0; round < 20; ++round) {
    const TemporaryDirectory folder;
    const std::string path = folder / "caf\xe9.txt";
    for (int number = 1; number <= 100; ++number) {
      const std::string name = folder / ("caf\xe9-" + std::to_string(number) + ".txt");
      const auto kind = random() % 30;
      if (kind == 1) {
        ASSERT_EQ(::symlink("nowhere", name.c_str()), 0);
      } else if (kind == 2) {
        ASSERT_EQ(::mkdir(name.c_str(), 0700), 0);
      } else if (kind > 2) {
        std::ofstream(name).put('x');
      }
    }
    EXPECT_EQ(FreeName(files, path).find(), plainSearch(files, path));
  }
}

}  // namespace
}  // namespace quennel::test
