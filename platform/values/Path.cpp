#include "platform/values/Path.h"

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <vector>

namespace quennel {
namespace {

/// A path of slashes alone keeps one.
std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/') {
    path.remove_suffix(1);
  }
  return path;
}

/// Where the last component starts in a path without trailing slashes.
std::size_t startOfLastComponent(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? 0 : slash + 1;
}

/// Where the extension's dot stands in a path without trailing slashes, else `npos`.
std::size_t dotOfExtension(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  const bool isExtension =
      dot != std::string_view::npos && dot > startOfLastComponent(path) && dot + 1 < path.size();
  return isExtension ? dot : std::string_view::npos;
}

char lowercase(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool endsWithExtension(std::string_view name, std::string_view extension) {
  if (name.size() <= extension.size() || name[name.size() - extension.size() - 1] != '.') {
    return false;
  }
  return std::equal(extension.begin(), extension.end(), name.end() - extension.size(),
                    [](char left, char right) { return lowercase(left) == lowercase(right); });
}

std::string expandingTilde(std::string_view path) {
  const bool namesHome = path == "~" || path.starts_with("~/");
  const char* home = namesHome ? std::getenv("HOME") : nullptr;
  if (!home || !*home) {
    return std::string(path);
  }
  return home + std::string(path.substr(1));
}

std::vector<std::string_view> standardComponents(std::string_view path) {
  const bool isAbsolute = path.starts_with('/');
  std::vector<std::string_view> components;
  while (!path.empty()) {
    const std::string_view component = path.substr(0, path.find('/'));
    path.remove_prefix(std::min(component.size() + 1, path.size()));
    if (component.empty() || component == ".") {
      continue;
    }
    if (component != ".." || !isAbsolute) {
      components.push_back(component);
    } else if (!components.empty()) {
      components.pop_back();
    }
  }
  return components;
}

}  // namespace

std::string lastPathComponent(std::string_view path) {
  path = withoutTrailingSlashes(path);
  return std::string(path == "/" ? path : path.substr(startOfLastComponent(path)));
}

std::string deletingLastPathComponent(std::string_view path) {
  path = withoutTrailingSlashes(path);
  return std::string(withoutTrailingSlashes(path.substr(0, startOfLastComponent(path))));
}

std::string appendingPathComponent(std::string_view path, std::string_view component) {
  path = withoutTrailingSlashes(path);
  component = withoutTrailingSlashes(component);
  if (path.empty()) {
    return std::string(component);
  }
  while (component.starts_with('/')) {
    component.remove_prefix(1);
  }
  std::string result(path);
  if (!component.empty() && path.back() != '/') {
    result += '/';
  }
  return result.append(component);
}

std::string pathExtension(std::string_view path) {
  path = withoutTrailingSlashes(path);
  const std::size_t dot = dotOfExtension(path);
  return dot == std::string_view::npos ? std::string() : std::string(path.substr(dot + 1));
}

std::string deletingPathExtension(std::string_view path) {
  path = withoutTrailingSlashes(path);
  return std::string(path.substr(0, dotOfExtension(path)));
}

std::string appendingPathExtension(std::string_view path, std::string_view extension) {
  std::string result(withoutTrailingSlashes(path));
  if (!extension.empty()) {
    result.append(".").append(extension);
  }
  return result;
}

std::string completingPathExtension(std::string_view name, std::string_view extension) {
  // An extension may consist of several: the longest beginning of it that is there counts.
  for (std::size_t end = extension.size(); end != 0 && end != std::string_view::npos;
       end = extension.rfind('.', end - 1)) {
    if (endsWithExtension(name, extension.substr(0, end))) {
      return std::string(name) + std::string(extension.substr(end));
    }
  }
  return extension.empty() ? std::string(name) : appendingPathExtension(name, extension);
}

std::string standardizingPath(std::string_view path) {
  const std::string expanded = expandingTilde(path);
  std::string result = expanded.starts_with('/') ? "/" : "";
  for (const std::string_view component : standardComponents(expanded)) {
    if (!result.empty() && result.back() != '/') {
      result += '/';
    }
    result.append(component);
  }
  return result;
}

}  // namespace quennel
