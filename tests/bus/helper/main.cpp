// bus_test_helper LOG LIFETIME [URL...]: a helper that adds every URL it is asked to open as a line
// to the file LOG and terminates after LIFETIME microseconds; 0 is never.

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/bus/BusURLEvents.h"
#include "platform/linux/bus/SessionBus.h"
#include "platform/linux/events/EventRunLoop.h"

using namespace quennel;

int main(int argc, char** argv) {
  if (argc < 3) {
    return 2;
  }
  // It outlives its bus, but shall not outlive the test: whoever has started it takes it along.
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  const FileDescriptor log(open(argv[1], O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600));
  const auto note = [&](const std::string& line) {
    if (write(log.get(), (line + "\n").c_str(), line.size() + 1) < 0) {
      std::perror("write");
    }
  };
  EventRunLoop runLoop;
  SessionBus bus(runLoop);
  BusURLEvents urlEvents(bus);
  const auto role = urlEvents.claim(std::vector<std::string>(argv + 3, argv + argc));
  if (role == BusURLEvents::Role::HandedOver) {
    return 0;
  }
  const auto registration =
      urlEvents.setEventHandler([&](const URLEvent& event) { note(*event.directObject); });
  if (const long lifetime = std::stol(argv[2]); lifetime > 0) {
    runLoop.dispatchAfter(std::chrono::microseconds(lifetime), [&] { runLoop.terminate(); });
  }
  std::puts(role == BusURLEvents::Role::Helper ? "helper" : "alone");
  std::fflush(stdout);
  runLoop.run();
  for (const auto& url : urlEvents.release()) {
    note("left " + url);
  }
}
