#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/linux/mounts/MountTable.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::Field;
using ::testing::IsEmpty;
using ::testing::Optional;

constexpr const char* twoMounts =
    "36 35 98:0 /mnt1 /mnt2 rw,noatime master:1 shared:2 - ext3 /dev/root rw,errors=continue\n"
    "22 1 8:1 / / rw - ext4 /dev/sda1 rw\n";

Mount mountOn(const std::string& root, const std::string& point) {
  return {1, root, point, "ext4", "/dev/sda1"};
}

TEST(MountTable, TellsWhatIsMountedWhere) {
  EXPECT_THAT(MountTable::parse(twoMounts).mounts(),
              ElementsAre(Mount{22, "/", "/", "ext4", "/dev/sda1"},
                          Mount{36, "/mnt1", "/mnt2", "ext3", "/dev/root"}));
}

TEST(MountTable, ReadsBlanksLineEndsAndBackslashesInPaths) {
  const auto table =
      MountTable::parse("1 0 0:1 / /a\\040b\\011c\\012d\\134e\\0 rw - fuse a\\040source rw");
  EXPECT_THAT(table.mounts(), ElementsAre(Mount{1, "/", "/a b\tc\nd\\e\\0", "fuse", "a source"}));
}

TEST(MountTable, LeavesOutLinesThatShowNoFolder) {
  EXPECT_THAT(MountTable::parse("").mounts(), IsEmpty());
  EXPECT_THAT(MountTable::parse("\n\ngarbage\n1 2 3\n").mounts(), IsEmpty());
  EXPECT_THAT(MountTable::parse("1 0 0:4 net:[4026532] /run/netns/x rw - nsfs nsfs rw").mounts(),
              IsEmpty());
}

TEST(MountTable, FindsAMountByItsNumber) {
  const auto table = MountTable::parse(twoMounts);
  ASSERT_NE(table.mountWithId(36), nullptr);
  EXPECT_EQ(table.mountWithId(36)->point, "/mnt2");
  EXPECT_EQ(table.mountWithId(30), nullptr);
  EXPECT_EQ(table.mountWithId(37), nullptr);
}

TEST(MountTable, TellsWhichMountsAnotherOneLacks) {
  const auto both = MountTable::parse(twoMounts);
  const auto one = MountTable::parse("22 1 8:1 / / rw - ext4 /dev/sda1 rw\n");
  EXPECT_THAT(both.without(one), ElementsAre(Field(&Mount::id, 36)));
  EXPECT_THAT(one.without(both), IsEmpty());
}

TEST(MountTable, SeesAMountThatTookTheNumberOfAnother) {
  const auto before = MountTable::parse("22 1 8:1 / /a rw - ext4 /dev/sda1 rw\n");
  const auto after = MountTable::parse("22 1 8:1 / /b rw - ext4 /dev/sda1 rw\n");
  EXPECT_THAT(after.without(before), ElementsAre(Field(&Mount::point, "/b")));
  EXPECT_THAT(before.without(after), ElementsAre(Field(&Mount::point, "/a")));
}

TEST(MountTable, SeesTheRootOfThisProcess) {
  EXPECT_THAT(MountTable::current().mounts(), ::testing::Contains(Field(&Mount::point, "/")));
}

TEST(MountPaths, AreCountedFromTheRootOfTheFilesystem) {
  EXPECT_EQ(mountOn("/", "/").relativePathOf("/a/b"), "a/b");
  EXPECT_EQ(mountOn("/", "/m").relativePathOf("/m/a/b"), "a/b");
  EXPECT_EQ(mountOn("/", "/m").relativePathOf("/m"), "");
  EXPECT_EQ(mountOn("/sub", "/m").relativePathOf("/m/a"), "sub/a");
  EXPECT_EQ(mountOn("/sub", "/m").relativePathOf("/m"), "sub");
}

TEST(MountPaths, LeadBackToWhereTheMountShowsThem) {
  EXPECT_THAT(mountOn("/", "/").pathOf("a/b"), Optional<std::string>("/a/b"));
  EXPECT_THAT(mountOn("/", "/m").pathOf("a/b"), Optional<std::string>("/m/a/b"));
  EXPECT_THAT(mountOn("/", "/m").pathOf(""), Optional<std::string>("/m"));
  EXPECT_THAT(mountOn("/sub", "/m").pathOf("sub/a"), Optional<std::string>("/m/a"));
  EXPECT_THAT(mountOn("/sub", "/m").pathOf("sub"), Optional<std::string>("/m"));
  EXPECT_EQ(mountOn("/sub", "/m").pathOf("subway/a"), std::nullopt);
  EXPECT_EQ(mountOn("/sub", "/m").pathOf("a"), std::nullopt);
}

TEST(MountPaths, AreToldFromThoseThatOnlyBeginAlike) {
  EXPECT_TRUE(mountOn("/", "/m").contains("/m"));
  EXPECT_TRUE(mountOn("/", "/m").contains("/m/a"));
  EXPECT_FALSE(mountOn("/", "/m").contains("/ma"));
  EXPECT_TRUE(mountOn("/", "/").contains("/anything"));
}

}  // namespace
}  // namespace quennel::test
