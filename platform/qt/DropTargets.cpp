#include "platform/qt/DropTargets.h"

#include <algorithm>
#include <array>

namespace quennel {
namespace {

bool isOneOf(const QByteArray& windowClass, std::initializer_list<const char*> names) {
  const QByteArray lower = windowClass.toLower();
  return std::any_of(names.begin(), names.end(),
                     [&](const char* name) { return lower.contains(name); });
}

}  // namespace

bool isOfferedTo(const QByteArray& windowClass, const QString& type) {
  const bool saves = isOneOf(windowClass, {"thunar", "xfdesktop", "pcmanfm", "nemo", "caja"});
  const bool extracts = isOneOf(windowClass, {"dolphin"});
  if (type == drop_type::directSave) {
    return saves;
  }
  return type == drop_type::fileList ? !saves && !extracts : extracts;
}

}  // namespace quennel
