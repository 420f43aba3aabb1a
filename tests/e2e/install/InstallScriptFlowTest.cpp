// The user installs the script by hand: the window, the mouse and real file managers.

#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "app/AppDelegate.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/files/PosixFileManager.h"
#include "platform/linux/scope/ConfinedFileManager.h"
#include "platform/linux/scope/LandlockSecurityScope.h"
#include "platform/linux/tasks/LinuxUserScripts.h"
#include "platform/linux/ui/LazyUserInterface.h"
#include "tests/e2e/folders/FileManagerSession.h"
#include "tests/support/Deadline.h"
#include "tests/support/FakePlatform.h"
#include "tests/support/LoopMount.h"

namespace quennel::test {
namespace {

constexpr auto windowTitle = "Install QuennelHelper.sh";

std::string contentsOf(const std::string& path) {
  std::ostringstream contents;
  contents << std::ifstream(path).rdbuf();
  return contents.str();
}

unsigned modeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

/// The part of the helper that installs the script; all of it is real that the user sees, and that
/// writes. Its bundle is in the home folder, where its script is not executable.
class Helper {
 public:
  explicit Helper(const std::string& home) {
    _source = home + "/QuennelHelper.sh";
    std::filesystem::copy_file(QUENNEL_SCRIPT, _source);
    std::filesystem::permissions(_source, std::filesystem::perms(0644));
    _fakes.mainBundle.resources = {{"QuennelHelper.sh", _source},
                                   {"get-finder-path.scpt", QUENNEL_FINDER_PATH}};
  }

  const std::string& source() const { return _source; }
  std::string scriptsFolder() { return *_scripts.applicationScriptsDirectory(nullptr); }
  std::string installedScript() { return scriptsFolder() + "/QuennelHelper.sh"; }

  /// Shows the window while `user` acts on a thread of their own; answers whether the script is
  /// installed.
  bool installManually(const std::function<void()>& user) {
    std::thread thread(user);
    const bool isInstalled = _delegate.installScriptManually();
    thread.join();
    return isInstalled;
  }

  /// As when the session ends; for the user's thread.
  void terminate() {
    _loop.dispatchAsync([this] { _loop.terminate(); });
  }

  /// The answer of the installed script.
  std::string folderInFront() {
    std::string folder;
    const FileTemplate any{PropertyList::Dictionary()};
    _delegate.getFinderPathWithTemplate(any, [this, &folder](const std::string& path, const auto&) {
      _loop.dispatchAsync([this, &folder, path] {
        folder = path;
        _loop.terminate();
      });
    });
    _loop.dispatchAfter(Deadline::standard, [this] { _loop.terminate(); });
    _loop.run();
    return folder;
  }

 private:
  FakeDesktop _fakes;
  EventRunLoop _loop;
  PosixFileManager _files;
  LandlockSecurityScope _scope;
  ConfinedFileManager _confinedFiles{_files, _scope};
  LazyUserInterface _userInterface{_loop, _fakes.mainBundle, USER_INTERFACE_MODULE};
  LinuxUserScripts _scripts{_fakes.mainBundle};
  AppDelegate _delegate{platformOf(_fakes, {.runLoop = &_loop,
                                            .fileManager = &_confinedFiles,
                                            .securityScope = &_scope,
                                            .userInterface = &_userInterface,
                                            .userScripts = &_scripts})};
  std::string _source;
};

class InstallScript : public testing::TestWithParam<FileManagerSession::FileManager> {
 protected:
  void SetUp() override {
    if (const auto missing = FileManagerSession::missingProgram(GetParam())) {
      GTEST_SKIP() << *missing << " is not installed";
    }
    if (!isInstalled("xclip")) {
      GTEST_SKIP() << "xclip is not installed";
    }
    session = std::make_unique<FileManagerSession>(GetParam());
    helper = std::make_unique<Helper>(session->home());
  }

  const XServer& desktop() const { return session->server(); }

  /// Opens a window of the file manager at the left of the screen.
  void openFolder(const std::string& path) {
    folderWindow = session->openFolder(path);
    desktop().moveWindow(folderWindow, {0, 0});
  }

