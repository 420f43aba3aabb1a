#include "platform/qt/DropTargets.h"

#include <cstddef>

#include "platform/linux/filemanagers/DropType.h"
#include "platform/linux/filemanagers/FileManagerKind.h"

namespace quennel {

bool isOfferedTo(const QByteArray& windowClass, const QString& type) {
  const auto kind =
      fileManagerNamedIn({windowClass.data(), static_cast<std::size_t>(windowClass.size())});
  const bool extracts = kind == FileManagerKind::ExtractsDrops;
  const bool saves =
      kind == FileManagerKind::SavesDrops || kind == FileManagerKind::SavesDropsUnderPointer;
  if (type == drop_type::directSave) {
    return saves;
  }
  return type == drop_type::fileList ? !saves && !extracts : extracts;
}

}  // namespace quennel
