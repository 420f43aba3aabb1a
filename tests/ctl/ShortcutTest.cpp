#include <filesystem>
#include <optional>
#include <string>

#include "tests/ctl/QuennelctlTest.h"

namespace quennel::test {
namespace {

class ShortcutTest : public QuennelctlTest {
 protected:
  ShortcutTest() {
    settings.setObject(
        PropertyList::Array{PropertyList::Dictionary{{"title", "a"}},
                            PropertyList::Dictionary{{"title", "b"}, {"shortcut", oldForm}}},
        "fileTemplates");
    EXPECT_TRUE(settings.synchronize());
  }

  std::optional<PropertyList> shortcut(std::size_t index) const {
    const auto stored = templates();
    const PropertyList* const value = stored[index].objectForKey("shortcut");
    return value ? std::optional(*value) : std::nullopt;
  }
  bool startsAtLogin() const {
    return std::filesystem::exists(config + "/autostart/net.brellow.QuennelHelper.desktop");
  }

  /// Command, Option and N, as a recorder leaves it.
  const PropertyList oldForm =
      PropertyList::Dictionary{{"keyCode", 45}, {"modifierFlags", (1 << 20) + (1 << 19)}};
};

}  // namespace

TEST_F(ShortcutTest, EditStoresAShortcutInItsUsualSpelling) {
  const Answer answer = run({"template", "edit", "0", "--shortcut", "<alt><Ctrl>n"});
  EXPECT_EQ(answer.status, 0) << answer.errors;
  EXPECT_EQ(shortcut(0), PropertyList("Ctrl+Alt+N"));
}

TEST_F(ShortcutTest, EditSaysWhyAShortcutDoesNotWorkYet) {
  const Answer answer = run({"template", "edit", "0", "--shortcut", "Ctrl+Alt+N"});
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.output,
            "Changed template 0: a ()\n"
            "Its shortcut Ctrl+Alt+N does not work: there is no session bus\n");
}

TEST_F(ShortcutTest, EditRefusesWhatIsNoKeyCombination) {
  for (const char* text : {"", "Ctrl+", "n", "Ctrl+Alt+Nonsense", "Ctrl+Alt"}) {
    const Answer answer = run({"template", "edit", "0", "--shortcut", text});
    EXPECT_EQ(answer.status, 2) << text;
    EXPECT_NE(answer.errors.find("is no shortcut; one is written as in Ctrl+Alt+N"),
              std::string::npos);
  }
  EXPECT_EQ(shortcut(0), std::nullopt);
}

TEST_F(ShortcutTest, EditTakesAShortcutAway) {
  EXPECT_EQ(run({"template", "edit", "1", "--no-shortcut"}).status, 0);
  EXPECT_EQ(shortcut(1), std::nullopt);
}

TEST_F(ShortcutTest, OtherEditsKeepAShortcutAsItIsStored) {
  EXPECT_EQ(run({"template", "edit", "1", "--title", "c"}).status, 0);
  EXPECT_EQ(shortcut(1), oldForm);
}

TEST_F(ShortcutTest, AddTakesAShortcutToo) {
  EXPECT_EQ(run({"template", "add", makeFile("f"), "--shortcut=Super+F5"}).status, 0);
  EXPECT_EQ(shortcut(2), PropertyList("Super+F5"));
}

TEST_F(ShortcutTest, HelperStartsAtLoginWhileAnyTemplateHasAShortcut) {
  EXPECT_EQ(run({"template", "edit", "0", "--title", "x"}).status, 0);
  EXPECT_TRUE(startsAtLogin()) << "the second template has one";
  EXPECT_EQ(run({"template", "remove", "1"}).status, 0);
  EXPECT_FALSE(startsAtLogin());
  EXPECT_EQ(run({"template", "edit", "0", "--shortcut", "Ctrl+Alt+N"}).status, 0);
  EXPECT_TRUE(startsAtLogin());
  EXPECT_EQ(run({"template", "edit", "0", "--no-shortcut"}).status, 0);
  EXPECT_FALSE(startsAtLogin());
}

TEST_F(ShortcutTest, ListShowsEveryShortcutAndWhyItDoesNotWork) {
  EXPECT_EQ(run({"shortcuts"}).output,
            "INDEX  SHORTCUT     TITLE  WORKS\n"
            "1      Alt+Super+N  b      no     there is no session bus\n");
  EXPECT_EQ(run({"shortcuts", "--plain"}).output,
            "1\tAlt+Super+N\tb\tno\tthere is no session bus\n");
}

TEST_F(ShortcutTest, ListShowsAValueThatIsNoKeyCombination) {
  settings.setObject(
      PropertyList::Array{PropertyList::Dictionary{{"title", "a"}, {"shortcut", false}}},
      "fileTemplates");
  ASSERT_TRUE(settings.synchronize());
  EXPECT_EQ(run({"shortcuts", "--plain"}).output, "0\t?\ta\tno\tthere is no session bus\n");
}

TEST_F(ShortcutTest, ListWithoutShortcutsSaysHowToGiveOne) {
  settings.removeObjectForKey("fileTemplates");
  ASSERT_TRUE(settings.synchronize());
  EXPECT_NE(run({"shortcuts"}).output.find("template edit INDEX --shortcut"), std::string::npos);
  EXPECT_EQ(run({"shortcuts", "--plain"}).output, "");
}

}  // namespace quennel::test
