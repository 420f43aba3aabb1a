#pragma once

#include <systemd/sd-bus.h>

#include <memory>

#include "finderpath/DragOffer.h"

namespace quennel {

class FileManagerBus;

/// Offers the files of an archive as archive programs of KDE do: the target is given the name of an
/// object on the bus and calls it with the folder to extract to.
class ExtractionOffer final : public DragOffer {
 public:
  /// Nothing when the bus refuses. The bus is used until the offer is gone.
  static std::unique_ptr<ExtractionOffer> create(const FileManagerBus& bus);

  std::vector<std::string> types() const override;
  void begin(xcb_window_t source) override;
  std::optional<std::string> dataForType(const std::string& type) override;
  const std::optional<std::string>& folder() const override { return _folder; }
  int descriptor() const override;
  void serve() override;

 private:
  struct Unref {
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
  };

  explicit ExtractionOffer(const FileManagerBus& bus) : _bus(bus) {}
  static int extractSelectedFilesTo(sd_bus_message* message, void* self, sd_bus_error* error);

  static const sd_bus_vtable methods[];

  const FileManagerBus& _bus;
  std::unique_ptr<sd_bus_slot, Unref> _object;
  std::optional<std::string> _folder;
};

}  // namespace quennel
