#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

#include "platform/linux/settings/PropertyListUserDefaults.h"
#include "tests/support/FakeUserDefaults.h"
#include "tests/support/PrintPropertyList.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;

/// One store of settings that any number of programs open.
class Store {
 public:
  virtual ~Store() = default;
  virtual std::unique_ptr<UserDefaults> open() = 0;
};

class MemoryStore : public Store {
 public:
  std::unique_ptr<UserDefaults> open() override {
    return std::make_unique<FakeUserDefaults>(_store);
  }

 private:
  FakeUserDefaults::Store _store = std::make_shared<Dictionary>();
};

class FileStore : public Store {
 public:
  std::unique_ptr<UserDefaults> open() override {
    return std::make_unique<PropertyListUserDefaults>(_folder / "domain.plist");
  }

 private:
  TemporaryDirectory _folder;
};

struct Implementation {
  std::string name;
  std::function<std::unique_ptr<Store>()> makeStore;
};

class UserDefaultsContract : public testing::TestWithParam<Implementation> {
 protected:
  std::unique_ptr<Store> store = GetParam().makeStore();
  std::unique_ptr<UserDefaults> defaults = store->open();
  std::unique_ptr<UserDefaults> other = store->open();
};

}  // namespace

TEST_P(UserDefaultsContract, AnAbsentKeyReadsAsNothingAndAsNo) {
  EXPECT_EQ(defaults->objectForKey("key"), std::nullopt);
  EXPECT_FALSE(defaults->boolForKey("key"));
  EXPECT_EQ(defaults->arrayForKey("key"), std::nullopt);
  EXPECT_EQ(defaults->dictionaryForKey("key"), std::nullopt);
}

TEST_P(UserDefaultsContract, AnAbsentKeyShowsItsRegisteredDefault) {
  defaults->registerDefaults({{"a", 1}, {"b", true}});
  EXPECT_EQ(defaults->objectForKey("a"), PropertyList(1));
  EXPECT_TRUE(defaults->boolForKey("b"));
}

TEST_P(UserDefaultsContract, ALaterRegistrationAddsAndOverrides) {
  defaults->registerDefaults({{"a", 1}, {"b", 1}});
  defaults->registerDefaults({{"b", 2}, {"c", 2}});
  EXPECT_EQ(defaults->objectForKey("a"), PropertyList(1));
  EXPECT_EQ(defaults->objectForKey("b"), PropertyList(2));
  EXPECT_EQ(defaults->objectForKey("c"), PropertyList(2));
}

TEST_P(UserDefaultsContract, RegisteredDefaultsAreNeverStored) {
  defaults->registerDefaults({{"a", 1}});
  defaults->setObject(2, "b");
  ASSERT_TRUE(defaults->synchronize());
  EXPECT_EQ(other->objectForKey("a"), std::nullopt);
}

TEST_P(UserDefaultsContract, WhatIsSetShowsAtOnceHereAndElsewhereOnceStored) {
  defaults->setObject("new", "key");
  EXPECT_EQ(defaults->objectForKey("key"), PropertyList("new"));
  EXPECT_EQ(other->objectForKey("key"), std::nullopt);
  ASSERT_TRUE(defaults->synchronize());
  EXPECT_EQ(defaults->objectForKey("key"), PropertyList("new"));
  EXPECT_EQ(other->objectForKey("key"), PropertyList("new"));
}

TEST_P(UserDefaultsContract, AStoredValueHidesTheRegisteredDefault) {
  defaults->registerDefaults({{"key", true}});
  defaults->setObject(false, "key");
  ASSERT_TRUE(defaults->synchronize());
  EXPECT_FALSE(defaults->boolForKey("key"));
}

TEST_P(UserDefaultsContract, RemovingAKeyShowsItsRegisteredDefaultAgain) {
  defaults->registerDefaults({{"key", 1}});
  defaults->setObject(2, "key");
  ASSERT_TRUE(defaults->synchronize());
  defaults->removeObjectForKey("key");
  EXPECT_EQ(defaults->objectForKey("key"), PropertyList(1));
  EXPECT_EQ(other->objectForKey("key"), PropertyList(2));
  ASSERT_TRUE(defaults->synchronize());
  EXPECT_EQ(defaults->objectForKey("key"), PropertyList(1));
  EXPECT_EQ(other->objectForKey("key"), std::nullopt);
}

TEST_P(UserDefaultsContract, StoringTouchesOnlyTheKeysThatWereSet) {
  defaults->setObject("mine", "a");
  defaults->setObject("mine", "b");
  ASSERT_TRUE(defaults->synchronize());
  other->setObject("theirs", "b");
  ASSERT_TRUE(other->synchronize());
  defaults->setObject("mine again", "a");
  ASSERT_TRUE(defaults->synchronize());
  EXPECT_EQ(other->objectForKey("a"), PropertyList("mine again"));
  EXPECT_EQ(defaults->objectForKey("b"), PropertyList("theirs"));
}

TEST_P(UserDefaultsContract, EveryReadSeesWhatAnyoneStoredBefore) {
  for (int value = 0; value < 50; ++value) {
    other->setObject(value, "key");
    ASSERT_TRUE(other->synchronize());
    ASSERT_EQ(defaults->objectForKey("key"), PropertyList(value));
  }
}

TEST_P(UserDefaultsContract, SynchronizingWithNothingSetSucceeds) {
  EXPECT_TRUE(defaults->synchronize());
}

