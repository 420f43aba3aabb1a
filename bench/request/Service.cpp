#include "bench/request/Service.h"

#include <poll.h>
#include <sys/inotify.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <thread>
#include <utility>
#include <vector>

#include "bench/support/Figure.h"

namespace quennel::bench {

namespace {

/// The sum of the entries `name` of a file of lines "name: value kB".
double sumOfEntries(const std::string& path, const std::string& name) {
  std::ifstream file(path);
  double sum = 0;
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with(name + ":")) {
      sum += std::stod(line.substr(name.size() + 1));
    }
  }
  return sum;
}

double contextSwitchesOf(int process) {
  double sum = 0;
  const auto tasks = "/proc/" + std::to_string(process) + "/task";
  for (const auto& task : std::filesystem::directory_iterator(tasks)) {
    sum += sumOfEntries(task.path() / "status", "voluntary_ctxt_switches") +
           sumOfEntries(task.path() / "status", "nonvoluntary_ctxt_switches");
  }
  return sum;
}

}  // namespace

std::string TargetFolders::make() {
  auto folder = _parent + "/" + std::to_string(_count++);
  std::filesystem::create_directory(folder);
  return folder;
}

FolderWatch::FolderWatch(const std::string& folder) : _inotify(inotify_init1(IN_CLOEXEC)) {
  if (!_inotify || inotify_add_watch(_inotify.get(), folder.c_str(), IN_CREATE | IN_MOVED_TO) < 0) {
    throw std::runtime_error("inotify refuses to watch");
  }
}

double Service::requestToFile() {
  const auto folder = _folders.make();
  const FolderWatch watch(folder);
  const auto request = _requester.makeRequest(_name, folder);
  const double milliseconds = millisecondsOf([&] {
    _requester.send(request);
    _requester.waitFor(watch.descriptor());
  });
  _requester.takeAnswers();
  return milliseconds;
}

double Service::requestsPerSecond(int count) {
  std::vector<std::string> folders;
  std::vector<Requester::Request> requests;
  for (int i = 0; i < count; ++i) {
    folders.push_back(_folders.make());
    requests.push_back(_requester.makeRequest(_name, folders.back()));
  }
  const FolderWatch watch(folders.back());  // requests are served in order
  const double milliseconds = millisecondsOf([&] {
    for (const auto& request : requests) {
      _requester.send(request);
    }
    _requester.waitFor(watch.descriptor());
  });
  _requester.takeAnswers();
  for (const auto& folder : folders) {
    if (std::filesystem::is_empty(folder)) {
      throw std::runtime_error(_name + " left out a request");
    }
  }
  return count * 1000.0 / milliseconds;
}

Memory Service::memory() {
  const auto file = "/proc/" + std::to_string(runningProcess()) + "/smaps_rollup";
  return {sumOfEntries(file, "Pss"), sumOfEntries(file, "Rss"),
          sumOfEntries(file, "Private_Clean") + sumOfEntries(file, "Private_Dirty")};
}

double Service::wakeUpsWithin(int seconds) {
  const int process = runningProcess();
  const double before = contextSwitchesOf(process);
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  return contextSwitchesOf(process) - before;
}

bool Service::stop() {
  const int process = _requester.processOf(_name);
  if (process == 0) {
    return true;
  }
  const FileDescriptor descriptor(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  kill(process, SIGTERM);
  pollfd ended{descriptor.get(), POLLIN, 0};
  if (poll(&ended, 1, 20'000) != 1) {
    return false;
  }
  while (_requester.processOf(_name) != 0) {
  }
  return true;
}

int Service::runningProcess() {
  const int process = _requester.processOf(_name);
  if (process == 0) {
    throw std::runtime_error(_name + " does not run");
  }
  return process;
}

}  // namespace quennel::bench
