#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "finderpath/FileURI.h"
#include "finderpath/FrontFolder.h"
#include "finderpath/TabInUse.h"

namespace quennel::test {
namespace {

/// The folder of the tab in use in a window whose title names `named`.
std::optional<std::string> tabInUse(const std::vector<std::string>& uris,
                                    const std::string& named) {
  return folderOfTabInUse(uris, [&](const std::string& folder) { return folder == named; });
}

TEST(TabInUse, IsTheOnlyOne) {
  EXPECT_EQ(tabInUse({"file:///d/a%20b"}, ""), "/d/a b");
  EXPECT_EQ(tabInUse({"file:///d", "file:///d"}, ""), "/d");
}

TEST(TabInUse, IsTheOneThatTheTitleNames) {
  EXPECT_EQ(tabInUse({"file:///d", "file:///e"}, "/e"), "/e");
  EXPECT_EQ(tabInUse({"trash:///", "file:///e"}, "/e"), "/e");
}

TEST(TabInUse, IsNotKnownWhenTheTitleNamesNone) {
  EXPECT_EQ(tabInUse({"file:///d", "file:///e"}, "/f"), std::nullopt);
}

TEST(TabInUse, IsNotKnownWhenTheTitleFitsTwo) {
  EXPECT_EQ(folderOfTabInUse({"file:///d/a", "file:///e/a"}, [](const auto&) { return true; }),
            std::nullopt);
}

TEST(TabInUse, ShowsNoFolderWhenItIsNoneOfTheFileSystem) {
  EXPECT_EQ(tabInUse({"trash:///"}, ""), std::nullopt);
  EXPECT_EQ(tabInUse({"sftp://host/d"}, ""), std::nullopt);
  EXPECT_EQ(tabInUse({}, ""), std::nullopt);
}

TEST(FileURI, NamesAPathByteForByte) {
  EXPECT_EQ(pathOfFileURI("file:///a%0Ab/%25/%FF"), "/a\nb/%/\xff");
  EXPECT_EQ(pathOfFileURI("file:///"), "/");
  EXPECT_EQ(pathOfFileURI("file:///d/"), "/d");
}

TEST(FileURI, IsNoOtherURI) {
  EXPECT_EQ(pathOfFileURI("/d"), std::nullopt);
  EXPECT_EQ(pathOfFileURI("quennel-folder-query"), std::nullopt);
  EXPECT_EQ(pathOfFileURI("http://host/d"), std::nullopt);
  EXPECT_EQ(pathOfFileURI("file:d"), std::nullopt);
  EXPECT_EQ(pathOfFileURI("file:///d%0"), std::nullopt);
}

TEST(FrontFolder, IsPrintedOnlyWhenItsReaderGetsItAsItIs) {
  EXPECT_TRUE(canBePrinted("/home/me/Größe ü"));
  EXPECT_TRUE(canBePrinted("/two\nlines"));
  EXPECT_TRUE(canBePrinted("/space "));
  EXPECT_FALSE(canBePrinted("/line\n"));
  EXPECT_FALSE(canBePrinted("/line\u2028"));
  EXPECT_FALSE(canBePrinted("/latin-\xfc"));
}

}  // namespace
}  // namespace quennel::test
