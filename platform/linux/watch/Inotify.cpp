#include "platform/linux/watch/Inotify.h"

#include <charconv>
#include <fstream>
#include <string>
#include <string_view>

namespace quennel {

Inotify::Inotify() : _descriptor(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)) {}

int Inotify::addWatch(const char* path, std::uint32_t mask) {
  return inotify_add_watch(_descriptor.get(), path, mask);
}

void Inotify::removeWatch(int watch) {
  // Fails when the kernel has ended the watch by itself, which is as good.
  static_cast<void>(inotify_rm_watch(_descriptor.get(), watch));
}

void Inotify::read(const Visit& visit) {
  const ssize_t size = ::read(_descriptor.get(), _buffer.data(), _buffer.size());
  const char* const end = _buffer.data() + (size > 0 ? size : 0);
  for (const char* position = _buffer.data(); position != end;) {
    const auto& event = *reinterpret_cast<const inotify_event*>(position);
    visit(event, event.len > 0 ? event.name : "");
    position += sizeof event + event.len;
  }
}

std::optional<std::unordered_set<int>> Inotify::liveWatches() const {
  std::ifstream lines("/proc/self/fdinfo/" + std::to_string(_descriptor.get()));
  std::unordered_set<int> watches;
  constexpr std::string_view start = "inotify wd:";
  for (std::string line; std::getline(lines, line);) {
    int watch = -1;
    if (line.starts_with(start)) {  // a hexadecimal number follows
      std::from_chars(line.data() + start.size(), line.data() + line.size(), watch, 16);
      watches.insert(watch);
    }
  }
  return lines.eof() ? std::optional(watches) : std::nullopt;
}

}  // namespace quennel
