#include "shortcuts/Shortcuts.h"

#include <cstddef>
#include <memory>
#include <string_view>

#include "creation/AppUtil.h"
#include "creation/FileCreation.h"
#include "creation/NewFilePanel.h"
#include "platform/Bundle.h"
#include "platform/PTHotKey.h"
#include "platform/PTHotKeyCenter.h"
#include "platform/RunLoop.h"
#include "platform/UserDefaults.h"
#include "platform/values/Text.h"
#include "settings/FileTemplate.h"
#include "settings/SharedSettings.h"
#include "shortcuts/FolderQuery.h"
#include "shortcuts/ScriptInstaller.h"

namespace quennel {

namespace {

/// Every action of this name, whatever follows, is the shortcut action.
constexpr std::string_view actionPrefix = "shortcutAction";

}  // namespace

void Shortcuts::bindHotKeys() {
  PTHotKeyCenter& center = _services.hotKeyCenter;
  for (const auto& hotKey : center.allHotKeys()) {
    center.unregisterHotKey(hotKey);
  }
  _turns.forgetKept();
  _templates = _services.sharedDefaults.arrayForKey(fileTemplatesKey);
  const std::size_t count = _templates ? _templates->size() : 0;
  for (std::size_t index = 0; index < count; ++index) {
    const FileTemplate& template_ = (*_templates)[index];
    const PropertyList* shortcut = template_.objectForKey("shortcut");
    if (!shortcut) {
      continue;
    }
    const std::string number = std::to_string(index);
    // A combination that is refused is left out without a word.
    center.registerHotKey(PTHotKey::hotKeyWithIdentifier("shortcut" + number, *shortcut, *this,
                                                         std::string(actionPrefix) + number,
                                                         templateText(template_, "title")));
  }
}

void Shortcuts::performAction(const std::string& name, const PTHotKey& sender) {
  if (!_actions.contains(name) && !resolveInstanceMethod(name)) {
    return;
  }
  const Action action = _actions.at(name);
  (this->*action)(name, sender);
}

bool Shortcuts::resolveInstanceMethod(const std::string& name) {
  if (!name.starts_with(actionPrefix)) {
    return false;
  }
  _actions.emplace(name, &Shortcuts::shortcutAction);
  return true;
}

void Shortcuts::shortcutAction(const std::string& name, const PTHotKey&) {
  if (_services.installer.isAtWork()) {
    _services.installer.bringToFront();
  } else if (_turns.begin(name)) {
    servePress(name);
  }
}

void Shortcuts::servePress(const std::string& name) {
  const auto turn = std::make_shared<PressTurn>(_services.runLoop, [this, name] {
    if (_turns.end(name)) {
      servePress(name);
    }
  });
  if (!_services.installer.checkAndInstallScripts()) {
    return;
  }
  const auto index = integerValue(std::string_view(name).substr(actionPrefix.size()));
  const UserDefaults& settings = _services.sharedDefaults;
  const auto template_ = templateAtIndex(settings.objectForKey(fileTemplatesKey), index);
  if (!template_) {
    const Bundle& bundle = _services.bundle;
    _services.util.showAlert(bundle.localizedStringForKey("Unable to create file!"),
                             bundle.localizedStringForKey("No suitable file template found."),
                             AlertStyle::Critical);
    return;
  }
  const bool skipFilename = settings.boolForKey(skipFilenameKey);
  // The handler runs on the script's thread, where nothing but the run loop may be used.
  _services.folderQuery.getFinderPathWithTemplate(
      *template_, [this, &runLoop = _services.runLoop, skipFilename, turn](
                      const std::string& path, const FileTemplate& found) {
        runLoop.dispatchAsync([this, skipFilename, path, found, turn] {
          makeFile(path, found, skipFilename, *turn);
        });
      });
}

void Shortcuts::makeFile(const std::string& dir, const FileTemplate& template_, bool skipFilename,
                         PressTurn& turn) {
  if (skipFilename) {
    _services.creation.createFileAtDir(dir, template_);
    turn.end();
  } else {
    // A panel stands for as long as the user likes; another may come up beside it.
    turn.end();
    _services.newFilePanel.showNewFilePanel(dir, template_);
  }
}

}  // namespace quennel
