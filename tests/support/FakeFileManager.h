#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/FileManager.h"
#include "tests/support/CallLog.h"

namespace quennel::test {

/// A tree of files in memory, with the rules of the real one as far as rooms can see them.
class FakeFileManager : public FileManager {
 public:
  explicit FakeFileManager(CallLog& log);

  // What the test puts there, parents included. No call is recorded.
  void addFile(const std::string& path, std::string contents = {}, std::uint16_t mode = 0644);
  void addDirectory(const std::string& path, std::uint16_t mode = 0755);
  void addLink(const std::string& path, const std::string& target);
  void addFIFO(const std::string& path);

  /// The date that new and changed items get.
  FileAttributes::Date now = FileAttributes::Date(std::chrono::hours(24));
  /// Nothing at or below these can be written.
  std::set<std::string> protectedPaths;
  std::string loginName = "me";

  /// Every call that changes something, whether it succeeds or not: the operation's name and its
  /// paths, with a space between. The shared log gets the name alone.
  std::vector<std::string> calls;
  /// What each call of `setAttributes` was to set.
  std::vector<FileAttributes> attributesSet;
  /// Called before every call that changes something, with the operation's name.
  std::function<void(const std::string&)> beforeChange;
  /// How often each operation was called, by its name; the reading ones too.
  mutable std::map<std::string, int, std::less<>> callCounts;
  /// The paths that `isWritableFileAtPath` was asked about.
  mutable std::vector<std::string> askedWritable;

  /// Lets the next call of the operation fail, or the one after so many that are let through. A
  /// replacement fails as "setAside" or as "copyItemAtPath".
  void failNext(const std::string& operation, Error error = {5}, int letThrough = 0);

  std::optional<ItemKind> itemKindAtPath(const std::string& path) const override;
  bool visitDirectory(const std::string& path,
                      const std::function<void(const DirectoryEntry&)>& visit) const override;
  void enumerateItemsAtPath(const std::string& path,
                            const std::function<bool(const std::string&)>& visit) const override;
  bool copyItemAtPath(const std::string& path, const std::string& toPath,
                      Error* error = nullptr) override;
  Replacement replaceItemAtPath(const std::string& path, const std::string& withCopyOf,
                                Error* error = nullptr) override;
  bool removeItemAtPath(const std::string& path, Error* error = nullptr) override;
  bool createDirectoryAtPath(const std::string& path, bool withIntermediateDirectories,
                             Error* error = nullptr) override;
  std::optional<std::string> contentsAtPath(const std::string& path) const override;
  bool writeContents(std::string_view contents, const std::string& toPath,
                     Error* error = nullptr) override;
  std::optional<FileAttributes> attributesOfItemAtPath(const std::string& path,
                                                       Error* error = nullptr) const override;
  bool setAttributes(const FileAttributes& attributes, const std::string& ofItemAtPath,
                     Error* error = nullptr) override;
  bool isWritableFileAtPath(const std::string& path) const override;
  std::string userName() const override { return loginName; }

 private:
  struct Node;
  using NodePointer = std::shared_ptr<Node>;
  struct Failure {
    Error error;
    int letThrough;
  };

  NodePointer nodeAt(const std::string& path, bool followLast = true, int depth = 0) const;
  NodePointer newNode(std::uint16_t mode) const;
  NodePointer copyOf(const Node& node) const;
  Node& folderFor(const std::string& path);
  int add(const std::string& path, NodePointer node, bool replace);
  bool isProtected(const std::string& path) const;
  /// Answers whether the item can be copied, else fills `error`.
  bool mayCopy(const std::string& path, const std::string& toPath, Error* error) const;
  bool leadsThrough(const std::string& path, const NodePointer& item, int depth = 0) const;
  /// Counts the call; answers the failure that the test wants of it.
  std::optional<Error> begin(std::string_view operation) const;
  void record(const std::string& operation, const std::string& paths);
  bool conclude(int code, Error::Kind kind, const std::string& path, Error* error) const;

  CallLog& _log;
  NodePointer _root;
  mutable std::map<std::string, Failure, std::less<>> _failures;
};

}  // namespace quennel::test
