#include <gtest/gtest.h>

#include "platform/linux/filemanagers/FileManagerKind.h"

namespace quennel::test {
namespace {

using Kind = FileManagerKind;

TEST(FileManagerOfClass, IsKnownByItsWholeNameInAnyLetters) {
  EXPECT_EQ(fileManagerOfClass("Thunar"), Kind::SavesDrops);
  EXPECT_EQ(fileManagerOfClass("Pcmanfm"), Kind::SavesDrops);
  EXPECT_EQ(fileManagerOfClass("Nemo"), Kind::SavesDrops);
  EXPECT_EQ(fileManagerOfClass("Caja"), Kind::SavesDrops);
  EXPECT_EQ(fileManagerOfClass("pcmanfm-qt"), Kind::SavesDropsUnderPointer);
  EXPECT_EQ(fileManagerOfClass("dolphin"), Kind::ExtractsDrops);
  EXPECT_EQ(fileManagerOfClass("org.kde.dolphin"), Kind::ExtractsDrops);
  EXPECT_EQ(fileManagerOfClass("Org.gnome.Nautilus"), Kind::ListsLocations);
}

TEST(FileManagerOfClass, IsNoHelperOfAFileManager) {
  EXPECT_EQ(fileManagerOfClass("nemo-desktop"), std::nullopt);
  EXPECT_EQ(fileManagerOfClass("Xfdesktop-settings"), std::nullopt);
  EXPECT_EQ(fileManagerOfClass(""), std::nullopt);
}

TEST(FileManagerNamedIn, IsFoundAnywhereInBothTextsOfTheProperty) {
  EXPECT_EQ(fileManagerNamedIn({"thunar\0Thunar", 14}), Kind::SavesDrops);
  EXPECT_EQ(fileManagerNamedIn("nemo-desktop"), Kind::SavesDrops);
  EXPECT_EQ(fileManagerNamedIn("Xfdesktop"), Kind::SavesDrops);
  EXPECT_EQ(fileManagerNamedIn({"dolphin\0other", 14}), Kind::ExtractsDrops);
  EXPECT_EQ(fileManagerNamedIn("org.gnome.Nautilus"), Kind::ListsLocations);
  EXPECT_EQ(fileManagerNamedIn("xterm"), std::nullopt);
}

TEST(FileManagerNamedIn, IsTheOneWithTheLongerName) {
  EXPECT_EQ(fileManagerNamedIn({"pcmanfm-qt\0pcmanfm-qt", 22}), Kind::SavesDropsUnderPointer);
}

}  // namespace
}  // namespace quennel::test
