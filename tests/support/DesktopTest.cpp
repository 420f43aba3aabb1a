#include "tests/support/DesktopTest.h"

#include <utility>

namespace quennel::test {

DesktopTest::DesktopTest() {
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

PropertyList::Dictionary DesktopTest::templateRecord(const std::string& prefix,
                                                     const std::string& suffix) {
  return {{"title", "A " + prefix}, {"prefix", prefix},
          {"suffix", suffix},       {"filePath", "/templates/" + prefix + "." + suffix},
          {"executable", false},    {"enabled", true}};
}

}  // namespace quennel::test
