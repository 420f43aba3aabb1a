#include "tests/ctl/QuennelctlTest.h"

#include <fstream>

namespace quennel::test {

QuennelctlTest::QuennelctlTest()
    : environment{{"XDG_CONFIG_HOME", config},
                  {"HOME", folder.path()},
                  {"XDG_RUNTIME_DIR", folder / "no-such-folder"},
                  {"DBUS_SESSION_BUS_ADDRESS", ""},
                  {"XDG_ACTIVATION_TOKEN", ""},
                  {"DESKTOP_STARTUP_ID", ""}} {}

Process QuennelctlTest::start(const Words& words) const {
  Words arguments{QUENNELCTL};
  arguments.insert(arguments.end(), words.begin(), words.end());
  return Process(arguments, environment);
}

Answer QuennelctlTest::run(const Words& words) const {
  Process program = start(words);
  const int status = program.wait().value_or(-1000);
  return {status, program.output(), program.errorOutput()};
}

std::string QuennelctlTest::makeFile(const std::string& name) const {
  const std::string path = folder / name;
  std::ofstream file(path);
  return path;
}

PropertyList::Array QuennelctlTest::templates() const {
  return settings.arrayForKey("fileTemplates").value_or(PropertyList::Array());
}

QuennelctlTest::Words QuennelctlTest::titles() const {
  Words found;
  for (const PropertyList& record : templates()) {
    found.push_back(*record.objectForKey("title")->string());
  }
  return found;
}

}  // namespace quennel::test
