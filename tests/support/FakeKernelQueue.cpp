#include "tests/support/FakeKernelQueue.h"

#include <cerrno>
#include <utility>

namespace quennel::test {

namespace {

using Lock = std::unique_lock<std::mutex>;

}  // namespace

void FakeKernelQueue::addFile(const std::string& path) {
  const Lock lock(_mutex);
  _files[path] = std::make_shared<int>();
}

void FakeKernelQueue::addLink(const std::string& path, const std::string& existing) {
  const Lock lock(_mutex);
  _files[path] = _files.at(existing);
  fire(_files.at(existing), NOTE_LINK);
}

void FakeKernelQueue::renameFile(const std::string& path, const std::string& newPath) {
  const Lock lock(_mutex);
  const auto file = _files.extract(path).mapped();
  if (const auto replaced = _files.find(newPath); replaced != _files.end()) {
    fire(replaced->second, NOTE_DELETE | NOTE_LINK);
  }
  _files[newPath] = file;
  fire(file, NOTE_RENAME);
}

void FakeKernelQueue::removeFile(const std::string& path) {
  const Lock lock(_mutex);
  fire(_files.extract(path).mapped(), NOTE_DELETE | NOTE_LINK);
}

void FakeKernelQueue::touch(const std::string& path, std::uint32_t notes) {
  const Lock lock(_mutex);
  fire(_files.at(path), notes);
}

void FakeKernelQueue::fire(const std::shared_ptr<int>& file, std::uint32_t notes) {
  for (auto& [number, descriptor] : _descriptors) {
    const std::uint32_t wanted = notes & descriptor.registration.fflags;
    if (descriptor.file != file || wanted == 0) {
      continue;
    }
    if (descriptor.pending == 0) {
      _ready.push_back(number);
    }
    descriptor.pending |= wanted;
  }
  _changed.notify_all();
}

void FakeKernelQueue::deliver(const KernelEvent& event) {
  const Lock lock(_mutex);
  _delivered.push_back(event);
  _changed.notify_all();
}

void FakeKernelQueue::answerNextWait(int result) {
  const Lock lock(_mutex);
  _answers.push_back(result);
  _changed.notify_all();
}

void FakeKernelQueue::refuseRegistrations(bool refuse) {
  const Lock lock(_mutex);
  _refusesRegistrations = refuse;
}

std::vector<KernelEvent> FakeKernelQueue::changes() const {
  const Lock lock(_mutex);
  return _changes;
}

std::vector<std::chrono::nanoseconds> FakeKernelQueue::timeouts() const {
  const Lock lock(_mutex);
  return _timeouts;
}

std::size_t FakeKernelQueue::openDescriptorCount() const {
  const Lock lock(_mutex);
  return _descriptors.size();
}

int FakeKernelQueue::open(const SharedText& path, Error* error) {
  const Lock lock(_mutex);
  const auto file = _files.find(std::string(path.view()));
  if (file == _files.end()) {
    if (error) {
      *error = {ENOENT, Error::Kind::Watching, std::string(path.view())};
    }
    return -1;
  }
  int number = 0;
  while (_descriptors.contains(number)) {
    ++number;
  }
  _descriptors[number].file = file->second;
  return number;
}

void FakeKernelQueue::close(int descriptor) {
  const Lock lock(_mutex);
  _descriptors.erase(descriptor);
  std::erase(_ready, descriptor);
}

int FakeKernelQueue::kevent(const KernelEvent& change) {
  const Lock lock(_mutex);
  _changes.push_back(change);
  const auto descriptor = _descriptors.find(change.ident);
  if (_refusesRegistrations || descriptor == _descriptors.end() || change.filter != EVFILT_VNODE ||
      (change.flags & EV_ADD) == 0) {
    return -1;
  }
  descriptor->second.registration = change;
  descriptor->second.pending &= change.fflags;
  return 0;
}

int FakeKernelQueue::kevent(KernelEvent& event, std::chrono::nanoseconds timeout) {
  Lock lock(_mutex);
  _timeouts.push_back(timeout);
  std::erase(_handling, std::this_thread::get_id());
  _changed.notify_all();
  const auto isOver = [this] {
    return _ended || !_answers.empty() || !_delivered.empty() || !_ready.empty();
  };
  _changed.wait_for(lock, timeout, isOver);
  if (_ended) {
    _changed.wait(lock, [] { return false; });
  }
  if (!_answers.empty()) {
    const int answer = _answers.front();
    _answers.pop_front();
    return answer;
  }
  const auto taken = takeEvent();
  if (!taken) {
    return 0;
  }
  event = *taken;
  _handling.push_back(std::this_thread::get_id());
  return 1;
}

std::optional<KernelEvent> FakeKernelQueue::takeEvent() {
  if (!_delivered.empty()) {
    const KernelEvent event = _delivered.front();
    _delivered.pop_front();
    return event;
  }
  while (!_ready.empty()) {
    Descriptor& descriptor = _descriptors.at(_ready.front());
    _ready.pop_front();
    KernelEvent event = descriptor.registration;
    event.fflags = std::exchange(descriptor.pending, 0U);
    if (event.fflags != 0) {
      return event;
    }
  }
  return std::nullopt;
}

void FakeKernelQueue::end() {
  Lock lock(_mutex);
  _ended = true;
  _changed.notify_all();
  std::erase(_handling, std::this_thread::get_id());
  _changed.wait_for(lock, std::chrono::seconds(1), [this] { return _handling.empty(); });
}

FakeKernelQueueFactory::~FakeKernelQueueFactory() {
  if (_queue.use_count() > 1) {
    _queue->end();
  }
}

}  // namespace quennel::test
