#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

namespace quennel {

/// Bytes on their way from one thread to another. It holds however much is written, so that
/// writing never waits for the reader. Every operation may be called from any thread.
class Pipe {
 private:
  struct Channel {
    std::mutex mutex;
    std::condition_variable closing;
    std::string data;
    bool closed = false;
  };

 public:
  class FileHandleForWriting {
   public:
    explicit FileHandleForWriting(std::shared_ptr<Channel> channel)
        : _channel(std::move(channel)) {}
    FileHandleForWriting(const FileHandleForWriting&) = delete;
    FileHandleForWriting& operator=(const FileHandleForWriting&) = delete;
    ~FileHandleForWriting() { closeFile(); }

    /// After `closeFile` the data is dropped.
    void writeData(std::string_view data) {
      const std::lock_guard lock(_channel->mutex);
      if (!_channel->closed) {
        _channel->data += data;
      }
    }

    /// Lets the reading end come to the end of file.
    void closeFile() {
      const std::lock_guard lock(_channel->mutex);
      _channel->closed = true;
      _channel->closing.notify_all();
    }

   private:
    std::shared_ptr<Channel> _channel;
  };

  class FileHandleForReading {
   public:
    explicit FileHandleForReading(std::shared_ptr<Channel> channel)
        : _channel(std::move(channel)) {}

    /// Waits until the writing end is closed and answers everything that was written and not yet
    /// read.
    std::string readDataToEndOfFile() const {
      std::unique_lock lock(_channel->mutex);
      _channel->closing.wait(lock, [this] { return _channel->closed; });
      return std::exchange(_channel->data, {});
    }

   private:
    std::shared_ptr<Channel> _channel;
  };

  /// Shared with whoever writes, who closes it when done.
  const std::shared_ptr<FileHandleForWriting>& fileHandleForWriting() const { return _writing; }
  const FileHandleForReading& fileHandleForReading() const { return _reading; }

 private:
  std::shared_ptr<Channel> _channel = std::make_shared<Channel>();
  std::shared_ptr<FileHandleForWriting> _writing = std::make_shared<FileHandleForWriting>(_channel);
  FileHandleForReading _reading{_channel};
};

}  // namespace quennel