  /// Waits for the install window and puts it at the right of the screen.
  void findInstallWindow() {
    installWindow = desktop().waitForActiveWindow(windowTitle);
    ASSERT_FALSE(installWindow.empty());
    desktop().moveWindow(installWindow, {820, 100});
  }

  Point icon() const {
    return desktop().onScreen(installWindow, {desktop().windowSize(installWindow).first / 2, 88});
  }
  /// Beside what a folder has in it.
  Point placeInFolder() const {
    const auto [width, height] = desktop().windowSize(folderWindow);
    return desktop().onScreen(folderWindow, {width * 3 / 5, height * 4 / 5});
  }

  /// Drags the icon into the file manager's window, again if that does not lead to `outcome`: a
  /// window that has just come up may not take drops yet.
  void dragIcon(const std::function<bool()>& outcome) {
    const auto attempt = [&] {
      desktop().drag(icon(), placeInFolder());
      return eventually(outcome, Deadline(std::chrono::seconds(3)));
    };
    EXPECT_TRUE(eventually(attempt));
  }

  /// Shows the window while `user` acts in it, who closes it in the end if it is still there.
  /// Answers whether the script is installed.
  bool installManually(const std::function<void()>& user) {
    return helper->installManually([this, &user] {
      findInstallWindow();
      user();
      while (desktop().countWindows(windowTitle) > 0) {
        desktop().click(installWindow, 5, 5);
        press("Escape");
      }
    });
  }

  void press(const std::string& key) const { desktop().pressKey(key); }
  static std::string clipboard() {
    Process process({"xclip", "-out", "-selection", "clipboard"});
    process.wait();
    return process.output();
  }

