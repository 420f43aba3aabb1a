#include <sys/stat.h>
#include <systemd/sd-bus.h>

#include <functional>
#include <memory>

#include "tests/ctl/QuennelctlTest.h"
#include "tests/support/Deadline.h"
#include "tests/support/PrivateBus.h"

namespace quennel::test {
namespace {

constexpr auto helperName = "net.brellow.QuennelHelper";

/// Stands in for the helper: owns its name or not, and notes what it is asked and told.
class HelperStandIn {
 public:
  explicit HelperStandIn(const std::string& address) {
    sd_bus* bus = nullptr;
    check(sd_bus_new(&bus));
    _bus.reset(bus);
    check(sd_bus_set_address(bus, address.c_str()));
    check(sd_bus_set_bus_client(bus, 1));
    check(sd_bus_start(bus));
    check(sd_bus_match_signal(bus, nullptr, nullptr, "/net/brellow/DistributedNotificationCenter",
                              "net.brellow.DistributedNotificationCenter", "Posted", noteSignal,
                              this));
  }

  void own() {
    check(sd_bus_request_name(_bus.get(), helperName, 0));
    check(sd_bus_add_object(_bus.get(), nullptr, "/net/brellow/QuennelHelper", noteCall, this));
  }

  void setRefusing() { _isRefusing = true; }

  bool serveUntil(const std::function<bool()>& condition) {
    const Deadline deadline;
    while (!condition()) {
      if (deadline.hasPassed()) {
        return false;
      }
      if (sd_bus_process(_bus.get(), nullptr) == 0) {
        sd_bus_wait(_bus.get(), 10'000);
      }
    }
    return true;
  }

  std::vector<std::string> calls;
  std::vector<std::string> signals;

 private:
  struct Close {
    void operator()(sd_bus* bus) const { sd_bus_flush_close_unref(bus); }
  };

  static void check(int result) {
    if (result < 0) {
      throw std::system_error(-result, std::generic_category());
    }
  }

  static int noteCall(sd_bus_message* message, void* object, sd_bus_error* error) {
    auto& self = *static_cast<HelperStandIn*>(object);
    if (sd_bus_message_is_method_call(message, "org.freedesktop.Application", "ActivateAction")) {
      return self.noteAction(message, error);
    }
    if (!sd_bus_message_is_method_call(message, "org.freedesktop.Application", "Open")) {
      return 0;
    }
    if (self._isRefusing) {
      return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, "not today");
    }
    const char* url = nullptr;
    check(sd_bus_message_enter_container(message, 'a', "s"));
    check(sd_bus_message_read(message, "s", &url));
    std::string noted = url;
    check(sd_bus_message_exit_container(message));
    check(sd_bus_message_enter_container(message, 'a', "{sv}"));
    const char* key = nullptr;
    const char* value = nullptr;
    while (sd_bus_message_read(message, "{sv}", &key, "s", &value) > 0) {
      noted += std::string(" ") + key + "=" + value;
    }
    self.calls.push_back(noted);
    return sd_bus_reply_method_return(message, "");
  }

  int noteAction(sd_bus_message* message, sd_bus_error* error) {
    if (_isRefusing) {
      return sd_bus_error_set(error, SD_BUS_ERROR_FAILED, "not today");
    }
    const char* name = nullptr;
    check(sd_bus_message_read(message, "s", &name));
    calls.emplace_back(name);
    return sd_bus_reply_method_return(message, "");
  }

  static int noteSignal(sd_bus_message* message, void* object, sd_bus_error*) {
    const char* name = nullptr;
    const char* command = nullptr;
    check(sd_bus_message_read(message, "ss", &name, &command));
    static_cast<HelperStandIn*>(object)->signals.push_back(std::string(name) + " " + command);
    return 0;
  }

