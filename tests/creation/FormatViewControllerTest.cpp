#include "creation/FormatViewController.h"
#include "tests/support/CreationRoom.h"
#include "tests/support/DesktopTest.h"
#include "tests/support/FakeSavePanel.h"

namespace quennel::test {
namespace {

/// Templates A (enabled), B (disabled) and C (enabled, without a suffix).
class FormatView : public DesktopTest {
 protected:
  FormatView() {
    b.insert_or_assign("enabled", false);
    store({a, b, c});
  }

  void store(const PropertyList::Array& templates) {
    fakes.sharedDefaults.setObject(templates, "fileTemplates");
  }
  FormatViewController& controllerFor(const FileTemplate& template_) {
    controller.emplace(fakes.sharedDefaults, fakes.mainBundle, room.util, template_);
    controller->setAppDelegate(&room.texts);
    controller->setSavePanel(&panel);
    controller->setDestDir("/d");
    controller->view();
    panel.setAccessoryView(controller->view());
    return *controller;
  }
  std::string selectedTitle() { return controller->formatButton()->selectedItem()->title; }

  PropertyList::Dictionary a = templateRecord("a", "txt");
  PropertyList::Dictionary b = templateRecord("b", "txt");
  PropertyList::Dictionary c = templateRecord("c", "");
  CreationRoom room{fakes};
  FakeSavePanel panel{fakes.log, nullptr};
  std::optional<FormatViewController> controller;
};

using Titles = std::vector<std::string>;

TEST_F(FormatView, ListsTheEnabledTemplatesInTheUsersOrder) {
  controllerFor(a);
  EXPECT_EQ(panel.menu(), (Titles{"A a", "A c"}));
  EXPECT_EQ(selectedTitle(), "A a");
}

TEST_F(FormatView, ListsADisabledTemplateThatWasAskedFor) {
  controllerFor(b);
  EXPECT_EQ(panel.menu(), (Titles{"A a", "A b", "A c"}));
  EXPECT_EQ(selectedTitle(), "A b");
}

TEST_F(FormatView, ATemplateWithoutTheSwitchCountsAsDisabled) {
  auto plain = templateRecord("plain", "txt");
  plain.erase("enabled");
  store({plain, a});
  controllerFor(a);
  EXPECT_EQ(panel.menu(), Titles{"A a"});
  controllerFor(plain);
  EXPECT_EQ(panel.menu(), (Titles{"A plain", "A a"}));
}

TEST_F(FormatView, OfEqualTemplatesTheLastIsSelected) {
  store({a, c, a, c});
  EXPECT_EQ(controllerFor(a).formatButton()->indexOfSelectedItem(), 2u);
}

TEST_F(FormatView, ATemplateIsOnlyEqualAsAWhole) {
  auto other = a;
  other.insert_or_assign("filePath", "/templates/other.txt");
  controllerFor(other);
  EXPECT_EQ(panel.menu(), (Titles{"A a", "A c"}));
  EXPECT_EQ(selectedTitle(), "A a") << "the first line, for lack of an equal one";
}

TEST_F(FormatView, ATemplateThatIsNotInTheListLeavesTheFirstSelected) {
  store({c, a});
  controllerFor(b);
  EXPECT_EQ(panel.menu(), (Titles{"A c", "A a"}));
  EXPECT_EQ(selectedTitle(), "A c");
}

TEST_F(FormatView, WithoutTemplatesTheButtonIsEmpty) {
  store({});
  controllerFor(a);
  EXPECT_TRUE(panel.menu().empty());
  fakes.sharedDefaults.removeObjectForKey("fileTemplates");
  controllerFor(a);
  EXPECT_TRUE(panel.menu().empty());
  controller->didChangeTemplate();
  EXPECT_EQ(panel.title, "") << "nothing was chosen";
}

TEST_F(FormatView, EachLineHasTheIconOfItsTypeAndStandsForItsTemplate) {
  controllerFor(a);
  const auto& items = controller->formatButton()->items();
  EXPECT_EQ(items[0].image.fileType, "txt");
  EXPECT_EQ(items[0].image.size, 16);
  EXPECT_EQ(items[0].representedObject, FileTemplate(a));
  EXPECT_EQ(items[1].image.fileType, "");
  EXPECT_EQ(items[1].representedObject, FileTemplate(c));
}

TEST_F(FormatView, TheButtonIsLabelled) {
  fakes.mainBundle.translations["&Template:"] = "&Vorlage:";
  EXPECT_EQ(controllerFor(a).view().label(), "&Vorlage:");
}

TEST_F(FormatView, IsFilledOnceWhenItIsLoaded) {
  FormatViewController unloaded(fakes.sharedDefaults, fakes.mainBundle, room.util, a);
  EXPECT_EQ(unloaded.formatButton(), nullptr);
  controllerFor(a);
  store({a});
  controller->view();
  EXPECT_EQ(panel.menu(), (Titles{"A a", "A c"}));
}

TEST_F(FormatView, ChangingTheTemplateChangesTitleNameAndType) {
  store({a, c, templateRecord("d", "md")});
  controllerFor(a);
  panel.choose("A d");
  EXPECT_EQ(panel.title, "New A d");
  EXPECT_EQ(panel.name, "d");
  EXPECT_EQ(panel.allowedFileTypes, Titles{"md"});
  EXPECT_TRUE(panel.extensionHidden);
}

TEST_F(FormatView, ChangingToATemplateWithoutASuffixAllowsAnyTypeAndShowsTheExtension) {
  controllerFor(a);
  panel.setAllowedFileTypes(Titles{"txt"});
  panel.setExtensionHidden(true);
  panel.choose("A c");
  EXPECT_EQ(panel.allowedFileTypes, std::nullopt);
  EXPECT_FALSE(panel.extensionHidden);
  EXPECT_EQ(panel.name, "c");
  fakes.fileManager.addFile("/d/c");
  panel.choose("A c");
  EXPECT_EQ(panel.name, "c-1");
}

TEST_F(FormatView, ChangingToATemplateWithoutASuffixProposesItsWholePrefix) {
  store({a, templateRecord("my.project", "")});
  controllerFor(a);
  panel.choose("A my.project");
  EXPECT_EQ(panel.name, "my.project");
  fakes.fileManager.addFile("/d/my.project");
  panel.choose("A my.project");
  EXPECT_EQ(panel.name, "my-1.project");
}

TEST_F(FormatView, ChangingHappensInThisOrder) {
  controllerFor(a);
  const std::size_t before = fakes.log.calls().size();
  panel.choose("A c");
  const auto& calls = fakes.log.calls();
  EXPECT_EQ(
      Titles(calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end()),
      (Titles{"setTitle", "setNameFieldStringValue", "setAllowedFileTypes", "setExtensionHidden"}));
}

TEST_F(FormatView, EachChangeProposesTheNameAnewAndATypedOneIsLost) {
  fakes.fileManager.addFile("/d/a.txt");
  controllerFor(a);
  panel.name = "typed";
  panel.choose("A c");
  EXPECT_EQ(panel.name, "c");
  panel.name = "typed again";
  panel.choose("A a");
  EXPECT_EQ(panel.name, "a-1");
}

TEST_F(FormatView, NamesAreFreeInTheFolderOfTheRequestWhereverThePanelIs) {
  fakes.fileManager.addFile("/d/c");
  fakes.fileManager.addDirectory("/elsewhere");
  controllerFor(a);
  panel.directory = "/elsewhere";
  panel.choose("A c");
  EXPECT_EQ(panel.name, "c-1");
}

TEST_F(FormatView, ChangingLeavesTheTemplateThatWasAskedFor) {
  controllerFor(a);
  panel.choose("A c");
  EXPECT_EQ(controller->selectedTemplate(), FileTemplate(a));
  EXPECT_EQ(selectedTitle(), "A c");
}

TEST_F(FormatView, ChangesNothingWithoutAPanel) {
  controllerFor(a).setSavePanel(nullptr);
  panel.choose("A c");
  EXPECT_EQ(panel.name, "");
}

}  // namespace
}  // namespace quennel::test
