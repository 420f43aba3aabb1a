#include "tests/settings/SettingsTest.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include "tests/support/Process.h"

namespace quennel::test {

std::string readFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::string& path, std::string_view contents) {
  std::ofstream(path, std::ios::binary) << contents;
}

std::string xmlFile(std::string_view contents) {
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
         "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
         "<plist version=\"1.0\">\n" +
         std::string(contents) + "\n</plist>\n";
}

std::string askPython(const std::string& script, const std::string& path) {
  const std::string program = "import plistlib, datetime, sys\npath = sys.argv[1]\n" + script;
  Process python({"python3", "-c", program, path});
  if (python.wait() != 0) {
    throw std::runtime_error(python.errorOutput());
  }
  return python.output();
}

}  // namespace quennel::test
