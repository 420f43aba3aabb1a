#include <gtest/gtest.h>

#include <cerrno>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/filemanagers/ExtractionObject.h"
#include "tests/support/PrivateBus.h"

namespace quennel::test {
namespace {

struct CloseConnection {
  void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
};
using Connection = std::unique_ptr<sd_bus, CloseConnection>;

class AnExtractionObject : public testing::Test {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    _daemon = std::make_unique<PrivateBus>();
    _source = connect();
    _target = connect();
    _object = ExtractionObject::publish(_source.get(), [this](const std::string& folder) {
      _folder = folder;
      return _failure;
    });
    ASSERT_TRUE(_object);
  }

  /// What the target gets to know of its call: 0, or the number of the failure.
  int extractTo(const std::string& folder) {
    BusSlot call;
    std::optional<int> result;
    sd_bus_slot* slot = nullptr;
    const int sent = sd_bus_call_method_async(
        _target.get(), &slot, _object->busName().value_or("").c_str(), ExtractionObject::path,
        "org.kde.ark.DndExtract", "extractSelectedFilesTo", noteResult, &result, "s",
        folder.c_str());
    EXPECT_GE(sent, 0);
    call.reset(slot);
    while (sent >= 0 && !result) {
      processOne(_source.get());
      processOne(_target.get());
    }
    return result.value_or(-1);
  }

  std::optional<std::string> _folder;
  int _failure = 0;

 private:
  Connection connect() const {
    sd_bus* bus = nullptr;
    EXPECT_GE(sd_bus_new(&bus), 0);
    Connection connection(bus);
    EXPECT_GE(sd_bus_set_address(bus, _daemon->address().c_str()), 0);
    EXPECT_GE(sd_bus_set_bus_client(bus, 1), 0);
    EXPECT_GE(sd_bus_start(bus), 0);
    return connection;
  }

  static void processOne(sd_bus* bus) {
    constexpr std::uint64_t oneMillisecond = 1000;
    if (sd_bus_process(bus, nullptr) == 0) {
      EXPECT_GE(sd_bus_wait(bus, oneMillisecond), 0);
    }
  }

  static int noteResult(sd_bus_message* reply, void* result, sd_bus_error*) {
    *static_cast<std::optional<int>*>(result) = sd_bus_message_get_errno(reply);
    return 0;
  }

  std::unique_ptr<PrivateBus> _daemon;
  Connection _source;
  Connection _target;
  std::unique_ptr<ExtractionObject> _object;
};

TEST_F(AnExtractionObject, IsToldTheFolder) {
  EXPECT_EQ(extractTo("/some/folder"), 0);
  EXPECT_EQ(_folder, "/some/folder");
}

TEST_F(AnExtractionObject, FailsForTheTargetWhenNothingCanBeWrittenThere) {
  _failure = EACCES;
  EXPECT_EQ(extractTo("/some/folder"), EACCES);
}

}  // namespace
}  // namespace quennel::test