  std::unique_ptr<sd_bus, Close> _bus;
  bool _isRefusing = false;
};

class HelperTest : public QuennelctlTest {
 protected:
  void SetUp() override {
    if (!PrivateBus::isAvailable()) {
      GTEST_SKIP() << PrivateBus::whatIsMissing;
    }
    bus = std::make_unique<PrivateBus>();
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus->address();
    helper = std::make_unique<HelperStandIn>(bus->address());
    settings.setObject(PropertyList::Array{PropertyList::Dictionary{{"title", "a"}},
                                           PropertyList::Dictionary{{"title", "b"}}},
                       "fileTemplates");
    ASSERT_TRUE(settings.synchronize());
  }

  /// Runs the program while the stand-in serves the bus.
  Answer serve(const Words& words) {
    Process program = start(words);
    EXPECT_TRUE(helper->serveUntil([&] { return !program.isRunning(); }));
    const int status = program.wait().value_or(-1000);
    return {status, program.output(), program.errorOutput()};
  }

  std::unique_ptr<PrivateBus> bus;
  std::unique_ptr<HelperStandIn> helper;
};

}  // namespace

TEST_F(HelperTest, NewSendsTheFolderAndTheIndex) {
  helper->own();
  const Answer answer = serve({"new", "1", folder.path() + "/"});
  EXPECT_EQ(answer.status, 0) << answer.errors;
  EXPECT_EQ(answer.output, "");
  EXPECT_EQ(helper->calls, Words{"quennel://" + folder.path() + "?1"});
}

TEST_F(HelperTest, NewEscapesWhatAURLCannotHold) {
  helper->own();
  ASSERT_EQ(mkdir((folder / "100% \xFF?#").c_str(), 0700), 0);
  EXPECT_EQ(serve({"new", "0", folder / "100% \xFF?#"}).status, 0);
  EXPECT_EQ(helper->calls, Words{"quennel://" + folder / "100%25%20%FF%3F%23?0"});
}

TEST_F(HelperTest, NewHandsOverTheTokenThatLetsAWindowComeToTheFront) {
  helper->own();
  environment["XDG_ACTIVATION_TOKEN"] = "token";
  environment["DESKTOP_STARTUP_ID"] = "id";
  EXPECT_EQ(serve({"new", "0", folder.path()}).status, 0);
  EXPECT_EQ(helper->calls, Words{"quennel://" + folder.path() +
                                 "?0 activation-token=token desktop-startup-id=id"});
}

TEST_F(HelperTest, NewRefusesWhatIsNoFolder) {
  helper->own();
  EXPECT_EQ(serve({"new", "0", folder / "missing"}).status, 1);
  const Answer answer = serve({"new", "0", makeFile("file")});
  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(answer.errors, "quennelctl: " + folder / "file" + " is not a folder\n");
  EXPECT_TRUE(helper->calls.empty());
}

TEST_F(HelperTest, NewRefusesATemplateThatIsNotThere) {
  helper->own();
  EXPECT_EQ(serve({"new", "2", folder.path()}).status, 1);
  EXPECT_EQ(serve({"new", "x", folder.path()}).status, 2);
  EXPECT_TRUE(helper->calls.empty());
}

TEST_F(HelperTest, NewWithoutAHelperSaysThatTheBusCannotStartIt) {
  const Answer answer = serve({"new", "0", folder.path()});
  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(answer.errors,
            "quennelctl: the helper is not running and the session bus does not know how to start "
            "it\n");
}

TEST_F(HelperTest, NewTellsWhatTheHelperAnswers) {
  helper->own();
  helper->setRefusing();
  EXPECT_EQ(serve({"new", "0", folder.path()}).errors,
            "quennelctl: the helper did not take the request: not today\n");
}

TEST_F(HelperTest, NotifyPostsTheCommand) {
  helper->own();
  const Answer answer = serve({"notify", "quit"});
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.errors, "");
  EXPECT_TRUE(helper->serveUntil([&] { return !helper->signals.empty(); }));
  EXPECT_EQ(helper->signals, Words{"net.brellow.QuennelHelper quit"});
}

