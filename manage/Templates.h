#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

#include "manage/Failure.h"
#include "manage/TemplateDescription.h"
#include "platform/Autostart.h"
#include "platform/FileInspector.h"
#include "platform/HelperConnection.h"
#include "platform/UserDefaults.h"
#include "settings/FileTemplate.h"

namespace quennel {

/// Which template is meant. Other programs change the list at any moment, and a place in it passes
/// to another template then: whoever shows the list says with the place what was there, and the
/// template is found where it is now.
struct TemplatePlace {
  std::size_t index = 0;
  /// The record as the user saw it; nothing when only the place counts.
  std::optional<FileTemplate> record = std::nullopt;
};

/// What a change of the list did.
struct TemplateChange {
  /// Where the template is now, or was when it was removed.
  std::size_t index = 0;
  FileTemplate record = false;
  /// Why the desktop goes on starting the helper at login, or not, as it did.
  std::optional<Error> autostartFailure = std::nullopt;
};

/// The list of templates. Its order is the user's: every change is one step under the lock of the
/// settings, which moves no other template than the one that is meant, however many programs change
/// the list at once. After a change the desktop starts the helper at login if some template has a
/// shortcut, and a running helper reads the shortcuts again.
class Templates {
 public:
  /// Nothing is owned.
  Templates(UserDefaults& settings, const FileInspector& files, Autostart& autostart,
            HelperConnection& helper);

  Result<PropertyList::Array, Failure> all() const;

  /// Whether the file that the template copies is not there.
  bool isFileMissing(const FileTemplate& record) const;

  /// Adds a template at the end. The description has to say the file.
  Result<TemplateChange, Failure> add(const TemplateDescription& description);
  Result<TemplateChange, Failure> edit(const TemplatePlace& place,
                                       const TemplateDescription& description);
  Result<TemplateChange, Failure> remove(const TemplatePlace& place);
  /// Takes the template out of its place and puts it in the place of another.
  Result<TemplateChange, Failure> move(const TemplatePlace& place, const TemplatePlace& to);

  /// Asks the helper to make a file of the template in the folder, an absolute path.
  Result<void, Failure> makeFile(const TemplatePlace& place, const std::string& folder);

 private:
  using Work = std::function<std::optional<Failure>(PropertyList::Array&, TemplateChange&)>;
  Result<TemplateChange, Failure> change(const Work& work);
  std::optional<Error> updateAutostart();

  UserDefaults& _settings;
  const FileInspector& _files;
  Autostart& _autostart;
  HelperConnection& _helper;
};

}  // namespace quennel
