#include <gtest/gtest.h>
#include <stdlib.h>

#include "platform/values/Path.h"

namespace quennel::test {

TEST(Path, LastPathComponentIsWhatFollowsTheLastSlash) {
  EXPECT_EQ(lastPathComponent("/a/b.txt"), "b.txt");
  EXPECT_EQ(lastPathComponent("b.txt"), "b.txt");
  EXPECT_EQ(lastPathComponent("/a"), "a");
}

TEST(Path, TrailingSlashesAreIgnoredByLastPathComponent) {
  EXPECT_EQ(lastPathComponent("/a/b/"), "b");
  EXPECT_EQ(lastPathComponent("/a/b///"), "b");
}

TEST(Path, LastPathComponentOfTheRootIsTheRoot) {
  EXPECT_EQ(lastPathComponent("/"), "/");
  EXPECT_EQ(lastPathComponent("//"), "/");
  EXPECT_EQ(lastPathComponent(""), "");
}

TEST(Path, DeletingLastPathComponentGivesTheParent) {
  EXPECT_EQ(deletingLastPathComponent("/a/b"), "/a");
  EXPECT_EQ(deletingLastPathComponent("/a/b/"), "/a");
  EXPECT_EQ(deletingLastPathComponent("/a//b"), "/a");
  EXPECT_EQ(deletingLastPathComponent("a/b"), "a");
}

TEST(Path, DeletingLastPathComponentEndsAtTheRootOrAtNothing) {
  EXPECT_EQ(deletingLastPathComponent("/a"), "/");
  EXPECT_EQ(deletingLastPathComponent("/"), "/");
  EXPECT_EQ(deletingLastPathComponent("//a"), "/");
  EXPECT_EQ(deletingLastPathComponent("a"), "");
  EXPECT_EQ(deletingLastPathComponent("a/"), "");
  EXPECT_EQ(deletingLastPathComponent(""), "");
}

TEST(Path, AppendingPathComponentPutsExactlyOneSlashBetween) {
  EXPECT_EQ(appendingPathComponent("/a", "b"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/a/", "b"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/a", "/b"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/a//", "//b"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/a", "b/c"), "/a/b/c");
}

TEST(Path, AppendingPathComponentToTheRootOrToNothing) {
  EXPECT_EQ(appendingPathComponent("/", "b"), "/b");
  EXPECT_EQ(appendingPathComponent("/", "/b"), "/b");
  EXPECT_EQ(appendingPathComponent("", "b"), "b");
  EXPECT_EQ(appendingPathComponent("", "/b"), "/b");
}

TEST(Path, AppendingPathComponentDropsATrailingSlash) {
  EXPECT_EQ(appendingPathComponent("/a", "b/"), "/a/b");
  EXPECT_EQ(appendingPathComponent("/a/", ""), "/a");
  EXPECT_EQ(appendingPathComponent("/a", "/"), "/a");
  EXPECT_EQ(appendingPathComponent("/", ""), "/");
  EXPECT_EQ(appendingPathComponent("", ""), "");
}

TEST(Path, PathExtensionFollowsTheLastDotOfTheLastComponent) {
  EXPECT_EQ(pathExtension("a.tar.gz"), "gz");
  EXPECT_EQ(pathExtension("a..txt"), "txt");
  EXPECT_EQ(pathExtension("/a/b.txt"), "txt");
  EXPECT_EQ(pathExtension("/a.d/b"), "");
  EXPECT_EQ(pathExtension("/a.d/"), "d");
}

TEST(Path, ADotAtTheStartOrTheEndIsNoExtension) {
  EXPECT_EQ(pathExtension(".bashrc"), "");
  EXPECT_EQ(pathExtension("/home/.bashrc"), "");
  EXPECT_EQ(pathExtension("a."), "");
  EXPECT_EQ(pathExtension(".."), "");
  EXPECT_EQ(pathExtension("."), "");
  EXPECT_EQ(pathExtension(""), "");
}

TEST(Path, DeletingPathExtensionRemovesItAndItsDot) {
  EXPECT_EQ(deletingPathExtension("a.tar.gz"), "a.tar");
  EXPECT_EQ(deletingPathExtension("/a/b.txt"), "/a/b");
  EXPECT_EQ(deletingPathExtension("/a.d/"), "/a");
}

TEST(Path, DeletingPathExtensionLeavesANameWithoutOne) {
  EXPECT_EQ(deletingPathExtension(".bashrc"), ".bashrc");
  EXPECT_EQ(deletingPathExtension("Makefile"), "Makefile");
  EXPECT_EQ(deletingPathExtension("a."), "a.");
  EXPECT_EQ(deletingPathExtension("/a.d/b"), "/a.d/b");
  EXPECT_EQ(deletingPathExtension("/"), "/");
  EXPECT_EQ(deletingPathExtension(""), "");
}

TEST(Path, AppendingPathExtensionPutsOneDotBetween) {
  EXPECT_EQ(appendingPathExtension("untitled", "txt"), "untitled.txt");
  EXPECT_EQ(appendingPathExtension("a.b", "txt"), "a.b.txt");
  EXPECT_EQ(appendingPathExtension("/tmp/", "txt"), "/tmp.txt");
}

TEST(Path, AppendingAnEmptyPathExtensionAddsNoDot) {
  EXPECT_EQ(appendingPathExtension("untitled", ""), "untitled");
}

TEST(Path, StandardizingRemovesEmptyAndDotComponentsAndTrailingSlashes) {
  EXPECT_EQ(standardizingPath("/d/./x"), "/d/x");
  EXPECT_EQ(standardizingPath("/d//x/"), "/d/x");
  EXPECT_EQ(standardizingPath("//"), "/");
  EXPECT_EQ(standardizingPath("./a/./b/"), "a/b");
  EXPECT_EQ(standardizingPath(""), "");
}

TEST(Path, StandardizingResolvesDotDotInAbsolutePathsOnly) {
  EXPECT_EQ(standardizingPath("/a/../b"), "/b");
  EXPECT_EQ(standardizingPath("/a/b/../../c"), "/c");
  EXPECT_EQ(standardizingPath("/../a"), "/a");
  EXPECT_EQ(standardizingPath("/a/.."), "/");
  EXPECT_EQ(standardizingPath("a/../b"), "a/../b");
}

TEST(Path, CompletingAppendsAnExtensionThatIsMissing) {
  EXPECT_EQ(completingPathExtension("report", "txt"), "report.txt");
  EXPECT_EQ(completingPathExtension("report.v2", "txt"), "report.v2.txt");
  EXPECT_EQ(completingPathExtension("txt", "txt"), "txt.txt");
  EXPECT_EQ(completingPathExtension("reporttxt", "txt"), "reporttxt.txt");
  EXPECT_EQ(completingPathExtension("report.", "txt"), "report..txt");
  EXPECT_EQ(completingPathExtension("report", ""), "report");
}

TEST(Path, CompletingLeavesAnExtensionThatIsThereInWhateverCase) {
  EXPECT_EQ(completingPathExtension("report.txt", "txt"), "report.txt");
  EXPECT_EQ(completingPathExtension("report.TXT", "txt"), "report.TXT");
  EXPECT_EQ(completingPathExtension(".txt", "txt"), ".txt");
  EXPECT_EQ(completingPathExtension("backup.tar.gz", "tar.gz"), "backup.tar.gz");
}

TEST(Path, CompletingAppendsTheRestOfAnExtensionInParts) {
  EXPECT_EQ(completingPathExtension("backup.tar", "tar.gz"), "backup.tar.gz");
  EXPECT_EQ(completingPathExtension("backup.gz", "tar.gz"), "backup.gz.tar.gz");
  EXPECT_EQ(completingPathExtension("odd", ".odd"), "odd..odd");
}

class HomePath : public testing::Test {
 protected:
  void SetUp() override { setenv("HOME", "/home/me/", 1); }
};

TEST_F(HomePath, StandardizingExpandsALeadingTilde) {
  EXPECT_EQ(standardizingPath("~"), "/home/me");
  EXPECT_EQ(standardizingPath("~/x/"), "/home/me/x");
}

TEST_F(HomePath, StandardizingLeavesEveryOtherTilde) {
  EXPECT_EQ(standardizingPath("/a/~"), "/a/~");
  EXPECT_EQ(standardizingPath("~other/x"), "~other/x");
  unsetenv("HOME");
  EXPECT_EQ(standardizingPath("~/x"), "~/x");
}

TEST(Path, BytesThatAreNotUTF8Survive) {
  EXPECT_EQ(lastPathComponent("/a/\xFF.txt"), "\xFF.txt");
  EXPECT_EQ(standardizingPath("/a/\xFF/"), "/a/\xFF");
}

}  // namespace quennel::test
