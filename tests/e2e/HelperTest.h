#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/settings/PropertyListUserDefaults.h"
#include "tests/support/Deadline.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Process.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {

/// The built helper on a session bus of the test's own, with a fresh home, no display, and a folder
/// in which it may write. The settings hold three templates (note.txt, script.sh that is
/// executable, and the folder "project") and say that files are made at once.
class HelperTest : public testing::Test {
 protected:
  void SetUp() override;

  /// Starts the helper by hand, rather than by the bus, so that the test sees what becomes of it.
  Process startHelper(const std::vector<std::string>& urls = {});
  /// The same, and waits until it answers on the bus.
  Process startReadyHelper();
  bool ownsName() const;

  /// Calls `Open` with the URLs and waits for the answer; the bus starts the helper if need be.
  /// `token` is what lets the helper's window come to the front.
  void open(const std::vector<std::string>& urls, const std::string& token = {});
  /// Sends one URL and does not wait.
  void send(const std::string& url);
  /// Sends a command of the main application.
  void command(const std::string& object);

  std::string requestFor(const std::string& folder, const std::string& query) const;
  std::string folder() const { return _root / "folder"; }
  std::string in(const std::string& name) const { return folder() + "/" + name; }
  std::string settingsPath() const;
  PropertyListUserDefaults settings() const { return PropertyListUserDefaults(settingsPath()); }
  static PropertyList::Dictionary templateRecord(const std::string& prefix,
                                                 const std::string& suffix,
                                                 const std::string& file);
  void set(const std::string& key, PropertyList value);

  /// Lets a helper that is started later write in the folder.
  void grant(const std::string& folder) const;

  /// That of the helper and the tools.
  virtual Process::Environment environment() const;

  static bool exists(const std::string& path);
  static std::string contents(const std::string& path);
  static void write(const std::string& path, const std::string& contents);
  static bool eventuallyExists(const std::string& path);
  static std::size_t countEntries(const std::string& folder);

  TemporaryDirectory _root;
  std::unique_ptr<PrivateBus> _bus;

 private:
  struct Connection;
  std::shared_ptr<Connection> _connection;
};

}  // namespace quennel::test
