#include "bench/watch/OtherWatchers.h"

#include <signal.h>

#include <QCoreApplication>
#include <QString>
#include <QStringList>
#include <array>
#include <cstdio>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include "tests/support/TemporaryDirectory.h"

namespace quennel::bench {

QtWatcher::QtWatcher() {
  _inThread.moveToThread(&_thread);
  _thread.start();
  inThread([this] {
    _watcher = std::make_unique<QFileSystemWatcher>();
    QObject::connect(_watcher.get(), &QFileSystemWatcher::fileChanged,
                     [this] { _arrivals.note(); });
  });
}

QtWatcher::~QtWatcher() {
  inThread([this] { _watcher.reset(); });
  _thread.quit();
  _thread.wait();
}

void QtWatcher::inThread(const std::function<void()>& work) {
  QMetaObject::invokeMethod(&_inThread, work, Qt::BlockingQueuedConnection);
}

void QtWatcher::add(const std::vector<std::string>& paths) {
  QStringList list;
  for (const std::string& path : paths) {
    list.append(QString::fromStdString(path));
  }
  inThread([&] { _watcher->addPaths(list); });
}

InotifywaitWatcher::~InotifywaitWatcher() {
  if (_output) {
    ::kill(_process, SIGKILL);  // the run loop has the others blocked, for children too
    _thread.join();
    ::pclose(_output);
  }
}

void InotifywaitWatcher::add(const std::vector<std::string>& paths) {
  const test::TemporaryDirectory folder;
  {
    std::ofstream list(folder / "list");
    for (const std::string& path : paths) {
      list << path << '\n';
    }
  }
  const std::string command =
      "echo $$; exec inotifywait -m -e modify --fromfile " + folder / "list" + " 2>&1";
  _output = ::popen(command.c_str(), "re");
  std::array<char, 4096> line;
  if (!_output || !std::fgets(line.data(), line.size(), _output)) {
    throw std::runtime_error("inotifywait does not start");
  }
  _process = std::stoi(line.data());
  while (std::fgets(line.data(), line.size(), _output)) {
    if (std::string_view(line.data()).starts_with("Watches established")) {
      _thread = std::thread([this] { readEvents(); });
      return;
    }
  }
  throw std::runtime_error("inotifywait does not watch");
}

void InotifywaitWatcher::readEvents() {
  std::array<char, 4096> line;
  while (std::fgets(line.data(), line.size(), _output)) {
    _arrivals.note();
  }
}

}  // namespace quennel::bench
