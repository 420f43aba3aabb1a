#include "finderpath/ExtractionOffer.h"

#include <utility>

#include "finderpath/FileManagerBus.h"
#include "platform/linux/filemanagers/DropType.h"

namespace quennel {
namespace {

std::string withoutSlashesAtTheEnd(std::string path) {
  while (path.size() > 1 && path.ends_with('/')) {
    path.pop_back();
  }
  return path;
}

}  // namespace

std::unique_ptr<ExtractionOffer> ExtractionOffer::create(const FileManagerBus& bus) {
  std::unique_ptr<ExtractionOffer> offer(new ExtractionOffer(bus));
  offer->_object =
      ExtractionObject::publish(bus.handle(), [&offer = *offer](const std::string& folder) {
        offer.keep(folder);
        return 0;
      });
  return offer->_object ? std::move(offer) : nullptr;
}

std::vector<std::string> ExtractionOffer::types() const {
  return {drop_type::extractionService, drop_type::extractionPath};
}

void ExtractionOffer::begin(xcb_window_t) { _folder.reset(); }

std::optional<std::string> ExtractionOffer::dataForType(const std::string& type) {
  if (type == drop_type::extractionService) {
    return _object->busName();
  }
  return type == drop_type::extractionPath ? std::optional<std::string>(ExtractionObject::path)
                                           : std::nullopt;
}

int ExtractionOffer::descriptor() const { return sd_bus_get_fd(_bus.handle()); }

void ExtractionOffer::serve() {
  while (sd_bus_process(_bus.handle(), nullptr) > 0) {
  }
  sd_bus_flush(_bus.handle());
}

void ExtractionOffer::keep(const std::string& folder) {
  if (folder.starts_with('/')) {
    _folder = withoutSlashesAtTheEnd(folder);
  }
}

}  // namespace quennel
