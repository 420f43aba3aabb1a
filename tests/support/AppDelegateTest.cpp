#include "tests/support/AppDelegateTest.h"

#include <utility>

namespace quennel::test {

AppDelegateTest::AppDelegateTest() {
  auto first = templateRecord("untitled", "txt");
  auto disabled = templateRecord("disabled", "txt");
  disabled.insert_or_assign("enabled", false);
  auto script = templateRecord("script", "sh");
  script.insert_or_assign("executable", true);
  fakes.sharedDefaults.setObject(
      PropertyList::Array{std::move(first), std::move(disabled), std::move(script)},
      "fileTemplates");
  fakes.sharedDefaults.setObject(true, "skipFilename");
  fakes.fileManager.addDirectory("/d");
  fakes.fileManager.addFile("/templates/untitled.txt", "Dear reader");
  fakes.fileManager.addFile("/templates/disabled.txt", "");
  fakes.fileManager.addFile("/templates/script.sh", "#!/bin/sh\n");
}

PropertyList::Dictionary AppDelegateTest::templateRecord(const std::string& prefix,
                                                         const std::string& suffix) {
  return {{"title", "A " + prefix}, {"prefix", prefix},
          {"suffix", suffix},       {"filePath", "/templates/" + prefix + "." + suffix},
          {"executable", false},    {"enabled", true}};
}

AppDelegate& AppDelegateTest::launch() {
  delegate = std::make_unique<AppDelegate>(platformOf(fakes));
  fakes.runLoop.setWillTerminateHandler([this] { delegate->applicationWillTerminate(); });
  delegate->applicationWillFinishLaunching();
  delegate->applicationDidFinishLaunching();
  fakes.runLoop.runUntilIdle();
  return *delegate;
}

void AppDelegateTest::open(const std::string& url) {
  fakes.urlEvents.open(url);
  fakes.runLoop.runUntilIdle();
}

void AppDelegateTest::command(const std::string& name, const std::string& object) {
  fakes.distributedNotificationCenter.postNotification(
      {.name = name, .object = object, .userInfo = {}}, true);
  fakes.runLoop.runUntilIdle();
}

}  // namespace quennel::test