  std::unique_ptr<FileManagerSession> session;
  std::unique_ptr<Helper> helper;
  std::string folderWindow;
  std::string installWindow;
};

TEST_P(InstallScript, ByDraggingItIntoItsFolder) {
  const std::string other = session->makeFolder("other");
  openFolder(other);
  openFolder(helper->scriptsFolder());
  EXPECT_TRUE(installManually(
      [this] { dragIcon([this] { return desktop().countWindows(windowTitle) == 0; }); }));
  EXPECT_EQ(contentsOf(helper->installedScript()), contentsOf(QUENNEL_SCRIPT));
  EXPECT_EQ(modeOf(helper->installedScript()), 0755u);
  // Some file managers can be asked only with the pointer over them, where nothing covers them.
  desktop().moveWindow(folderWindow, {600, 300});
  EXPECT_EQ(helper->folderInFront(), other);
}

TEST_P(InstallScript, InAWindowThatStaysInFrontOfAFileManagerThatComesLate) {
  installManually([this] {
    openFolder(helper->scriptsFolder());
    EXPECT_TRUE(eventually([this] { return desktop().isAbove(installWindow, folderWindow); }));
    // The window manager has dealt with all that the file manager asked for.
    desktop().moveWindow(folderWindow, {200, 60});
    EXPECT_TRUE(desktop().isAbove(installWindow, folderWindow));
  });
}

TEST_P(InstallScript, ByDraggingItOverAnOlderOne) {
  openFolder(helper->scriptsFolder());
  std::ofstream(helper->installedScript()) << "an older script, longer than the new one will be";
  std::filesystem::permissions(helper->installedScript(), std::filesystem::perms(0600));
  EXPECT_TRUE(installManually(
      [this] { dragIcon([this] { return desktop().countWindows(windowTitle) == 0; }); }));
  EXPECT_EQ(contentsOf(helper->installedScript()), contentsOf(QUENNEL_SCRIPT));
  EXPECT_EQ(modeOf(helper->installedScript()), 0755u);
}

TEST_P(InstallScript, NotByDraggingItIntoAnotherFolder) {
  openFolder(session->makeFolder("other"));
  const std::string copy = session->home() + "/other/QuennelHelper.sh";
  // Nautilus copies by itself and does not say where.
  const unsigned modeElsewhere = GetParam() == "nautilus" ? 0644 : 0755;
  EXPECT_FALSE(installManually([&] {
    dragIcon([&] { return modeOf(copy) == modeElsewhere; });
    EXPECT_EQ(contentsOf(copy), contentsOf(QUENNEL_SCRIPT));
    EXPECT_EQ(desktop().countWindows(windowTitle), 1u);
  }));
}

TEST_P(InstallScript, NotWhenTheHelperTerminatesWhileTheIconIsDragged) {
  openFolder(helper->scriptsFolder());
  EXPECT_FALSE(installManually([this] {
    desktop().beginDrag(icon(), placeInFolder());
    helper->terminate();
    EXPECT_TRUE(eventually([this] { return desktop().countWindows(windowTitle) == 0; }));
  }));
  EXPECT_FALSE(std::filesystem::exists(helper->installedScript()));
}

TEST_P(InstallScript, NotWhereItCannotBeWritten) {
  openFolder(helper->scriptsFolder());
  std::filesystem::create_directories(helper->installedScript() + "/in the way");
  installManually([this] {
    dragIcon([this] { return desktop().countWindows("Quennel") == 1; });
    desktop().waitForActiveWindow("Quennel");
    press("Return");
    EXPECT_EQ(desktop().waitForActiveWindow(windowTitle), installWindow);
  });
  EXPECT_TRUE(std::filesystem::is_directory(helper->installedScript()));
}

/// For a file manager that offers every folder as a target, even one that cannot be written;
/// Thunar, for one, takes no drop there.
class InstallScriptAnywhere : public InstallScript {};

TEST_P(InstallScriptAnywhere, NotIntoAVolumeMountedForReading) {
  const LoopMount volume("tmpfs", 1);
  if (!volume) {
    GTEST_SKIP() << volume.reason();
  }
  ASSERT_EQ(
      ::mount(nullptr, volume.path().c_str(), nullptr, MS_REMOUNT | MS_RDONLY | MS_BIND, nullptr),
      0);
  openFolder(volume.path());
  EXPECT_FALSE(installManually([this] {
    dragIcon([this] { return desktop().countWindows("Quennel") == 1; });
    desktop().waitForActiveWindow("Quennel");
    press("Return");
    EXPECT_EQ(desktop().waitForActiveWindow(windowTitle), installWindow);
  }));
}

TEST_P(InstallScript, ByPastingTheCommandIntoAShell) {
  openFolder(helper->scriptsFolder());
  EXPECT_TRUE(installManually([this] {
    desktop().click(installWindow, 70, desktop().windowSize(installWindow).second - 30);
    EXPECT_TRUE(eventually([this] {
      press("ctrl+c");
      return clipboard().starts_with("cp '");
    }));
    press("Escape");
    Process shell({"sh"}, {}, clipboard() + "\n");
    EXPECT_EQ(shell.wait(), 0) << shell.errorOutput();
  }));
  EXPECT_EQ(contentsOf(helper->installedScript()), contentsOf(QUENNEL_SCRIPT));
}

TEST_P(InstallScript, WithItsPathFromTheClipboard) {
  openFolder(helper->scriptsFolder());
  installManually([this] {
    const auto [width, height] = desktop().windowSize(installWindow);
    EXPECT_TRUE(eventually([&, this] {
      desktop().click(installWindow, width * 11 / 20, height - 30);
      return clipboard() == helper->source();
    }));
  });
}

/// Those that every machine for the tests has, or those that a release is tried with.
std::vector<FileManagerSession::FileManager> fileManagers() {
  const char* const wanted = std::getenv("QUENNEL_FILE_MANAGERS");
  std::istringstream names(wanted ? wanted : "thunar pcmanfm-qt");
  return {std::istream_iterator<std::string>(names), std::istream_iterator<std::string>()};
}

std::string nameOf(const testing::TestParamInfo<FileManagerSession::FileManager>& fileManager) {
  std::string name = fileManager.param;
  std::erase(name, '-');
  return name;
}

INSTANTIATE_TEST_SUITE_P(WithARealFileManager, InstallScript, testing::ValuesIn(fileManagers()),
                         nameOf);
INSTANTIATE_TEST_SUITE_P(WithARealFileManager, InstallScriptAnywhere, testing::Values("pcmanfm-qt"),
                         nameOf);

}  // namespace
}  // namespace quennel::test
