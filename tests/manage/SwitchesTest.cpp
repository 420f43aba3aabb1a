#include <gtest/gtest.h>

#include <cerrno>

#include "manage/Switches.h"
#include "tests/support/FakeUserDefaults.h"
#include "tests/support/PrintPropertyList.h"

namespace quennel::test {

TEST(SwitchesTest, SwitchIsOnOnceItIsTurnedOn) {
  FakeUserDefaults settings;
  Switches switches(settings);
  EXPECT_FALSE(switches.isOn(playSoundKey));
  EXPECT_TRUE(switches.set(playSoundKey, true));
  EXPECT_TRUE(switches.isOn(playSoundKey));
  EXPECT_EQ(settings.stored().at(playSoundKey), PropertyList(true));
  EXPECT_TRUE(switches.set(playSoundKey, false));
  EXPECT_FALSE(switches.isOn(playSoundKey));
}

TEST(SwitchesTest, OnlySwitchesCountAsSuch) {
  EXPECT_TRUE(Switches::isSwitch(skipFilenameKey));
  EXPECT_FALSE(Switches::isSwitch(fileTemplatesKey));
}

TEST(SwitchesTest, DefaultShowsWhereNothingWasSet) {
  FakeUserDefaults settings;
  settings.registerDefaults({{skipFilenameKey, true}});
  EXPECT_TRUE(Switches(settings).isOn(skipFilenameKey));
  EXPECT_EQ(Switches(settings).valueOf(skipFilenameKey), PropertyList(true));
  EXPECT_EQ(Switches(settings).valueOf("other"), std::nullopt);
}

TEST(SwitchesTest, SettingsThatCannotBeStoredAreTheFailure) {
  FakeUserDefaults settings;
  settings.setStoreError(Error{EROFS});
  const auto stored = Switches(settings).set(playSoundKey, true);
  ASSERT_FALSE(stored);
  EXPECT_EQ(stored.failure().reason, Failure::Reason::SettingsNotStored);
  EXPECT_EQ(stored.failure().error.code, EROFS);
}

}  // namespace quennel::test
