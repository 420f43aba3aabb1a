#pragma once

#include <sys/stat.h>

#include "platform/FileManager.h"

namespace quennel {

/// The files of the machine. Has no state and leaves that of the process (working directory, file
/// mode mask) alone, so any thread may use it, also one that is confined to some folders. Dates are
/// precise to the nanosecond.
class PosixFileManager : public FileManager {
 public:
  std::optional<ItemKind> itemKindAtPath(const std::string& path) const override;
  bool visitDirectory(const std::string& path,
                      const std::function<void(const DirectoryEntry&)>& visit) const override;
  void enumerateItemsAtPath(const std::string& path,
                            const std::function<bool(const std::string&)>& visit) const override;
  bool copyItemAtPath(const std::string& path, const std::string& toPath, Error* error) override;
  Replacement replaceItemAtPath(const std::string& path, const std::string& withCopyOf,
                                Error* error) override;
  bool removeItemAtPath(const std::string& path, Error* error) override;
  bool createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories,
                             Error* error) override;
  std::optional<std::string> contentsAtPath(const std::string& path) const override;
  bool writeContents(std::string_view contents, const std::string& toPath, Error* error) override;
  std::optional<FileAttributes> attributesOfItemAtPath(const std::string& path,
                                                       Error* error) const override;
  bool setAttributes(const FileAttributes& attributes, const std::string& ofItemAtPath,
                     Error* error) override;
  bool isWritableFileAtPath(const std::string& path) const override;
  std::string userName() const override;
};

}  // namespace quennel
