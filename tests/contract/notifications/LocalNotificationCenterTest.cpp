#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "platform/linux/notifications/LocalNotificationCenter.h"

namespace quennel::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ALocalNotificationCenter : public ::testing::Test {
 protected:
  NotificationCenter::Handler noteAs(const std::string& observer) {
    return [this, observer](const auto& notification) {
      _seen.push_back(observer + " saw " + notification.name);
    };
  }

  int _object = 0;
  int _otherObject = 0;
  std::vector<std::string> _seen;
  LocalNotificationCenter _center;
};

TEST_F(ALocalNotificationCenter, CallsObserversOfTheNameInTheirOrder) {
  const auto one = _center.addObserver("name", nullptr, noteAs("one"));
  const auto other = _center.addObserver("other name", nullptr, noteAs("other"));
  const auto two = _center.addObserver("name", nullptr, noteAs("two"));
  _center.postNotification({"name", &_object, {}});
  EXPECT_THAT(_seen, ElementsAre("one saw name", "two saw name"));
}

TEST_F(ALocalNotificationCenter, CallsObserversOfTheObjectAndOfAnyObject) {
  const auto one = _center.addObserver("name", &_object, noteAs("one"));
  const auto other = _center.addObserver("name", &_otherObject, noteAs("other"));
  const auto any = _center.addObserver("name", nullptr, noteAs("any"));
  _center.postNotification({"name", &_object, {}});
  EXPECT_THAT(_seen, ElementsAre("one saw name", "any saw name"));
}

TEST_F(ALocalNotificationCenter, HandsOverObjectAndUserInfo) {
  NotificationCenter::Notification seen;
  const auto registration =
      _center.addObserver("name", nullptr, [&](const auto& notification) { seen = notification; });
  _center.postNotification({"name", &_object, {{"path", "/file"}}});
  EXPECT_EQ(seen.object, &_object);
  EXPECT_EQ(seen.userInfo.at("path"), "/file");
}

TEST_F(ALocalNotificationCenter, DoesNotCallAnObserverWhoseRegistrationHasEnded) {
  auto registration = _center.addObserver("name", nullptr, noteAs("one"));
  registration.reset();
  _center.postNotification({"name", &_object, {}});
  EXPECT_THAT(_seen, IsEmpty());
}

TEST_F(ALocalNotificationCenter, MindsObserversThatComeAndGoWhileItPosts) {
  std::unique_ptr<Registration> late;
  std::unique_ptr<Registration> second;
  const auto first = _center.addObserver("name", nullptr, [&](const auto&) {
    second.reset();
    late = _center.addObserver("name", nullptr, noteAs("late"));
  });
  second = _center.addObserver("name", nullptr, noteAs("second"));
  _center.postNotification({"name", &_object, {}});
  EXPECT_THAT(_seen, IsEmpty());
}

TEST_F(ALocalNotificationCenter, LetsAnObserverEndItsOwnRegistration) {
  std::unique_ptr<Registration> registration;
  registration = _center.addObserver("name", nullptr, [&](const auto&) {
    registration.reset();
    _seen.push_back("once");
  });
  _center.postNotification({"name", &_object, {}});
  _center.postNotification({"name", &_object, {}});
  EXPECT_THAT(_seen, ElementsAre("once"));
}

}  // namespace
}  // namespace quennel::test