TEST_P(UserDefaultsContract, AnUpdateGetsTheStoredValueAndStoresTheNewOne) {
  other->setObject(Array{"a"}, "list");
  ASSERT_TRUE(other->synchronize());
  const auto appendB = [](std::optional<PropertyList> list) -> std::optional<PropertyList> {
    Array array = *list->array();
    array.emplace_back("b");
    return array;
  };
  ASSERT_TRUE(defaults->updateObjectForKey("list", appendB));
  EXPECT_EQ(other->arrayForKey("list"), (Array{"a", "b"}));
  EXPECT_EQ(defaults->arrayForKey("list"), (Array{"a", "b"}));
}

TEST_P(UserDefaultsContract, AnUpdateOfAnAbsentKeyGetsNothingEvenWithARegisteredDefault) {
  defaults->registerDefaults({{"key", 1}});
  bool wasAbsent = false;
  ASSERT_TRUE(defaults->updateObjectForKey("key", [&](std::optional<PropertyList> value) {
    wasAbsent = !value;
    return PropertyList(2);
  }));
  EXPECT_TRUE(wasAbsent);
  EXPECT_EQ(other->objectForKey("key"), PropertyList(2));
}

TEST_P(UserDefaultsContract, AnUpdateThatReturnsNothingRemovesTheKey) {
  defaults->setObject(1, "key");
  ASSERT_TRUE(defaults->synchronize());
  ASSERT_TRUE(defaults->updateObjectForKey("key", [](auto) { return std::nullopt; }));
  EXPECT_EQ(other->objectForKey("key"), std::nullopt);
}

TEST_P(UserDefaultsContract, AnUpdateReplacesWhatWasSetForItsKeyAndLeavesWhatWasSetForOthers) {
  defaults->setObject("pending", "a");
  defaults->setObject("pending", "b");
  ASSERT_TRUE(defaults->updateObjectForKey("a", [](auto) { return PropertyList("updated"); }));
  EXPECT_EQ(defaults->objectForKey("a"), PropertyList("updated"));
  EXPECT_EQ(other->objectForKey("b"), std::nullopt);
  ASSERT_TRUE(defaults->synchronize());
  EXPECT_EQ(other->objectForKey("a"), PropertyList("updated"));
  EXPECT_EQ(other->objectForKey("b"), PropertyList("pending"));
}

TEST_P(UserDefaultsContract, AnExceptionOfAnUpdatePassesThroughAndChangesNothing) {
  defaults->setObject(1, "key");
  ASSERT_TRUE(defaults->synchronize());
  const auto fail = [](auto) -> std::optional<PropertyList> { throw std::runtime_error("no"); };
  EXPECT_THROW(defaults->updateObjectForKey("key", fail), std::runtime_error);
  EXPECT_EQ(other->objectForKey("key"), PropertyList(1));
  EXPECT_TRUE(other->updateObjectForKey("key", [](auto) { return PropertyList(2); }));
}

TEST_P(UserDefaultsContract, EveryKindOfValueComesBack) {
  const PropertyList::Date date{std::chrono::seconds(1'000'000'000)};
  const PropertyList value =
      Dictionary{{"yes", true},
                 {"no", false},
                 {"negative", -5},
                 {"least", std::numeric_limits<std::int64_t>::min()},
                 {"large", std::numeric_limits<std::uint64_t>::max()},
                 {"real", 0.1},
                 {"date", date},
                 {"early date", date - std::chrono::hours(24 * 365 * 100)},
                 {"first date", PropertyList::Date::min()},
                 {"date of 1681", PropertyList::Date{std::chrono::seconds(-9'098'179'200)}},
                 {"last date", PropertyList::Date::max()},
                 {"data", PropertyList::Data{std::string("\0\xFF\n", 3)}},
                 {"no data", PropertyList::Data{}},
                 {"text", " <a> & \"b\" \n\t é 😀 "},
                 {"no text", ""},
                 {"list", Array{1, Array{}, Dictionary{}, "x"}},
                 {"a key with <&> é", 1},
                 {"", 2}};
  defaults->setObject(value, "key");
  ASSERT_TRUE(defaults->synchronize());
  ASSERT_EQ(other->objectForKey("key"), value);
  const PropertyList back = *other->objectForKey("key");
  EXPECT_NE(back.objectForKey("yes")->boolean(), nullptr);
  EXPECT_NE(back.objectForKey("negative")->integer(), nullptr);
  EXPECT_NE(back.objectForKey("real")->real(), nullptr);
}

TEST_P(UserDefaultsContract, KeysMayHoldAnyText) {
  for (const std::string& key :
       std::vector<std::string>{"", "<&>", " spaces ", "ключ", "CF$UID", "a.b/c"}) {
    defaults->setObject(1, key);
    ASSERT_TRUE(defaults->synchronize()) << key;
    EXPECT_EQ(other->objectForKey(key), PropertyList(1)) << key;
    defaults->setObject(2, key);
    ASSERT_TRUE(defaults->synchronize()) << key;
    EXPECT_EQ(other->objectForKey(key), PropertyList(2)) << key;
    defaults->removeObjectForKey(key);
    ASSERT_TRUE(defaults->synchronize()) << key;
    EXPECT_EQ(other->objectForKey(key), std::nullopt) << key;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Implementations, UserDefaultsContract,
    testing::Values(Implementation{"Fake", [] { return std::make_unique<MemoryStore>(); }},
                    Implementation{"PropertyListFile",
                                   [] { return std::make_unique<FileStore>(); }}),
    [](const auto& information) { return information.param.name; });

}  // namespace quennel::test
