#include <cstddef>
#include <string>
#include <string_view>

#include "app/AppDelegate.h"
#include "platform/PTHotKey.h"
#include "platform/PTHotKeyCenter.h"
#include "platform/RunLoop.h"
#include "platform/UserDefaults.h"
#include "platform/values/Text.h"
#include "settings/SharedSettings.h"

namespace quennel {

namespace {

/// Every action of this name, whatever follows, is the shortcut action.
constexpr std::string_view actionPrefix = "shortcutAction";

}  // namespace

void AppDelegate::bindHotKeys() {
  PTHotKeyCenter& center = _platform.hotKeyCenter;
  for (const auto& hotKey : center.allHotKeys()) {
    center.unregisterHotKey(hotKey);
  }
  _templates = sharedDefaults().arrayForKey(fileTemplatesKey);
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

void AppDelegate::performAction(const std::string& name, const PTHotKey& sender) {
  if (!_actions.contains(name) && !resolveInstanceMethod(name)) {
    return;
  }
  const Action action = _actions.at(name);
  (this->*action)(name, sender);
}

bool AppDelegate::resolveInstanceMethod(const std::string& name) {
  if (!name.starts_with(actionPrefix)) {
    return false;
  }
  _actions.emplace(name, &AppDelegate::shortcutAction);
  return true;
}

void AppDelegate::shortcutAction(const std::string& name, const PTHotKey&) {
  if (!checkAndInstallScripts()) {
    return;
  }
  const auto index = integerValue(std::string_view(name).substr(actionPrefix.size()));
  const auto template_ = findTemplateByIndex(index);
  if (!template_) {
    _rooms.util.showAlert(localizedText("Unable to create file!"),
                          localizedText("No suitable file template found."), AlertStyle::Critical);
    return;
  }
  const bool skipFilename = sharedDefaults().boolForKey(skipFilenameKey);
  getFinderPathWithTemplate(*template_, [this, &runLoop = _platform.runLoop, skipFilename](
                                            const std::string& path, const FileTemplate& found) {
    runLoop.dispatchAsync([this, skipFilename, path, found] {
      if (skipFilename) {
        createFileAtDir(path, found);
      } else {
        showNewFilePanel(path, found);
      }
    });
  });
}

}  // namespace quennel
