#pragma once

#include <sys/inotify.h>
#include <systemd/sd-event.h>

#include <functional>
#include <list>
#include <memory>
#include <string>

#include "platform/linux/base/FileDescriptor.h"
#include "platform/linux/events/EventRunLoop.h"
#include "platform/linux/events/EventSource.h"

namespace quennel {

/// Notices the X displays of this machine, by the sockets that their servers make. A display counts
/// from when its server answers: a socket is there some time before that, and may be left over from
/// a server that is gone. Main thread only.
class DisplayWatch {
 public:
  /// Called from the main queue with the display's number. The display may still turn this user
  /// down.
  using Handler = std::function<void(int number)>;

  static constexpr auto socketFolder = "/tmp/.X11-unix";

  /// `runLoop` is not owned.
  DisplayWatch(EventRunLoop& runLoop, Handler handler, std::string folder = socketFolder);
  DisplayWatch(const DisplayWatch&) = delete;
  DisplayWatch& operator=(const DisplayWatch&) = delete;
  ~DisplayWatch();

  /// Tells of every display that comes from now on, until `stop`.
  void start();
  void stop();

  /// Tells of every display that is there now.
  void lookAround();

  /// Whether somebody listens at the display's socket, if only to answer later.
  bool isThere(int number) const;

 private:
  struct Question;

  bool watch(const std::string& folder);
  void takeNewEntry(const std::string& name);
  void ask(int number, int attempts);
  void askAgain(int number, int attempts);
  void takeAnswer(Question& question);
  FileDescriptor connectTo(int number) const;

  EventRunLoop& _runLoop;
  Handler _handler;
  std::string _folder;
  EventSource _newSockets;
  std::list<Question> _questions;
  /// Shared with the work in the queue, which does nothing once it is gone.
  std::shared_ptr<const bool> _life = std::make_shared<const bool>(true);
};

}  // namespace quennel
