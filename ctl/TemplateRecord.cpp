#include "ctl/TemplateRecord.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>

#include "ctl/CommandError.h"
#include "ctl/FilePath.h"
#include "platform/keys/KeyCombination.h"
#include "platform/linux/locale/UserLocale.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

constexpr std::size_t longestName = 255;

struct stat statusOf(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) {
    throw CommandFailure(shown(path) + ": " + UserLocale::errorDescription(errno));
  }
  return status;
}

/// The absolute path of a file or folder that can be a template.
std::string templateFile(const std::string& name) {
  std::string path = existingPath(name);
  const struct stat status = statusOf(path);
  const bool isFolder = S_ISDIR(status.st_mode);
  if (!isFolder && !S_ISREG(status.st_mode)) {
    throw CommandFailure(shown(path) + " is neither a file nor a folder");
  }
  if (access(path.c_str(), isFolder ? R_OK | X_OK : R_OK) != 0) {
    throw CommandFailure(shown(path) + ": " + UserLocale::errorDescription(errno));
  }
  return path;
}

void checkNamePart(const std::optional<std::string>& part, const std::string& option) {
  if (part && part->find('/') != std::string::npos) {
    throw UsageError(option + " is a part of a file name and cannot hold a slash");
  }
}

void checkName(const std::string& name) {
  if (name.empty() || name == "." || name == "..") {
    throw UsageError("the files would have no name: give a --prefix");
  }
  if (name.size() > longestName) {
    throw UsageError("the files' name would be longer than " + std::to_string(longestName) +
                     " bytes");
  }
}

/// The shortcut in its usual spelling; an empty one for none.
std::optional<std::string> shortcutFrom(const Options& options) {
  if (options.has("no-shortcut")) {
    return "";
  }
  const auto text = options.valueOf("shortcut");
  if (!text) {
    return std::nullopt;
  }
  const auto combination = KeyCombination::fromPropertyList(PropertyList(*text));
  if (!combination) {
    throw UsageError("'" + shown(*text) + "' is no shortcut; one is written as in Ctrl+Alt+N");
  }
  return combination->acceleratorText();
}

/// People write the dot of an extension or leave it out.
std::optional<std::string> withoutLeadingDot(std::optional<std::string> suffix) {
  if (suffix && suffix->starts_with('.')) {
    suffix->erase(0, 1);
  }
  return suffix;
}

void set(PropertyList::Dictionary& record, const std::string& key,
         const std::optional<std::string>& value) {
  if (value) {
    record.insert_or_assign(key, *value);
  }
}

void set(PropertyList::Dictionary& record, const std::string& key,
         const std::optional<bool>& value) {
  if (value) {
    record.insert_or_assign(key, *value);
  }
}

}  // namespace

TemplateDescription TemplateDescription::fromOptions(const Options& options) {
  TemplateDescription description;
  description.title = options.valueOf("title");
  description.prefix = options.valueOf("prefix");
  description.suffix = withoutLeadingDot(options.valueOf("suffix"));
  description.executable = options.choice("executable", "no-executable");
  description.enabled = options.choice("enabled", "disabled");
  description.shortcut = shortcutFrom(options);
  if (description.title && description.title->empty()) {
    throw UsageError("--title cannot be empty");
  }
  checkNamePart(description.prefix, "--prefix");
  checkNamePart(description.suffix, "--suffix");
  if (const auto file = options.valueOf("file")) {
    description.setFile(*file);
  }
  return description;
}

void TemplateDescription::setFile(const std::string& name) { filePath = templateFile(name); }

bool TemplateDescription::isEmpty() const {
  return !title && !prefix && !suffix && !filePath && !executable && !enabled && !shortcut;
}

TemplateDescription TemplateDescription::withDefaults() const {
  TemplateDescription complete = *this;
  const std::string path = filePath.value_or("");
  const struct stat status = statusOf(path);
  const bool isFolder = S_ISDIR(status.st_mode);
  const std::string name = lastPathComponent(path);
  // A folder's name has no extension, whatever dots are in it.
  const std::string base = isFolder ? name : deletingPathExtension(name);
  complete.title = title.value_or(base);
  complete.prefix = prefix.value_or(base);
  complete.suffix = suffix.value_or(isFolder ? "" : pathExtension(name));
  complete.executable = executable.value_or(!isFolder && (status.st_mode & 0111U) != 0);
  complete.enabled = enabled.value_or(true);
  return complete;
}

FileTemplate TemplateDescription::appliedTo(const FileTemplate& record) const {
  PropertyList::Dictionary entries =
      record.dictionary() ? *record.dictionary() : PropertyList::Dictionary();
  set(entries, "title", title);
  set(entries, "prefix", prefix);
  set(entries, "suffix", suffix);
  set(entries, "filePath", filePath);
  set(entries, "executable", executable);
  set(entries, "enabled", enabled);
  if (shortcut && shortcut->empty()) {
    entries.erase("shortcut");
  } else {
    set(entries, "shortcut", shortcut);
  }
  FileTemplate changed = std::move(entries);
  if (prefix || suffix) {
    checkName(nameMadeBy(changed));
  }
  return changed;
}

std::string nameMadeBy(const FileTemplate& template_) {
  return appendingPathExtension(templateText(template_, "prefix"),
                                templateText(template_, "suffix"));
}

}  // namespace quennel
