#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/FileManager.h"
#include "platform/SecurityScope.h"

namespace quennel {

/// Another file manager, held to what the user granted: every operation that changes something runs
/// within the scope, and a place is writable only when it could be changed that way. Reading is
/// handed on as it is.
class ConfinedFileManager final : public FileManager {
 public:
  /// Neither is owned; both outlive this object.
  ConfinedFileManager(FileManager& files, SecurityScope& scope) : _files(files), _scope(scope) {}

  std::optional<ItemKind> itemKindAtPath(const std::string& path) const override {
    return _files.itemKindAtPath(path);
  }
  bool visitDirectory(const std::string& path,
                      const std::function<void(const DirectoryEntry&)>& visit) const override {
    return _files.visitDirectory(path, visit);
  }
  void enumerateItemsAtPath(const std::string& path,
                            const std::function<bool(const std::string&)>& visit) const override {
    _files.enumerateItemsAtPath(path, visit);
  }
  std::optional<std::string> contentsAtPath(const std::string& path) const override {
    return _files.contentsAtPath(path);
  }
  std::optional<FileAttributes> attributesOfItemAtPath(const std::string& path,
                                                       Error* error) const override {
    return _files.attributesOfItemAtPath(path, error);
  }
  std::string userName() const override { return _files.userName(); }

  bool copyItemAtPath(const std::string& path, const std::string& toPath, Error* error) override;
  Replacement replaceItemAtPath(const std::string& path, const std::string& withCopyOf,
                                Error* error) override;
  bool removeItemAtPath(const std::string& path, Error* error) override;
  bool createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories,
                             Error* error) override;
  bool writeContents(std::string_view contents, const std::string& toPath, Error* error) override;
  bool setAttributes(const FileAttributes& attributes, const std::string& ofItemAtPath,
                     Error* error) override;
  bool isWritableFileAtPath(const std::string& path) const override;

 private:
  FileManager& _files;
  SecurityScope& _scope;
};

}  // namespace quennel
