#include "tests/app/AppDelegateTest.h"

namespace quennel::test {
namespace {

using Request = AppDelegateTest;

TEST_F(Request, EscapesInThePathAreDecodedAndTheQueryIsTheIndex) {
  fakes.fileManager.addDirectory("/Users/me/My Files");
  launch();
  open("quennel:///Users/me/My%20Files?2");
  EXPECT_TRUE(exists("/Users/me/My Files/script.sh"));
}

TEST_F(Request, ATrailingSlashOfThePathIsDropped) {
  launch();
  open("quennel:///d/?0");
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(Request, AFolderNameThatIsNotUtf8IsFound) {
  fakes.fileManager.addDirectory("/d/\xe9t\xe9");
  launch();
  open("quennel:///d/%E9t%E9?0");
  EXPECT_TRUE(exists("/d/\xe9t\xe9/untitled.txt"));
}

TEST_F(Request, WithoutAQueryTheFirstTemplateIsUsed) {
  launch();
  open("quennel:///d");
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(Request, TheIndexEndsAtTheFirstCharacterThatIsNoDigit) {
  launch();
  open("quennel:///d?2x");
  EXPECT_TRUE(exists("/d/script.sh"));
}

TEST_F(Request, AQueryWithoutDigitsAsksForTheFirstTemplate) {
  launch();
  open("quennel:///d?x");
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(Request, ADisabledTemplateIsUsedWhenItIsAskedFor) {
  launch();
  open("quennel:///d?1");
  EXPECT_TRUE(exists("/d/disabled.txt"));
}

TEST_F(Request, SchemeHostAndFragmentAreIgnored) {
  launch();
  open("other://host/d?2#1");
  EXPECT_TRUE(exists("/d/script.sh"));
}

class RequestWithoutTemplate : public AppDelegateTest,
                               public testing::WithParamInterface<const char*> {};

TEST_P(RequestWithoutTemplate, ShowsOneCriticalAlertAndMakesNoFile) {
  launch();
  fakes.userInterface.whileShown = [this](const Alert&) { EXPECT_EQ(delegate->panelCount(), 1); };
  open(GetParam());
  ASSERT_EQ(fakes.userInterface.alerts.size(), 1u);
  const Alert& alert = fakes.userInterface.alerts.front();
  EXPECT_EQ(alert.messageText, "Unable to create file!");
  EXPECT_EQ(alert.informativeText, "No suitable file template found.");
  EXPECT_EQ(alert.alertStyle, AlertStyle::Critical);
  EXPECT_TRUE(alert.buttons.empty());
  EXPECT_EQ(delegate->panelCount(), 0);
  EXPECT_FALSE(exists("/d/untitled.txt"));
}

INSTANTIATE_TEST_SUITE_P(Queries, RequestWithoutTemplate,
                         testing::Values("quennel:///d?-1", "quennel:///d?3",
                                         "quennel:///d?99999999999999999999"));

TEST_F(Request, TheAlertOfAMissingTemplateIsTranslated) {
  fakes.mainBundle.translations["No suitable file template found."] = "Keine passende Vorlage.";
  fakes.sharedDefaults.setObject(
      PropertyList::Dictionary{{"Unable to create file!", "not for alerts"}}, "localizedStrings");
  launch();
  open("quennel:///d?7");
  EXPECT_EQ(fakes.userInterface.alerts.front().informativeText, "Keine passende Vorlage.");
  EXPECT_EQ(fakes.userInterface.alerts.front().messageText, "Unable to create file!");
}

TEST_F(Request, AMissingTemplateStillArmsTheQuitCheckAfterTheAlert) {
  launch();
  fakes.userInterface.whileShown = [this](const Alert&) {
    fakes.runLoop.advance(1h);
    EXPECT_FALSE(terminated());
  };
  open("quennel:///d?7");
  fakes.runLoop.advance(11s);
  EXPECT_TRUE(terminated());
}

TEST_F(Request, EvenABadUrlCountsAsARequest) {
  launch();
  fakes.urlEvents.receive({.directObject = "not a url", .activationToken = {}});
  fakes.runLoop.runUntilIdle();
  EXPECT_TRUE(delegate->shouldHandleURL());
}

TEST_F(Request, TheFileExistsBeforeTheHandlerReturns) {
  launch();
  delegate->handleURLEvent({.directObject = "quennel:///d?0", .activationToken = {}});
  EXPECT_TRUE(exists("/d/untitled.txt"));
}

TEST_F(Request, AnEventWithoutAStringMakesNoFile) {
  launch();
  delegate->handleURLEvent({});
  fakes.runLoop.runUntilIdle();
  EXPECT_FALSE(exists("/d/untitled.txt"));
}

}  // namespace
}  // namespace quennel::test
