#include "platform/qt/ExtractionService.h"

#include <QtCore/QObject>
#include <cerrno>
#include <string_view>
#include <utility>

namespace quennel {
namespace {

constexpr auto extractionPath = "/DndExtract";

}  // namespace

const sd_bus_vtable ExtractionService::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("extractSelectedFilesTo", "s", "", extractSelectedFilesTo,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

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
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_object_vtable(_bus.get(), &slot, extractionPath, "org.kde.ark.DndExtract", methods,
                               this) < 0) {
    return false;
  }
  _object.reset(slot);
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
  const char* name = nullptr;
  return sd_bus_get_unique_name(_bus.get(), &name) < 0 ? QByteArray() : QByteArray(name);
}

QByteArray ExtractionService::objectPath() const { return extractionPath; }

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

int ExtractionService::extractSelectedFilesTo(sd_bus_message* message, void* self,
                                              sd_bus_error* error) {
  const char* folder = nullptr;
  const int result = sd_bus_message_read(message, "s", &folder);
  if (result < 0) {
    return result;
  }
  const auto& service = *static_cast<ExtractionService*>(self);
  if (!service._isAnswering) {
    return sd_bus_error_set_errno(error, EACCES);
  }
  const bool isAbsolute = std::string_view(folder).starts_with('/');
  if (!isAbsolute || !service._promise->keep(folder)) {
    return sd_bus_error_set_errno(error, EIO);
  }
  return sd_bus_reply_method_return(message, "");
}

}  // namespace quennel
