#include "tests/app/AppDelegateTest.h"

namespace quennel::test {
namespace {

using Settings = AppDelegateTest;

TEST_F(Settings, IndexZeroFindsTheFirstTemplate) {
  EXPECT_EQ(templateText(*launch().findTemplateByIndex(0), "prefix"), "untitled");
}

TEST_F(Settings, AnIndexEqualToTheCountFindsNothing) {
  EXPECT_FALSE(launch().findTemplateByIndex(3));
}

TEST_F(Settings, ANegativeIndexFindsNothing) { EXPECT_FALSE(launch().findTemplateByIndex(-1)); }

TEST_F(Settings, ADisabledTemplateIsFound) {
  EXPECT_EQ(templateText(*launch().findTemplateByIndex(1), "prefix"), "disabled");
}

TEST_F(Settings, AnAbsentListCountsAsEmpty) {
  fakes.sharedDefaults.removeObjectForKey("fileTemplates");
  EXPECT_FALSE(launch().findTemplateByIndex(0));
}

TEST_F(Settings, AListThatIsNoArrayCountsAsEmpty) {
  fakes.sharedDefaults.setObject("not a list", "fileTemplates");
  EXPECT_FALSE(launch().findTemplateByIndex(0));
}

TEST_F(Settings, ATemplateAddedWhileRunningIsFoundAtTheNextLookup) {
  launch();
  fakes.sharedDefaults.setObject(PropertyList::Array{templateRecord("new", "md")}, "fileTemplates");
  EXPECT_EQ(templateText(*delegate->findTemplateByIndex(0), "prefix"), "new");
}

TEST_F(Settings, AReplacementTextWinsOverTheBundlesTable) {
  fakes.mainBundle.translations["New %@"] = "Neu: %@";
  fakes.sharedDefaults.setObject(PropertyList::Dictionary{{"New %@", "Nouveau %@"}},
                                 "localizedStrings");
  EXPECT_EQ(launch().localizedStringForKey("New %@"), "Nouveau %@");
}

TEST_F(Settings, AnEmptyReplacementFallsBackToTheBundlesTable) {
  fakes.mainBundle.translations["New %@"] = "Neu: %@";
  fakes.sharedDefaults.setObject(PropertyList::Dictionary{{"New %@", ""}}, "localizedStrings");
  EXPECT_EQ(launch().localizedStringForKey("New %@"), "Neu: %@");
}

TEST_F(Settings, AReplacementThatIsNoTextFallsBackToTheBundlesTable) {
  fakes.sharedDefaults.setObject(PropertyList::Dictionary{{"New %@", 7}}, "localizedStrings");
  EXPECT_EQ(launch().localizedStringForKey("New %@"), "New %@");
}

TEST_F(Settings, ATextMissingEverywhereIsItsOwnTranslation) {
  EXPECT_EQ(launch().localizedStringForKey("Quennel"), "Quennel");
}

TEST_F(Settings, TheDefaultsResourceIsRegisteredAtStartUp) {
  fakes.mainBundle.resources["Defaults.plist"] = "/share/Defaults.plist";
  fakes.mainBundle.propertyLists["/share/Defaults.plist"] = {{"playSound", true},
                                                             {"skipFilename", false}};
  launch();
  EXPECT_TRUE(delegate->sharedDefaults().boolForKey("playSound"));
  EXPECT_TRUE(delegate->sharedDefaults().boolForKey("skipFilename")) << "a stored value wins";
}

TEST_F(Settings, AMissingDefaultsResourceLeavesEveryKeyAbsent) {
  EXPECT_FALSE(launch().sharedDefaults().objectForKey("playSound"));
}

}  // namespace
}  // namespace quennel::test
