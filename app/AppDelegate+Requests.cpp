#include "app/AppDelegate.h"
#include "platform/Bundle.h"
#include "platform/URLEvents.h"
#include "platform/UserDefaults.h"
#include "platform/UserInterface.h"
#include "platform/values/Text.h"
#include "platform/values/URL.h"
#include "settings/SharedSettings.h"

namespace quennel {

void AppDelegate::handleURLEvent(const URLEvent& event) {
  setShouldHandleURL(true);
  _platform.userInterface.setActivationToken(event.activationToken);
  const auto url = event.directObject ? URL::create(*event.directObject) : std::nullopt;
  const auto query = url ? url->query() : std::nullopt;
  const auto template_ = findTemplateByIndex(integerValue(query.value_or("")));
  if (!template_) {
    reportMissingTemplate();
  } else {
    const auto dir = url ? std::optional(url->path()) : std::nullopt;
    if (sharedDefaults().boolForKey(skipFilenameKey)) {
      createFileAtDir(dir, *template_);
    } else {
      showNewFilePanel(dir, *template_);
    }
  }
  armRequestQuitCheck();
}

void AppDelegate::reportMissingTemplate() {
  const Bundle& bundle = _platform.mainBundle;
  _rooms.panelCount.raise();
  _rooms.util.showAlert(bundle.localizedStringForKey("Unable to create file!"),
                        bundle.localizedStringForKey("No suitable file template found."),
                        AlertStyle::Critical);
  _rooms.panelCount.lower();
}

}  // namespace quennel
