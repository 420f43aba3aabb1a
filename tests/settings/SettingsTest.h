#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "platform/linux/settings/PropertyListUserDefaults.h"
#include "tests/support/PrintPropertyList.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {

using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;
using Data = PropertyList::Data;

std::string readFile(const std::string& path);
void writeFile(const std::string& path, std::string_view contents);

/// A complete XML property list around `contents`.
std::string xmlFile(std::string_view contents);

/// What Python's plistlib answers: runs `script` with `plistlib` imported and the path as `path`.
/// Throws when the script fails.
std::string askPython(const std::string& script, const std::string& path);

/// A settings file in a folder of its own.
class SettingsTest : public testing::Test {
 protected:
  TemporaryDirectory folder;
  std::string path = folder / "domain.plist";
  PropertyListUserDefaults defaults{path};

  /// Sets one value and stores it.
  bool store(PropertyList value, const std::string& key, Error* error = nullptr) {
    defaults.setObject(std::move(value), key);
    return defaults.synchronize(error);
  }
};

}  // namespace quennel::test
