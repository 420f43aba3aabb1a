#include "manage/TemplateDescription.h"

#include <utility>

#include "platform/keys/KeyCombination.h"
#include "platform/values/Path.h"
#include "platform/values/Text.h"

namespace quennel {
namespace {

using Reason = Failure::Reason;
using Check = std::optional<Failure>;

bool hasSlash(const std::optional<std::string>& part) {
  return part && part->find('/') != std::string::npos;
}

void dropLeadingDot(std::optional<std::string>& suffix) {
  if (suffix && suffix->starts_with('.')) {
    suffix->erase(0, 1);
  }
}

/// Puts the shortcut into its usual spelling.
Check checkShortcut(std::optional<std::string>& shortcut) {
  if (!shortcut) {
    return {};
  }
  const auto combination = KeyCombination::fromPropertyList(PropertyList(*shortcut));
  if (!combination) {
    return Failure{.reason = Reason::NoKeyCombination, .item = *shortcut};
  }
  shortcut = combination->acceleratorText();
  return {};
}

/// Whether the item can be copied.
Check checkFile(const std::string& path, const FileInspector& files) {
  Failure failure{.reason = Reason::UnreadableItem, .item = path};
  const auto facts = files.factsOf(path, &failure.error);
  if (!facts) {
    return failure;
  }
  if (facts->kind == FileFacts::Kind::Special) {
    return Failure{.reason = Reason::SpecialFile, .item = path};
  }
  if (!isValidUTF8(path)) {
    return Failure{.reason = Reason::UnstorablePath, .item = path};
  }
  if (facts->obstacle) {
    failure.error = *facts->obstacle;
    return failure;
  }
  return {};
}

Check checkName(const std::string& name) {
  if (name.empty() || name == "." || name == "..") {
    return Failure{.reason = Reason::NoName};
  }
  if (name.size() > longestFileName) {
    return Failure{.reason = Reason::NameTooLong};
  }
  return {};
}

template <class Value>
void set(PropertyList::Dictionary& record, const std::string& key,
         const std::optional<Value>& value) {
  if (value) {
    record.insert_or_assign(key, *value);
  }
}

}  // namespace

bool TemplateDescription::isEmpty() const {
  return !title && !prefix && !suffix && !filePath && !executable && !enabled && !shortcut &&
         !removesShortcut;
}

Result<TemplateDescription, Failure> checked(TemplateDescription description,
                                             const FileInspector& files) {
  if (auto failure = checkShortcut(description.shortcut)) {
    return *failure;
  }
  if (description.title && description.title->empty()) {
    return Failure{.reason = Reason::EmptyTitle};
  }
  if (hasSlash(description.prefix)) {
    return Failure{.reason = Reason::SlashInPrefix};
  }
  if (hasSlash(description.suffix)) {
    return Failure{.reason = Reason::SlashInSuffix};
  }
  dropLeadingDot(description.suffix);
  if (description.filePath) {
    if (auto failure = checkFile(*description.filePath, files)) {
      return *failure;
    }
  }
  return description;
}

Result<TemplateDescription, Failure> withDefaults(TemplateDescription description,
                                                  const FileInspector& files) {
  const std::string path = description.filePath.value_or("");
  Failure failure{.reason = Reason::UnreadableItem, .item = path};
  const auto facts = files.factsOf(path, &failure.error);
  if (!facts) {
    return failure;
  }
  const bool isFolder = facts->kind == FileFacts::Kind::Folder;
  const std::string name = lastPathComponent(path);
  // A folder's name has no extension, whatever dots are in it.
  const std::string base = isFolder ? name : deletingPathExtension(name);
  description.title = description.title.value_or(base);
  description.prefix = description.prefix.value_or(base);
  description.suffix = description.suffix.value_or(isFolder ? "" : pathExtension(name));
  description.executable = description.executable.value_or(!isFolder && facts->isExecutable);
  description.enabled = description.enabled.value_or(true);
  return description;
}

Result<FileTemplate, Failure> applied(const TemplateDescription& description,
                                      const FileTemplate& record) {
  PropertyList::Dictionary entries =
      record.dictionary() ? *record.dictionary() : PropertyList::Dictionary();
  set(entries, "title", description.title);
  set(entries, "prefix", description.prefix);
  set(entries, "suffix", description.suffix);
  set(entries, "filePath", description.filePath);
  set(entries, "executable", description.executable);
  set(entries, "enabled", description.enabled);
  set(entries, "shortcut", description.shortcut);
  if (description.removesShortcut) {
    entries.erase("shortcut");
  }
  FileTemplate changed = std::move(entries);
  if (description.prefix || description.suffix) {
    if (auto failure = checkName(templateFileName(changed))) {
      return *failure;
    }
  }
  return changed;
}

}  // namespace quennel
