#include <gtest/gtest.h>

#include <cerrno>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "manage/Templates.h"
#include "settings/SharedSettings.h"
#include "tests/support/FakeAutostart.h"
#include "tests/support/FakeFileInspector.h"
#include "tests/support/FakeHelperConnection.h"
#include "tests/support/FakeUserDefaults.h"
#include "tests/support/PrintPropertyList.h"

namespace quennel::test {
namespace {

using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using Reason = Failure::Reason;
using Titles = std::vector<std::string>;

FileTemplate titled(const std::string& title) {
  return Dictionary{{"title", title}, {"prefix", title}, {"unknown", 0.5}};
}

class TemplatesTest : public testing::Test {
 protected:
  TemplatesTest() {
    files.items["/t/report.md"] = {};
    files.items["/t/tool.sh"] = {.isExecutable = true};
    files.items["/t/Project v1.2"] = {.kind = FileFacts::Kind::Folder, .isExecutable = true};
  }

  void store(const Titles& wanted) {
    Array records;
    for (const std::string& title : wanted) {
      records.push_back(titled(title));
    }
    settings.stored().insert_or_assign(fileTemplatesKey, records);
  }

  Titles titles() const {
    Titles found;
    for (const FileTemplate& record : templates.all().value()) {
      found.push_back(templateText(record, "title"));
    }
    return found;
  }

  /// The stored shortcut, empty for none.
  std::string shortcutOf(std::size_t index) const {
    return templateText(templates.all()->at(index), "shortcut");
  }

