#include "platform/linux/filemanagers/ExtractionObject.h"

#include <utility>

namespace quennel {

const sd_bus_vtable ExtractionObject::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("extractSelectedFilesTo", "s", "", extractSelectedFilesTo,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

std::unique_ptr<ExtractionObject> ExtractionObject::publish(sd_bus* bus, Extract extract) {
  std::unique_ptr<ExtractionObject> object(new ExtractionObject(bus, std::move(extract)));
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_object_vtable(bus, &slot, path, "org.kde.ark.DndExtract", methods, object.get()) <
      0) {
    return nullptr;
  }
  object->_object.reset(slot);
  return object;
}

ExtractionObject::ExtractionObject(sd_bus* bus, Extract extract)
    : _bus(bus), _extract(std::move(extract)) {}

std::optional<std::string> ExtractionObject::busName() const {
  const char* name = nullptr;
  if (sd_bus_get_unique_name(_bus, &name) < 0) {
    return std::nullopt;
  }
  return name;
}

int ExtractionObject::extractSelectedFilesTo(sd_bus_message* message, void* self,
                                             sd_bus_error* error) {
  const char* folder = nullptr;
  const int result = sd_bus_message_read(message, "s", &folder);
  if (result < 0) {
    return result;
  }
  const int failure = static_cast<ExtractionObject*>(self)->_extract(folder);
  if (failure != 0) {
    return sd_bus_error_set_errno(error, failure);
  }
  return sd_bus_reply_method_return(message, "");
}

}  // namespace quennel
