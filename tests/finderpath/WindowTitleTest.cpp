#include <gtest/gtest.h>

#include <filesystem>
#include <optional>

#include "finderpath/WindowTitle.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

TEST(WindowTitle, IsTheNameOfTheFolder) {
  EXPECT_TRUE(isTitleOfFolder("Größe ü", "/home/me/Größe ü"));
  EXPECT_FALSE(isTitleOfFolder("Größe", "/home/me/Größe ü"));
  EXPECT_FALSE(isTitleOfFolder("Home", "/home/me"));
}

TEST(WindowTitle, MayNameTheProgramToo) {
  EXPECT_TRUE(isTitleOfFolder("Documents - Thunar", "/home/me/Documents"));
  EXPECT_TRUE(isTitleOfFolder("Documents — Dolphin", "/home/me/Documents"));
  EXPECT_FALSE(isTitleOfFolder("Documents 2 - Thunar", "/home/me/Documents"));
}

TEST(WindowTitle, MayBeTheWholePath) {
  EXPECT_TRUE(isTitleOfFolder("/home/me/Documents", "/home/me/Documents"));
  EXPECT_TRUE(isTitleOfFolder("/home/me/Documents - Thunar", "/home/me/Documents"));
  EXPECT_FALSE(isTitleOfFolder("/home/me/Documents", "/home/me"));
  EXPECT_FALSE(isTitleOfFolder("/home/me", "/"));
}

TEST(WindowTitle, OfNothingFitsNoFolder) { EXPECT_FALSE(isTitleOfFolder("", "/home/me")); }

class FolderInTitle : public testing::Test {
 protected:
  TemporaryDirectory folder;
};

TEST_F(FolderInTitle, IsTheOneWhosePathItShows) {
  EXPECT_EQ(folderInTitle(folder.path()), folder.path());
  EXPECT_EQ(folderInTitle(folder.path() + " - Thunar"), folder.path());
  EXPECT_EQ(folderInTitle(folder.path() + " — Dolphin"), folder.path());
}

TEST_F(FolderInTitle, MayHaveANameWithASeparator) {
  const std::string path = folder / "a - b";
  std::filesystem::create_directory(path);
  EXPECT_EQ(folderInTitle(path + " - Thunar"), path);
}

TEST_F(FolderInTitle, IsNotKnownWhenTheTitleFitsTwo) {
  std::filesystem::create_directory(folder / "a");
  std::filesystem::create_directory(folder / "a - Thunar");
  EXPECT_EQ(folderInTitle(folder / "a - Thunar"), std::nullopt);
}

TEST_F(FolderInTitle, HasToExist) {
  EXPECT_EQ(folderInTitle(folder / "missing"), std::nullopt);
  EXPECT_EQ(folderInTitle("Documents - Thunar"), std::nullopt);
  EXPECT_EQ(folderInTitle(""), std::nullopt);
}

}  // namespace
}  // namespace quennel::test
