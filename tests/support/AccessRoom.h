#pragma once

#include "access/Alerts.h"
#include "access/AuthorizationPanel.h"
#include "access/AuthorizedDirectories.h"
#include "access/ReplaceableTexts.h"
#include "tests/support/FakeDesktop.h"

namespace quennel::test {

/// The room of granted directories on a desktop of fakes.
struct AccessRoom {
  explicit AccessRoom(FakeDesktop& fakes)
      : texts(fakes.mainBundle, fakes.sharedDefaults),
        alerts(fakes.userInterface, fakes.runLoop),
        directories(fakes.securityScope, fakes.sharedDefaults),
        authorizationPanel({.fileManager = fakes.fileManager,
                            .securityScope = fakes.securityScope,
                            .userInterface = fakes.userInterface,
                            .standardDefaults = fakes.standardDefaults,
                            .bundle = fakes.mainBundle,
                            .texts = texts,
                            .alerts = alerts,
                            .directories = directories}) {}

  ReplaceableTexts texts;
  Alerts alerts;
  AuthorizedDirectories directories;
  AuthorizationPanel authorizationPanel;
};

}  // namespace quennel::test
