#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "tests/contract/bus/Stages.h"
#include "tests/support/PrintPropertyList.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <typename Stage>
class ApplicationActionsContract : public StageTest<Stage> {
 protected:
  ApplicationActions::Handler record(const std::string& name) {
    return [this, name](const std::optional<PropertyList>& parameter) {
      const std::string* const text = parameter ? parameter->string() : nullptr;
      _performed.push_back(name + (text ? " " + *text : ""));
    };
  }
  ApplicationActions& actions() { return this->_stage->actions(); }

  std::vector<std::string> _performed;
};
TYPED_TEST_SUITE(ApplicationActionsContract, Stages, StageNames);

TYPED_TEST(ApplicationActionsContract, WhoeverAskedIsAnsweredWhenTheActionIsPerformed) {
  const auto registration = this->actions().addAction("one", this->record("one"));
  EXPECT_TRUE(this->_stage->activate("one"));
  EXPECT_THAT(this->_performed, ElementsAre("one"));
}

TYPED_TEST(ApplicationActionsContract, ActionsAreToldApartByTheirNames) {
  const auto one = this->actions().addAction("one", this->record("one"));
  const auto two = this->actions().addAction("two", this->record("two"));
  EXPECT_TRUE(this->_stage->activate("two"));
  EXPECT_TRUE(this->_stage->activate("one"));
  EXPECT_THAT(this->_performed, ElementsAre("two", "one"));
}

TYPED_TEST(ApplicationActionsContract, AnActionGetsItsParameter) {
  const auto registration = this->actions().addAction("one", this->record("one"));
  EXPECT_TRUE(this->_stage->activate("one", "text"));
  EXPECT_THAT(this->_performed, ElementsAre("one text"));
}

TYPED_TEST(ApplicationActionsContract, AnUnknownActionIsRefused) {
  const auto registration = this->actions().addAction("one", this->record("one"));
  EXPECT_FALSE(this->_stage->activate("three"));
  EXPECT_THAT(this->_performed, IsEmpty());
}

TYPED_TEST(ApplicationActionsContract, ARemovedActionIsRefused) {
  const auto other = this->actions().addAction("other", this->record("other"));
  this->actions().addAction("one", this->record("one")).reset();
  EXPECT_FALSE(this->_stage->activate("one"));
  EXPECT_THAT(this->_performed, IsEmpty());
}

TYPED_TEST(ApplicationActionsContract, TheLastHandlerOfANameCounts) {
  auto first = this->actions().addAction("one", this->record("first"));
  const auto second = this->actions().addAction("one", this->record("second"));
  first.reset();
  EXPECT_TRUE(this->_stage->activate("one"));
  EXPECT_THAT(this->_performed, ElementsAre("second"));
}

TYPED_TEST(ApplicationActionsContract, AnActionMayRemoveItself) {
  std::unique_ptr<Registration> registration;
  const auto other = this->actions().addAction("other", this->record("other"));
  registration = this->actions().addAction("one", [&](const auto&) {
    registration.reset();
    this->_performed.emplace_back("one");
  });
  EXPECT_TRUE(this->_stage->activate("one"));
  EXPECT_FALSE(this->_stage->activate("one"));
  EXPECT_THAT(this->_performed, ElementsAre("one"));
}

}  // namespace
}  // namespace quennel::test
