#include "tests/support/FakeFileManager.h"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

namespace quennel::test {

using Kind = Error::Kind;

struct FakeFileManager::Node {
  enum class Type { File, Folder, Link, FIFO };

  Type type = Type::File;
  FileAttributes attributes;
  /// Of a file its bytes, of a link its target.
  std::string contents;
  std::map<std::string, NodePointer> children;

  bool isFolder() const { return type == Type::Folder; }
};

namespace {

constexpr int mostLinks = 40;

std::vector<std::string> componentsOf(const std::string& path) {
  std::vector<std::string> components;
  std::size_t start = 0;
  while (start < path.size()) {
    const std::size_t slash = std::min(path.find('/', start), path.size());
    if (slash > start) {
      components.push_back(path.substr(start, slash - start));
    }
    start = slash + 1;
  }
  return components;
}

std::string joined(const std::vector<std::string>& components, std::size_t count) {
  std::string path = "/";
  for (std::size_t index = 0; index < count; ++index) {
    path += (index == 0 ? "" : "/") + components[index];
  }
  return path;
}

std::string parentOf(const std::string& path) {
  const auto components = componentsOf(path);
  return components.empty() ? "/" : joined(components, components.size() - 1);
}

}  // namespace

FakeFileManager::FakeFileManager(CallLog& log) : _log(log), _root(newNode(0755)) {
  _root->type = Node::Type::Folder;
}

FakeFileManager::NodePointer FakeFileManager::newNode(std::uint16_t mode) const {
  auto node = std::make_shared<Node>();
  node->attributes = {mode, now, now};
  return node;
}

FakeFileManager::NodePointer FakeFileManager::copyOf(const Node& node) const {
  auto copy = std::make_shared<Node>(node);
  copy->attributes.creationDate = now;
  for (auto& [name, child] : copy->children) {
    child = copyOf(*child);
  }
  return copy;
}

// What the path leads to, links on the way followed, the last one only if wanted.
FakeFileManager::NodePointer FakeFileManager::nodeAt(const std::string& path, bool followLast,
                                                     int depth) const {
  NodePointer node = path.starts_with('/') ? _root : nullptr;
  const auto components = componentsOf(path);
  for (std::size_t index = 0; node && index < components.size(); ++index) {
    const auto child = node->children.find(components[index]);
    if (!node->isFolder() || child == node->children.end()) {
      return nullptr;
    }
    node = child->second;
    if (node->type == Node::Type::Link && (followLast || index + 1 < components.size())) {
      const bool isAbsolute = node->contents.starts_with('/');
      const std::string target =
          isAbsolute ? node->contents : joined(components, index) + "/" + node->contents;
      node = depth < mostLinks ? nodeAt(target, true, depth + 1) : nullptr;
    }
  }
  const bool wantsFolder = path.size() > 1 && path.ends_with('/');
  return node && wantsFolder && !node->isFolder() ? nullptr : node;
}

FakeFileManager::Node& FakeFileManager::folderFor(const std::string& path) {
  addDirectory(parentOf(path));
  return *nodeAt(parentOf(path));
}

void FakeFileManager::addDirectory(const std::string& path, std::uint16_t mode) {
  Node* folder = _root.get();
  for (const std::string& name : componentsOf(path)) {
    NodePointer& child = folder->children[name];
    if (!child) {
      child = newNode(mode);
      child->type = Node::Type::Folder;
    }
    folder = child.get();
  }
}

void FakeFileManager::addFile(const std::string& path, std::string contents, std::uint16_t mode) {
  const auto node = newNode(mode);
  node->contents = std::move(contents);
  folderFor(path).children[componentsOf(path).back()] = node;
}

void FakeFileManager::addLink(const std::string& path, const std::string& target) {
  const auto node = newNode(0777);
  node->type = Node::Type::Link;
  node->contents = target;
  folderFor(path).children[componentsOf(path).back()] = node;
}

void FakeFileManager::addFIFO(const std::string& path) {
  const auto node = newNode(0644);
  node->type = Node::Type::FIFO;
  folderFor(path).children[componentsOf(path).back()] = node;
}

void FakeFileManager::failNext(const std::string& operation, Error error, int letThrough) {
  _failures[operation] = {std::move(error), letThrough};
}

std::optional<Error> FakeFileManager::begin(std::string_view operation) const {
  ++callCounts[std::string(operation)];
  const auto failure = _failures.find(operation);
  if (failure == _failures.end() || failure->second.letThrough-- > 0) {
    return std::nullopt;
  }
  Error error = failure->second.error;
  _failures.erase(failure);
  return error;
}

void FakeFileManager::record(const std::string& operation, const std::string& paths) {
  calls.push_back(operation + " " + paths);
  _log.add(operation);
  if (beforeChange) {
    beforeChange(operation);
  }
}

bool FakeFileManager::conclude(int code, Kind kind, const std::string& path, Error* error) const {
  if (code != 0 && error) {
    *error = {code, kind, path};
  }
  return code == 0;
}

bool FakeFileManager::isProtected(const std::string& path) const {
  const auto components = componentsOf(path);
  for (std::size_t count = 0; count <= components.size(); ++count) {
    if (protectedPaths.contains(joined(components, count))) {
      return true;
    }
  }
  return false;
}

std::optional<FileManager::ItemKind> FakeFileManager::itemKindAtPath(
    const std::string& path) const {
  begin("itemKindAtPath");
  const auto node = nodeAt(path);
  if (!node) {
    return std::nullopt;
  }
  return node->isFolder() ? ItemKind::Directory : ItemKind::File;
}

bool FakeFileManager::visitDirectory(
    const std::string& path, const std::function<void(const DirectoryEntry&)>& visit) const {
  const auto failure = begin("visitDirectory");
  const auto node = nodeAt(path);
  if (failure || !node || !node->isFolder()) {
    return false;
  }
  for (const auto& [name, child] : node->children) {
    visit({name, child->type == Node::Type::Link});
  }
  return true;
}

void FakeFileManager::enumerateItemsAtPath(
    const std::string& path, const std::function<bool(const std::string&)>& visit) const {
  begin("enumerateItemsAtPath");
  const std::function<bool(const Node&, const std::string&)> walk = [&](const Node& folder,
                                                                        const std::string& prefix) {
    for (const auto& [name, child] : folder.children) {
      if (!visit(prefix + name) || !walk(*child, prefix + name + "/")) {
        return false;
      }
    }
    return true;
  };
  if (const auto node = nodeAt(path)) {
    walk(*node, "");
  }
}

int FakeFileManager::add(const std::string& path, NodePointer node, bool replace) {
  const auto folder = nodeAt(parentOf(path));
  const auto components = componentsOf(path);
  constexpr std::size_t longestName = 255;
  if (!folder || components.empty()) {
    return ENOENT;
  }
  if (!folder->isFolder()) {
    return ENOTDIR;
  }
  if (isProtected(path)) {
    return EACCES;
  }
  if (components.back().size() > longestName) {
    return ENAMETOOLONG;
  }
  NodePointer& place = folder->children[components.back()];
  if (place && !replace) {
    return EEXIST;
  }
  if (place && place->isFolder()) {
    return EISDIR;
  }
  place = std::move(node);
  return 0;
}

bool FakeFileManager::copyItemAtPath(const std::string& path, const std::string& toPath,
                                     Error* error) {
  record("copyItemAtPath", path + " " + toPath);
  if (const auto failure = begin("copyItemAtPath")) {
    return error ? (*error = *failure, false) : false;
  }
  if (!mayCopy(path, toPath, error)) {
    return false;
  }
  return conclude(add(toPath, copyOf(*nodeAt(path)), false), Kind::Creating, toPath, error);
}

bool FakeFileManager::mayCopy(const std::string& path, const std::string& toPath,
                              Error* error) const {
  const auto holdsFIFO = [](const Node& node, const auto& self) -> bool {
    bool found = node.type == Node::Type::FIFO;
    for (const auto& [name, child] : node.children) {
      found = found || self(*child, self);
    }
    return found;
  };
  const auto source = nodeAt(path);
  if (!source) {
    return conclude(ENOENT, Kind::Reading, path, error);
  }
  if (holdsFIFO(*source, holdsFIFO)) {
    return conclude(EOPNOTSUPP, Kind::CopyingSpecialFile, path, error);
  }
  const bool isBelow = (toPath + "/").starts_with(path + "/") && toPath != path;
  return conclude(isBelow ? EINVAL : 0, Kind::CopyingIntoItself, toPath, error);
}

bool FakeFileManager::leadsThrough(const std::string& path, const NodePointer& item,
                                   int depth) const {
  const auto components = componentsOf(path);
  for (std::size_t count = 1; count <= components.size() && depth < mostLinks; ++count) {
    const auto node = nodeAt(joined(components, count), false);
    if (!node) {
      return false;
    }
    const bool isLink = node->type == Node::Type::Link;
    const bool isAbsolute = isLink && node->contents.starts_with('/');
    const std::string start = isAbsolute ? "" : joined(components, count - 1) + "/";
    if (node == item || (isLink && leadsThrough(start + node->contents, item, depth + 1))) {
      return true;
    }
  }
  return false;
}

FileManager::Replacement FakeFileManager::replaceItemAtPath(const std::string& path,
                                                            const std::string& withCopyOf,
                                                            Error* error) {
  record("replaceItemAtPath", path + " " + withCopyOf);
  if (const auto failure = begin("setAside")) {
    return error ? (*error = *failure, Replacement::NotSetAside) : Replacement::NotSetAside;
  }
  if (const auto failure = begin("copyItemAtPath")) {
    return error ? (*error = *failure, Replacement::NotCopied) : Replacement::NotCopied;
  }
  if (!conclude(isProtected(path) ? EACCES : 0, Kind::Removing, path, error)) {
    return Replacement::NotSetAside;
  }
  const auto present = nodeAt(path, false);
  const bool isItself = present && leadsThrough(withCopyOf, present);
  const auto folder = nodeAt(parentOf(path));
  const int code = isItself ? EEXIST : (folder && folder->isFolder() ? 0 : ENOENT);
  if ((!isItself && !mayCopy(withCopyOf, path, error)) ||
      !conclude(code, Kind::Creating, path, error)) {
    return Replacement::NotCopied;
  }
  folder->children[componentsOf(path).back()] = copyOf(*nodeAt(withCopyOf));
  return Replacement::Done;
}

bool FakeFileManager::removeItemAtPath(const std::string& path, Error* error) {
  record("removeItemAtPath", path);
  if (const auto failure = begin("removeItemAtPath")) {
    return error ? (*error = *failure, false) : false;
  }
  int code = nodeAt(path, false) ? 0 : ENOENT;
  if (code == 0 && isProtected(path)) {
    code = EACCES;
  }
  if (code == 0) {
    nodeAt(parentOf(path))->children.erase(componentsOf(path).back());
  }
  return conclude(code, Kind::Removing, path, error);
}

bool FakeFileManager::createDirectoryAtPath(const std::string& path,
                                            bool withIntermediateDirectories, Error* error) {
  record("createDirectoryAtPath", path);
  if (const auto failure = begin("createDirectoryAtPath")) {
    return error ? (*error = *failure, false) : false;
  }
  int code = 0;
  const auto components = componentsOf(path);
  const std::size_t first = withIntermediateDirectories ? 1 : components.size();
  for (std::size_t count = first; code == 0 && count <= components.size(); ++count) {
    const auto present = nodeAt(joined(components, count));
    const bool isLast = count == components.size();
    if (withIntermediateDirectories && present && (!isLast || present->isFolder())) {
      continue;
    }
    auto folder = newNode(0755);
    folder->type = Node::Type::Folder;
    code = add(joined(components, count), folder, false);
  }
  return conclude(code, Kind::Creating, path, error);
}

std::optional<std::string> FakeFileManager::contentsAtPath(const std::string& path) const {
  const auto failure = begin("contentsAtPath");
  const auto node = nodeAt(path);
  if (failure || !node || node->type != Node::Type::File) {
    return std::nullopt;
  }
  return node->contents;
}

bool FakeFileManager::writeContents(std::string_view contents, const std::string& toPath,
                                    Error* error) {
  record("writeContents", toPath);
  if (const auto failure = begin("writeContents")) {
    return error ? (*error = *failure, false) : false;
  }
  const auto node = newNode(0644);
  node->contents = contents;
  return conclude(add(toPath, node, true), Kind::Writing, toPath, error);
}

std::optional<FileAttributes> FakeFileManager::attributesOfItemAtPath(const std::string& path,
                                                                      Error* error) const {
  if (const auto failure = begin("attributesOfItemAtPath")) {
    if (error) {
      *error = *failure;
    }
    return std::nullopt;
  }
  const auto node = nodeAt(path);
  if (!node) {
    conclude(ENOENT, Kind::Reading, path, error);
    return std::nullopt;
  }
  return node->attributes;
}

bool FakeFileManager::setAttributes(const FileAttributes& attributes,
                                    const std::string& ofItemAtPath, Error* error) {
  record("setAttributes", ofItemAtPath);
  attributesSet.push_back(attributes);
  if (const auto failure = begin("setAttributes")) {
    return error ? (*error = *failure, false) : false;
  }
  const auto node = nodeAt(ofItemAtPath);
  if (!node) {
    return conclude(ENOENT, Kind::ChangingAttributes, ofItemAtPath, error);
  }
  if (attributes.posixPermissions) {
    node->attributes.posixPermissions = *attributes.posixPermissions;
  }
  if (attributes.modificationDate) {
    node->attributes.modificationDate = attributes.modificationDate;
  }
  return true;
}

bool FakeFileManager::isWritableFileAtPath(const std::string& path) const {
  begin("isWritableFileAtPath");
  askedWritable.push_back(path);
  constexpr std::uint16_t ownerMayWrite = 0200;
  const auto node = nodeAt(path);
  return node && !isProtected(path) && (*node->attributes.posixPermissions & ownerMayWrite);
}

}  // namespace quennel::test
