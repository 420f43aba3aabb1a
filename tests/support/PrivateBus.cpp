#include "tests/support/PrivateBus.h"

#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace quennel::test {
namespace {

/// The limits are those of a desktop's session bus.
constexpr auto configurationEnd = R"(
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
  <limit name="max_message_size">1000000000</limit>
  <limit name="max_pending_service_starts">10000</limit>
  <limit name="max_replies_per_connection">50000</limit>
  <limit name="max_match_rules_per_connection">50000</limit>
</busconfig>
)";

}  // namespace

PrivateBus::PrivateBus(const Services& services, const Process::Environment& environment) {
  std::filesystem::create_directory(_folder / "services");
  for (const auto& [name, command] : services) {
    writeService(name, command);
  }
  writeConfiguration();
  // No display and no other bus shines through unless the test asks for it.
  Process::Environment all{{"DISPLAY", ""}, {"WAYLAND_DISPLAY", ""}};
  all.insert_or_assign("DBUS_SESSION_BUS_ADDRESS", "");
  for (const auto& [name, value] : environment) {
    all.insert_or_assign(name, value);
  }
  _daemon = std::make_unique<Process>(
      std::vector<std::string>{"dbus-daemon", "--nofork", "--print-address",
                               "--config-file=" + (_folder / "bus.conf")},
      all);
  if (!_daemon->waitForOutput("\n")) {
    throw std::runtime_error("dbus-daemon does not start: " + _daemon->errorOutput());
  }
  const auto output = _daemon->output();
  _address = output.substr(0, output.find('\n'));
}

void PrivateBus::stop() { _daemon.reset(); }

void PrivateBus::writeConfiguration() const {
  std::ofstream(_folder / "bus.conf")
      << "<busconfig>\n  <type>session</type>\n  <listen>unix:path=" << _folder / "socket"
      << "</listen>\n  <servicedir>" << _folder / "services"
      << "</servicedir>" << configurationEnd;
}

void PrivateBus::writeService(const std::string& name, const std::string& command) const {
  std::ofstream(_folder / ("services/" + name + ".service"))
      << "[D-BUS Service]\nName=" << name << "\nExec=" << command << "\n";
}

}  // namespace quennel::test
