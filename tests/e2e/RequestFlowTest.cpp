#include <sys/stat.h>

#include <filesystem>

#include "tests/e2e/HelperTest.h"

namespace quennel::test {
namespace {

using RequestFlow = HelperTest;

mode_t permissions(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST_F(RequestFlow, TheBusStartsTheHelperAndTheFileIsMade) {
  open({requestFor(folder(), "0")});
  ASSERT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_EQ(contents(in("note.txt")), "Dear reader\n");
}

TEST_F(RequestFlow, AUrlWithEscapesAndAQueryReachesTheFolderItNames) {
  const std::string target = in("My Files & 100% \xc3\xa4?#");
  std::filesystem::create_directory(target);
  open({requestFor(target, "1")});
  EXPECT_TRUE(eventuallyExists(target + "/script.sh"));
}

TEST_F(RequestFlow, AUrlWithoutAQueryAsksForTheFirstTemplate) {
  open({"quennel://" + folder()});
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
}

TEST_F(RequestFlow, RawSpacesAndLettersAsSomeLaunchersSendThemAreUnderstood) {
  std::filesystem::create_directory(in("My \xc3\xa4 Files"));
  open({"quennel://" + in("My \xc3\xa4 Files") + "?0"});
  EXPECT_TRUE(eventuallyExists(in("My \xc3\xa4 Files/note.txt")));
}

TEST_F(RequestFlow, AFolderNameThatIsNotUtf8IsFound) {
  const std::string target = in("caf\xe9");
  std::filesystem::create_directory(target);
  open({requestFor(target, "0")});
  EXPECT_TRUE(eventuallyExists(target + "/note.txt"));
}

TEST_F(RequestFlow, AnIndexThatNamesNoTemplateEndsInOneAlert) {
  Process helper = startReadyHelper();
  for (const auto* index : {"-1", "3"}) {
    open({requestFor(folder(), index)});
  }
  EXPECT_TRUE(eventually([&] {
    const auto text = helper.errorOutput();
    const auto first = text.find("Unable to create file!: No suitable file template found.");
    return first != std::string::npos &&
           text.find("No suitable file template found.", first + 40) != std::string::npos;
  })) << helper.errorOutput();
  EXPECT_EQ(countEntries(folder()), 0u);
  EXPECT_TRUE(helper.isRunning());
}

TEST_F(RequestFlow, AMissingTemplateFileEndsInAnAlertAndNoFile) {
  std::filesystem::remove(_root / "templates/note.txt");
  Process helper = startReadyHelper();
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventually(
      [&] { return helper.errorOutput().find("Error creating file!") != std::string::npos; }));
  EXPECT_EQ(countEntries(folder()), 0u);
}

TEST_F(RequestFlow, ATemplateThatIsAFifoEndsInAnAlertAndNeverHangs) {
  ASSERT_EQ(mkfifo((_root / "templates/pipe").c_str(), 0600), 0);
  set("fileTemplates", PropertyList::Array{templateRecord("pipe", "", "pipe"),
                                           templateRecord("note", "txt", "note.txt")});
  Process helper = startReadyHelper();
  open({requestFor(folder(), "0"), requestFor(folder(), "1")});
  EXPECT_TRUE(eventuallyExists(in("note.txt")));
  EXPECT_TRUE(eventually(
      [&] { return helper.errorOutput().find("Error creating file!") != std::string::npos; }));
  EXPECT_EQ(countEntries(folder()), 1u);
}

TEST_F(RequestFlow, ATemplateFolderIsCopiedWhole) {
  open({requestFor(folder(), "2")});
  ASSERT_TRUE(eventuallyExists(in("project")));
  EXPECT_EQ(contents(in("project/src/main.c")), "int main;\n");
}

TEST_F(RequestFlow, ExecuteBitsFollowTheTemplatesSetting) {
  std::filesystem::permissions(_root / "templates/note.txt", std::filesystem::perms(0755));
  std::filesystem::permissions(_root / "templates/script.sh", std::filesystem::perms(0644));
  open({requestFor(folder(), "0"), requestFor(folder(), "1"), requestFor(folder(), "1")});
  ASSERT_TRUE(eventuallyExists(in("script-1.sh")));
  EXPECT_EQ(permissions(in("script.sh")), 0755u);
  EXPECT_EQ(permissions(in("note.txt")), 0644u);
}

TEST_F(RequestFlow, ATakenNameIsLeftAloneAndTheNextFreeOneUsed) {
  write(in("note.txt"), "mine");
  open({requestFor(folder(), "0")});
  EXPECT_TRUE(eventuallyExists(in("note-1.txt")));
  EXPECT_EQ(contents(in("note.txt")), "mine");
}

TEST_F(RequestFlow, AThousandRequestsInARowMakeAThousandFiles) {
  for (int count = 0; count < 1000; ++count) {
    send(requestFor(folder(), "0"));
  }
  open({requestFor(folder(), "1")});
  EXPECT_TRUE(eventually([&] { return countEntries(folder()) == 1001; })) << countEntries(folder());
  EXPECT_TRUE(exists(in("script.sh")));
  EXPECT_TRUE(exists(in("note-999.txt")));
}

TEST_F(RequestFlow, AFileIsOpenedAfterwardsWhenTheSettingsSaySo) {
  std::filesystem::create_directory(_root / "bin");
  write(_root / "bin/xdg-open", "#!/bin/sh\nprintf %s \"$1\" > \"$0.opened\"\n");
  std::filesystem::permissions(_root / "bin/xdg-open", std::filesystem::perms::owner_all);
  set("openFileOnCreation", true);
  auto variables = environment();
  variables["PATH"] = _root / "bin:" + std::string(getenv("PATH"));
  Process helper({QUENNEL_HELPER, requestFor(folder(), "0")}, variables);
  ASSERT_TRUE(eventually([&] { return contents(_root / "bin/xdg-open.opened") != ""; }));
  EXPECT_EQ(contents(_root / "bin/xdg-open.opened"), in("note.txt"));
}

}  // namespace
}  // namespace quennel::test
