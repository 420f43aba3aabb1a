#include "finderpath/DirectSaveOffer.h"

#include <cstdint>

#include "finderpath/FileURI.h"
#include "finderpath/XDisplay.h"
#include "platform/linux/filemanagers/DropType.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

const std::string fileName = "quennel-folder-query";
/// "Error": there is nothing to save, and no use in asking for the file in another way.
const std::string error = "E";

/// Where `uri` says the file should go. While it is the bare file name nothing was said yet.
std::optional<std::string> folderIn(const std::string& uri) {
  const auto path = pathOfFileURI(uri);
  if (!path || lastPathComponent(*path) != fileName) {
    return std::nullopt;
  }
  return deletingLastPathComponent(*path);
}

}  // namespace

std::vector<std::string> DirectSaveOffer::types() const { return {drop_type::directSave}; }

void DirectSaveOffer::begin(xcb_window_t source) {
  _source = source;
  xcb_change_property(_display.connection(), XCB_PROP_MODE_REPLACE, source,
                      _display.atom(drop_type::directSave), _display.atom("text/plain"), 8,
                      static_cast<std::uint32_t>(fileName.size()), fileName.data());
}

std::optional<std::string> DirectSaveOffer::dataForType(const std::string& type) {
  if (type != drop_type::directSave) {
    return std::nullopt;
  }
  const std::string uri = _display.property(_source, drop_type::directSave);
  _folder = folderIn(uri.substr(0, uri.find('\0')));  // some add a NUL
  return error;
}

}  // namespace quennel
