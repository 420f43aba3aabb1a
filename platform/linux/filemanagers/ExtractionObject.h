#pragma once

#include <systemd/sd-bus.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/linux/bus/BusTypes.h"

namespace quennel {

/// An object on the bus that a target of a drag calls with the folder to extract to, as archive
/// programs of KDE have it for files that are dragged out of an archive.
class ExtractionObject {
 public:
  /// Is given the folder as it was told; answers 0, or the errno value with which the call fails.
  using Extract = std::function<int(const std::string& folder)>;

  /// Null when the bus refuses. The bus is used until the object is gone.
  static std::unique_ptr<ExtractionObject> publish(sd_bus* bus, Extract extract);
  ExtractionObject(const ExtractionObject&) = delete;
  ExtractionObject& operator=(const ExtractionObject&) = delete;

  /// Where a target finds it: the data of the type drop_type::extractionService.
  std::optional<std::string> busName() const;
  /// The data of the type drop_type::extractionPath.
  static constexpr auto path = "/DndExtract";

 private:
  static const sd_bus_vtable methods[];

  ExtractionObject(sd_bus* bus, Extract extract);
  static int extractSelectedFilesTo(sd_bus_message* message, void* self, sd_bus_error* error);

  sd_bus* _bus;
  Extract _extract;
  BusSlot _object;
};

}  // namespace quennel
