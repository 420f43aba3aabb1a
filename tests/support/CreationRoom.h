#pragma once

#include "creation/AppUtil.h"
#include "creation/FileCreation.h"
#include "creation/NewFilePanel.h"
#include "creation/PanelCount.h"
#include "tests/support/AccessRoom.h"

namespace quennel::test {

/// The room of file creation, with the one below it, on a desktop of fakes.
struct CreationRoom : AccessRoom {
  explicit CreationRoom(FakeDesktop& fakes)
      : AccessRoom(fakes),
        util({.fileManager = fakes.fileManager,
              .securityScope = fakes.securityScope,
              .notifications = fakes.distributedNotificationCenter,
              .userInterface = fakes.userInterface}),
        creation({.fileManager = fakes.fileManager,
                  .securityScope = fakes.securityScope,
                  .workspace = fakes.workspace,
                  .sound = fakes.sound,
                  .sharedDefaults = fakes.sharedDefaults,
                  .bundle = fakes.mainBundle,
                  .util = util,
                  .alerts = alerts,
                  .authorizationPanel = authorizationPanel}),
        newFilePanel({.fileManager = fakes.fileManager,
                      .securityScope = fakes.securityScope,
                      .userInterface = fakes.userInterface,
                      .sharedDefaults = fakes.sharedDefaults,
                      .standardDefaults = fakes.standardDefaults,
                      .bundle = fakes.mainBundle,
                      .util = util,
                      .texts = texts,
                      .alerts = alerts,
                      .creation = creation,
                      .panelCount = panelCount}) {}

  AppUtil util;
  PanelCount panelCount;
  FileCreation creation;
  NewFilePanel newFilePanel;
};

}  // namespace quennel::test
