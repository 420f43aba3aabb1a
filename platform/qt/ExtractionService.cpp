#include "platform/qt/ExtractionService.h"

#include <QtCore/QObject>
#include <cerrno>
#include <string>
#include <utility>

namespace quennel {

std::shared_ptr<ExtractionService> ExtractionService::create(
    std::shared_ptr<const FilePromise> promise) {
  sd_bus* bus = nullptr;
  if (sd_bus_open_user(&bus) < 0) {
    return nullptr;
  }
  std::shared_ptr<ExtractionService> service(new ExtractionService(bus, std::move(promise)));
  return service->publish() ? service : nullptr;
}

ExtractionService::ExtractionService(sd_bus* bus, std::shared_ptr<const FilePromise> promise)
    : _bus(bus), _promise(std::move(promise)) {}

bool ExtractionService::publish() {
  _object = ExtractionObject::publish(
      _bus.get(), [this](const std::string& folder) { return extractTo(folder); });
  if (!_object) {
    return false;
  }
  const int descriptor = sd_bus_get_fd(_bus.get());
  if (descriptor < 0 || busName().isEmpty()) {
    return false;
  }
  _notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
  QObject::connect(_notifier.get(), &QSocketNotifier::activated, _notifier.get(),
                   [this] { process(); });
  process();  // what came with the answer to the first call
  return true;
}

QByteArray ExtractionService::busName() const {
  return QByteArray::fromStdString(_object->busName().value_or(std::string()));
}

void ExtractionService::process() {
  int result = 1;
  while (result > 0) {
    result = sd_bus_process(_bus.get(), nullptr);
  }
  if (result < 0) {
    // The bus has gone; the descriptor would stay readable for ever.
    _notifier->setEnabled(false);
  }
}

int ExtractionService::extractTo(const std::string& folder) const {
  if (!_isAnswering) {
    return EACCES;
  }
  return folder.starts_with('/') && _promise->keep(folder) ? 0 : EIO;
}

}  // namespace quennel
