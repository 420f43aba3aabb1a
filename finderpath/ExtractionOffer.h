#pragma once

#include <memory>

#include "finderpath/DragOffer.h"
#include "platform/linux/filemanagers/ExtractionObject.h"

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
  explicit ExtractionOffer(const FileManagerBus& bus) : _bus(bus) {}
  void keep(const std::string& folder);

  const FileManagerBus& _bus;
  std::optional<std::string> _folder;
  std::unique_ptr<ExtractionObject> _object;
};

}  // namespace quennel
