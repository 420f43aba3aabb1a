#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/e2e/HelperTest.h"

namespace quennel::test {
namespace {

/// A Wayland session without a screen.
class WaylandSession {
 public:
  WaylandSession() {
    std::vector<std::string> arguments;
    if (geteuid() == 0) {  // the compositor refuses to run as root
      const uid_t nobody = 65534;
      EXPECT_EQ(chown(_runtime.path().c_str(), nobody, nobody), 0);
      arguments = {"setpriv", "--reuid=65534", "--regid=65534", "--clear-groups"};
    }
    arguments.insert(arguments.end(), {"sway", "--config", "/dev/null"});
    _compositor.emplace(arguments, Process::Environment{{"XDG_RUNTIME_DIR", _runtime.path()},
                                                        {"HOME", _runtime.path()},
                                                        {"WLR_BACKENDS", "headless"},
                                                        {"WLR_LIBINPUT_NO_DEVICES", "1"},
                                                        {"WLR_RENDERER", "pixman"},
                                                        {"DISPLAY", ""},
                                                        {"WAYLAND_DISPLAY", ""}});
    EXPECT_TRUE(eventually([this] { return !display().empty(); })) << _compositor->errorOutput();
  }

  /// The path of the socket; empty when there is none.
  std::string display() const {
    for (const auto& entry : std::filesystem::directory_iterator(_runtime.path())) {
      if (entry.is_socket() && entry.path().filename().string().starts_with("wayland-")) {
        return entry.path();
      }
    }
    return "";
  }

 private:
  TemporaryDirectory _runtime;
  std::optional<Process> _compositor;
};

class WaylandFlow : public HelperTest {
 protected:
  void SetUp() override {
    for (const char* const program : {"sway", "setpriv"}) {
      if (!isInstalled(program)) {
        GTEST_SKIP() << "no " << program;
      }
    }
    _session.emplace();
    HelperTest::SetUp();
  }

  Process::Environment environment() const override {
    auto variables = HelperTest::environment();
    variables["WAYLAND_DISPLAY"] = _session->display();
    variables["WAYLAND_DEBUG"] = "1";  // notes every call on standard error
    for (const char* const name : {"QT_QPA_PLATFORM", "QT_QPA_PLATFORMTHEME"}) {
      variables[name] = "";
    }
    return variables;
  }

  /// Asks for a file with a token and waits until a window asks for the keyboard with it.
  void expectTokenIsUsed(const std::string& query) {
    const Process helper = startReadyHelper();
    open({requestFor(folder(), query)}, "token-42");
    EXPECT_TRUE(eventually([&] {
      return helper.errorOutput().find(".activate(\"token-42\", wl_surface@") != std::string::npos;
    })) << helper.errorOutput();
  }

  /// How many the helper has asked for.
  static std::size_t countWindows(const Process& helper) {
    const std::string calls = helper.errorOutput();
    std::size_t count = 0;
    for (auto place = calls.find(".get_toplevel("); place != std::string::npos;
         place = calls.find(".get_toplevel(", place + 1)) {
      ++count;
    }
    return count;
  }

 private:
  std::optional<WaylandSession> _session;
};

TEST_F(WaylandFlow, ThePanelComesToTheFrontByTheTokenOfItsRequest) {
  set("skipFilename", false);
  expectTokenIsUsed("0");
}

TEST_F(WaylandFlow, AnAlertComesToTheFrontByTheTokenOfItsRequest) { expectTokenIsUsed("99"); }

TEST_F(WaylandFlow, TheQuitCommandEndsTheHelperAtEveryDepthOfAlerts) {
  for (const std::size_t depth : {1, 3, 8}) {
    SCOPED_TRACE(depth);
    Process helper = startReadyHelper();
    open(std::vector(depth, requestFor(folder(), "99")));
    ASSERT_TRUE(eventually([&] { return countWindows(helper) == depth; })) << helper.errorOutput();
    command("quit");
    ASSERT_EQ(helper.wait(), 0);
  }
}

}  // namespace
}  // namespace quennel::test
