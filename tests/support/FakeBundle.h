#pragma once

#include <map>
#include <optional>
#include <string>

#include "platform/Bundle.h"

namespace quennel::test {

/// A bundle whose resources, texts and property lists the test writes down.
class FakeBundle : public Bundle {
 public:
  /// "name.type" → path.
  std::map<std::string, std::string> resources;
  /// Path → dictionary.
  std::map<std::string, PropertyList::Dictionary> propertyLists;
  /// English text → translation.
  std::map<std::string, std::string> translations;

  std::optional<std::string> pathForResource(const std::string& name,
                                             const std::string& type) const override {
    return find(resources, name + "." + type);
  }
  std::optional<PropertyList::Dictionary> dictionaryWithContentsOfFile(
      const std::string& path) const override {
    return find(propertyLists, path);
  }
  std::string localizedStringForKey(const std::string& key) const override {
    return find(translations, key).value_or(key);
  }
  std::string executablePath() const override { return "/opt/quennel/bin/quennelhelper"; }
  std::string bundleIdentifier() const override { return "net.brellow.QuennelHelper"; }

 private:
  template <typename Value>
  static std::optional<Value> find(const std::map<std::string, Value>& entries,
                                   const std::string& key) {
    const auto entry = entries.find(key);
    return entry == entries.end() ? std::nullopt : std::optional(entry->second);
  }
};

}  // namespace quennel::test