TEST_F(HelperTest, NotifyRefusesWhatCannotTravel) {
  EXPECT_EQ(serve({"notify", ""}).status, 2);
  EXPECT_EQ(serve({"notify", "\xFF"}).errors,
            "quennelctl: '\\xff' is no command\nSee 'quennelctl notify --help'.\n");
}

TEST_F(HelperTest, NotifySaysWhenNoHelperIsRunning) {
  const Answer answer = serve({"notify", "quit"});
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.errors, "The helper is not running.\n");
}

TEST_F(HelperTest, EveryChangeOfTheTemplatesIsAnnounced) {
  helper->own();
  const std::string file = makeFile("a");
  std::size_t count = 0;
  for (const Words& words :
       {Words{"template", "add", file}, Words{"template", "edit", "0", "--title=x"},
        Words{"template", "move", "0", "1"}, Words{"template", "remove", "0"}}) {
    EXPECT_EQ(serve(words).status, 0);
    ++count;
    EXPECT_TRUE(helper->serveUntil([&] { return helper->signals.size() >= count; }));
  }
  EXPECT_EQ(helper->signals, Words(count, "net.brellow.QuennelHelper fileTemplates"));
}

TEST_F(HelperTest, AChangeThatFailsIsNotAnnounced) {
  helper->own();
  EXPECT_EQ(serve({"template", "remove", "7"}).status, 1);
  EXPECT_EQ(serve({"notify", "last"}).status, 0);
  EXPECT_TRUE(helper->serveUntil([&] { return !helper->signals.empty(); }));
  EXPECT_EQ(helper->signals, Words{"net.brellow.QuennelHelper last"});
}

TEST_F(HelperTest, AHelperThatIsRunningLearnsOfEveryChangeOfTheGrants) {
  helper->own();
  environment["XDG_DATA_HOME"] = folder / "data";
  EXPECT_EQ(serve({"grant", folder.path()}).status, 0);
  EXPECT_EQ(helper->calls, Words{"restart-access"});
  EXPECT_EQ(serve({"revoke", folder.path()}).status, 0);
  EXPECT_EQ(helper->calls, (Words{"restart-access", "restart-access"}));
  EXPECT_EQ(serve({"revoke", folder.path()}).status, 1);
  EXPECT_EQ(helper->calls.size(), 2U);
}

TEST_F(HelperTest, AChangeOfTheGrantsThatTheHelperDoesNotTakeUpIsAFailureAndIsRecorded) {
  helper->own();
  helper->setRefusing();
  environment["XDG_DATA_HOME"] = folder / "data";
  const Answer answer = serve({"grant", folder.path()});
  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(answer.errors,
            "quennelctl: done, but the helper that is running does not know of it (the helper "
            "refuses: not today)\n");
  EXPECT_EQ(run({"grants", "--plain"}).output, folder.path() + "\t" + folder.path() + "\n");
}

TEST_F(HelperTest, AChangeOfTheGrantsStartsNoHelper) {
  bus = std::make_unique<PrivateBus>(PrivateBus::Services{{helperName, folder / "missing"}});
  environment["DBUS_SESSION_BUS_ADDRESS"] = bus->address();
  environment["XDG_DATA_HOME"] = folder / "data";
  for (const char* const command : {"grant", "revoke"}) {
    const Answer answer = run({command, folder.path()});
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.errors, "");
  }
}

TEST_F(HelperTest, WithoutASessionBusTemplatesCanBeChangedAndRequestsFail) {
  environment["DBUS_SESSION_BUS_ADDRESS"] = "";
  EXPECT_EQ(run({"template", "remove", "0"}).status, 0);
  const Answer answer = run({"new", "0", folder.path()});
  EXPECT_EQ(answer.status, 1);
  EXPECT_TRUE(answer.errors.starts_with("quennelctl: there is no session bus")) << answer.errors;
  EXPECT_EQ(run({"notify", "quit"}).status, 1);
}

}  // namespace quennel::test
