#include "finderpath/ExtractionOffer.h"

#include "finderpath/FileManagerBus.h"

namespace quennel {
namespace {

constexpr auto serviceType = "application/x-kde-ark-dndextract-service";
constexpr auto pathType = "application/x-kde-ark-dndextract-path";
constexpr auto objectPath = "/DndExtract";

std::string withoutSlashesAtTheEnd(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.pop_back();
  }
  return path;
}

}  // namespace

const sd_bus_vtable ExtractionOffer::methods[] = {
    SD_BUS_VTABLE_START(0),
    SD_BUS_METHOD("extractSelectedFilesTo", "s", "", extractSelectedFilesTo,
                  SD_BUS_VTABLE_UNPRIVILEGED),
    SD_BUS_VTABLE_END};

std::unique_ptr<ExtractionOffer> ExtractionOffer::create(const FileManagerBus& bus) {
  std::unique_ptr<ExtractionOffer> offer(new ExtractionOffer(bus));
  sd_bus_slot* slot = nullptr;
  if (sd_bus_add_object_vtable(bus.handle(), &slot, objectPath, "org.kde.ark.DndExtract", methods,
                               offer.get()) < 0) {
    return nullptr;
  }
  offer->_object.reset(slot);
  return offer;
}

std::vector<std::string> ExtractionOffer::types() const { return {serviceType, pathType}; }

void ExtractionOffer::begin(xcb_window_t) { _folder.reset(); }

std::optional<std::string> ExtractionOffer::dataForType(const std::string& type) {
  const char* name = nullptr;
  if (type == serviceType && sd_bus_get_unique_name(_bus.handle(), &name) >= 0) {
    return name;
  }
  return type == pathType ? std::optional<std::string>(objectPath) : std::nullopt;
}

int ExtractionOffer::descriptor() const { return sd_bus_get_fd(_bus.handle()); }

void ExtractionOffer::serve() {
  while (sd_bus_process(_bus.handle(), nullptr) > 0) {
  }
  sd_bus_flush(_bus.handle());
}

int ExtractionOffer::extractSelectedFilesTo(sd_bus_message* message, void* self, sd_bus_error*) {
  const char* folder = nullptr;
  const int result = sd_bus_message_read(message, "s", &folder);
  if (result < 0) {
    return result;
  }
  if (folder[0] == '/') {
    static_cast<ExtractionOffer*>(self)->_folder = withoutSlashesAtTheEnd(folder);
  }
  return sd_bus_reply_method_return(message, "");
}

}  // namespace quennel