  FakeUserDefaults::Store suite = std::make_shared<Dictionary>();
  FakeUserDefaults settings{suite};
  FakeFileInspector files;
  FakeAutostart autostart;
  FakeHelperConnection helper;
  Templates templates{settings, files, autostart, helper};
};

}  // namespace

TEST_F(TemplatesTest, AddFillsInWhatIsNotSaidFromTheFile) {
  const auto added = templates.add({.filePath = "/t/report.md"});
  ASSERT_TRUE(added);
  EXPECT_EQ(added->index, 0U);
  EXPECT_EQ(added->record, PropertyList(Dictionary{{"title", "report"},
                                                   {"prefix", "report"},
                                                   {"suffix", "md"},
                                                   {"filePath", "/t/report.md"},
                                                   {"executable", false},
                                                   {"enabled", true}}));
  EXPECT_EQ(templates.all().value(), Array{added->record});
}

TEST_F(TemplatesTest, ProgramsMakeProgramsAndFoldersKeepTheirWholeName) {
  EXPECT_TRUE(templateFlag(templates.add({.filePath = "/t/tool.sh"})->record, "executable"));
  const auto folder = templates.add({.filePath = "/t/Project v1.2"});
  EXPECT_FALSE(templateFlag(folder->record, "executable"));
  EXPECT_EQ(templateFileName(folder->record), "Project v1.2");
}

TEST_F(TemplatesTest, ExtensionIsTakenWithOrWithoutItsDot) {
  const auto added = templates.add({.suffix = ".txt", .filePath = "/t/report.md"});
  EXPECT_EQ(templateText(added->record, "suffix"), "txt");
}

TEST_F(TemplatesTest, DescriptionThatMakesNoTemplateIsRefusedWithItsReasonAndNothingIsStored) {
  files.items["/t/pipe"] = {.kind = FileFacts::Kind::Special};
  files.items["/t/secret"] = {.obstacle = Error{EACCES}};
  const auto reasonOf = [&](TemplateDescription description) {
    if (!description.filePath) {
      description.filePath = "/t/report.md";
    }
    const auto added = templates.add(description);
    EXPECT_FALSE(added);
    return added.failure().reason;
  };
  EXPECT_EQ(reasonOf({.title = ""}), Reason::EmptyTitle);
  EXPECT_EQ(reasonOf({.prefix = "a/b"}), Reason::SlashInPrefix);
  EXPECT_EQ(reasonOf({.suffix = "a/b"}), Reason::SlashInSuffix);
  EXPECT_EQ(reasonOf({.prefix = "", .suffix = ""}), Reason::NoName);
  EXPECT_EQ(reasonOf({.prefix = "..", .suffix = ""}), Reason::NoName);
  EXPECT_EQ(reasonOf({.prefix = std::string(253, 'x')}), Reason::NameTooLong);
  EXPECT_EQ(reasonOf({.shortcut = "n"}), Reason::NoKeyCombination);
  EXPECT_EQ(reasonOf({.shortcut = ""}), Reason::NoKeyCombination);
  EXPECT_EQ(reasonOf({.filePath = "/t/missing"}), Reason::UnreadableItem);
  EXPECT_EQ(reasonOf({.filePath = "/t/secret"}), Reason::UnreadableItem);
  EXPECT_EQ(reasonOf({.filePath = "/t/pipe"}), Reason::SpecialFile);
  EXPECT_EQ(settings.storeCount(), 0);
  EXPECT_TRUE(helper.commands.empty());
}

TEST_F(TemplatesTest, EditChangesWhatIsDescribedAndKeepsTheRest) {
  store({"a", "b"});
  const auto changed = templates.edit({1}, {.title = "new"});
  ASSERT_TRUE(changed);
  EXPECT_EQ(changed->record,
            PropertyList(Dictionary{{"title", "new"}, {"prefix", "b"}, {"unknown", 0.5}}));
  EXPECT_EQ(titles(), (Titles{"a", "new"}));
}

TEST_F(TemplatesTest, PlaceThatTheListDoesNotHaveIsRefusedWithItsLength) {
  store({"a", "b"});
  const auto removed = templates.remove({2});
  ASSERT_FALSE(removed);
  EXPECT_EQ(removed.failure().reason, Reason::NoSuchTemplate);
  EXPECT_EQ(removed.failure().index, 2U);
  EXPECT_EQ(removed.failure().count, 2U);
  EXPECT_FALSE(templates.move({0}, {2}));
  EXPECT_EQ(titles(), (Titles{"a", "b"}));
}

TEST_F(TemplatesTest, MoveKeepsTheOrderOfAllOthers) {
  store({"a", "b", "c", "d"});
  EXPECT_EQ(templates.move({0}, {2})->index, 2U);
  EXPECT_EQ(titles(), (Titles{"b", "c", "a", "d"}));
  EXPECT_TRUE(templates.move({3}, {0}));
  EXPECT_EQ(titles(), (Titles{"d", "b", "c", "a"}));
}

TEST_F(TemplatesTest, TemplateThatAnotherProgramMovedIsFoundWhereItIsNow) {
  store({"a", "b", "c"});
  const TemplatePlace seen{1, titled("b")};
  FakeUserDefaults otherSettings{suite};
  Templates other(otherSettings, files, autostart, helper);
  ASSERT_TRUE(other.remove({0}));
  EXPECT_EQ(templates.edit(seen, {.enabled = true})->index, 0U);
  EXPECT_EQ(titles(), (Titles{"b", "c"}));
  EXPECT_TRUE(templateFlag(templates.all()->at(0), "enabled"));
  EXPECT_FALSE(templateFlag(templates.all()->at(1), "enabled"));
}

TEST_F(TemplatesTest, MoveGoesToThePlaceOfTheTemplateThatWasMeantWhereverThatIsNow) {
  store({"a", "b", "c", "d"});
  const TemplatePlace seen{0, titled("a")};
  const TemplatePlace target{2, titled("c")};
  FakeUserDefaults otherSettings{suite};
  Templates other(otherSettings, files, autostart, helper);
  ASSERT_TRUE(other.remove({1}));
  ASSERT_TRUE(templates.move(seen, target));
  EXPECT_EQ(titles(), (Titles{"c", "a", "d"}));
}

TEST_F(TemplatesTest, TemplateThatAnotherProgramChangedIsLeftAlone) {
  store({"a", "b"});
  const TemplatePlace seen{1, titled("b")};
  FakeUserDefaults otherSettings{suite};
  Templates other(otherSettings, files, autostart, helper);
  ASSERT_TRUE(other.edit({1}, {.title = "theirs"}));
  const auto removed = templates.remove(seen);
  ASSERT_FALSE(removed);
  EXPECT_EQ(removed.failure().reason, Reason::TemplateChanged);
  EXPECT_EQ(titles(), (Titles{"a", "theirs"}));
}

TEST_F(TemplatesTest, OfEqualTemplatesTheNearestOneIsMeant) {
  store({"x", "same", "y", "same"});
  ASSERT_TRUE(templates.remove({3, titled("same")}));
  EXPECT_EQ(titles(), (Titles{"x", "same", "y"}));
}

TEST_F(TemplatesTest, TemplatesOfTwoProgramsThatAddAtOnceAreBothThere) {
  FakeUserDefaults otherSettings{suite};
  Templates other(otherSettings, files, autostart, helper);
  ASSERT_TRUE(templates.all());
  EXPECT_EQ(other.add({.title = "theirs", .filePath = "/t/report.md"})->index, 0U);
  EXPECT_EQ(templates.add({.title = "ours", .filePath = "/t/report.md"})->index, 1U);
  EXPECT_EQ(titles(), (Titles{"theirs", "ours"}));
}

TEST_F(TemplatesTest, HelperReadsTheKeysAgainAfterEveryChange) {
  store({"a", "b"});
  ASSERT_TRUE(templates.edit({0}, {.enabled = true}));
  ASSERT_TRUE(templates.move({0}, {1}));
  ASSERT_TRUE(templates.remove({0}));
  EXPECT_EQ(helper.commands,
            (std::vector<std::string>{"fileTemplates", "fileTemplates", "fileTemplates"}));
}

TEST_F(TemplatesTest, ChangeIsDoneAlsoWithoutAHelperToTell) {
  helper.silence = HelperSilence{HelperSilence::Reason::NoSession};
  EXPECT_TRUE(templates.add({.filePath = "/t/report.md"}));
  EXPECT_EQ(titles(), Titles{"report"});
}

TEST_F(TemplatesTest, HelperStartsAtLoginAsLongAsSomeTemplateHasAShortcut) {
  ASSERT_TRUE(templates.add({.filePath = "/t/report.md", .shortcut = "<alt>n"}));
  EXPECT_TRUE(autostart.enabled);
  EXPECT_EQ(shortcutOf(0), "Alt+N");
  ASSERT_TRUE(templates.edit({0}, {.removesShortcut = true}));
  EXPECT_FALSE(autostart.enabled);
  EXPECT_EQ(shortcutOf(0), "");
}

TEST_F(TemplatesTest, ChangeThatIsStoredSaysThatAutostartStaysAsItWas) {
  autostart.failure = Error{EROFS};
  const auto added = templates.add({.filePath = "/t/report.md"});
  ASSERT_TRUE(added);
  ASSERT_TRUE(added->autostartFailure);
  EXPECT_EQ(added->autostartFailure->code, EROFS);
}

TEST_F(TemplatesTest, SomethingElseInThePlaceOfTheListIsNeverOverwritten) {
  settings.stored().insert_or_assign(fileTemplatesKey, "odd");
  EXPECT_EQ(templates.all().failure().reason, Reason::NoList);
  EXPECT_EQ(templates.add({.filePath = "/t/report.md"}).failure().reason, Reason::NoList);
  EXPECT_EQ(settings.stored().at(fileTemplatesKey), PropertyList("odd"));
}

TEST_F(TemplatesTest, SettingsThatCannotBeStoredAreTheFailure) {
  settings.setStoreError(Error{ENOSPC});
  const auto added = templates.add({.filePath = "/t/report.md"});
  ASSERT_FALSE(added);
  EXPECT_EQ(added.failure().reason, Reason::SettingsNotStored);
  EXPECT_EQ(added.failure().error.code, ENOSPC);
}

TEST_F(TemplatesTest, MissingFileIsTold) {
  EXPECT_FALSE(templates.isFileMissing(Dictionary{{"filePath", "/t/report.md"}}));
  EXPECT_TRUE(templates.isFileMissing(Dictionary{{"filePath", "/t/gone"}}));
}

TEST_F(TemplatesTest, FileIsAskedForByThePlaceThatTheTemplateHasNow) {
  store({"a", "b", "c"});
  const TemplatePlace seen{2, titled("c")};
  ASSERT_TRUE(templates.remove({0}));
  ASSERT_TRUE(templates.makeFile(seen, "/home/me/a b"));
  EXPECT_EQ(helper.openedURLs, std::vector<std::string>{"quennel:///home/me/a%20b?1"});
}

TEST_F(TemplatesTest, HelperThatDoesNotTakeTheRequestIsTheFailure) {
  store({"a"});
  helper.silence = HelperSilence{HelperSilence::Reason::Refused, "no"};
  const auto made = templates.makeFile({0}, "/home/me");
  ASSERT_FALSE(made);
  EXPECT_EQ(made.failure().reason, Reason::HelperSilent);
  EXPECT_EQ(made.failure().silence.detail, "no");
}

}  // namespace quennel::test
