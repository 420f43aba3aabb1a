#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QThread>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "bench/watch/Watchers.h"

namespace quennel::bench {

/// QFileSystemWatcher, in a thread of its own. Needs a QCoreApplication.
class QtWatcher final : public Watcher {
 public:
  QtWatcher();
  ~QtWatcher() override;

  void add(const std::vector<std::string>& paths) override;
  Arrivals& arrivals() override { return _arrivals; }

 private:
  void inThread(const std::function<void()>& work);

  Arrivals _arrivals;
  QThread _thread;
  QObject _inThread;
  std::unique_ptr<QFileSystemWatcher> _watcher;
};

/// The program inotifywait, whose output a thread reads.
class InotifywaitWatcher final : public Watcher {
 public:
  ~InotifywaitWatcher() override;

  /// Returns when the program says that it watches.
  void add(const std::vector<std::string>& paths) override;
  Arrivals& arrivals() override { return _arrivals; }

 private:
  void readEvents();

  Arrivals _arrivals;
  FILE* _output = nullptr;
  int _process = 0;
  std::thread _thread;
};

}  // namespace quennel::bench
