#pragma once

#include "access/Alerts.h"
#include "access/AuthorizationPanel.h"
#include "access/AuthorizedDirectories.h"
#include "access/ReplaceableTexts.h"
#include "app/Platform.h"
#include "creation/AppUtil.h"
#include "creation/FileCreation.h"
#include "creation/NewFilePanel.h"
#include "creation/PanelCount.h"
#include "shortcuts/FolderQuery.h"
#include "shortcuts/ScriptInstaller.h"
#include "shortcuts/Shortcuts.h"

namespace quennel {

/// The objects of the rooms, each with what it needs of the desktop and of those before it.
struct Rooms {
  const Platform& platform;

  ReplaceableTexts texts{platform.mainBundle, platform.sharedDefaults};
  Alerts alerts{platform.userInterface, platform.runLoop};
  AuthorizedDirectories directories{platform.securityScope, platform.sharedDefaults};
  AuthorizationPanel authorizationPanel{{.fileManager = platform.fileManager,
                                         .securityScope = platform.securityScope,
                                         .userInterface = platform.userInterface,
                                         .standardDefaults = platform.standardDefaults,
                                         .bundle = platform.mainBundle,
                                         .texts = texts,
                                         .alerts = alerts,
                                         .directories = directories}};

  AppUtil util{{.fileManager = platform.fileManager,
                .securityScope = platform.securityScope,
                .notifications = platform.distributedNotificationCenter,
                .userInterface = platform.userInterface}};
  PanelCount panelCount{};
  FileCreation creation{{.fileManager = platform.fileManager,
                         .securityScope = platform.securityScope,
                         .workspace = platform.workspace,
                         .sound = platform.sound,
                         .sharedDefaults = platform.sharedDefaults,
                         .bundle = platform.mainBundle,
                         .util = util,
                         .alerts = alerts,
                         .authorizationPanel = authorizationPanel}};
  NewFilePanel newFilePanel{{.fileManager = platform.fileManager,
                             .securityScope = platform.securityScope,
                             .userInterface = platform.userInterface,
                             .sharedDefaults = platform.sharedDefaults,
                             .standardDefaults = platform.standardDefaults,
                             .bundle = platform.mainBundle,
                             .util = util,
                             .texts = texts,
                             .alerts = alerts,
                             .creation = creation,
                             .panelCount = panelCount}};

  FolderQuery folderQuery{platform.runLoop, platform.userScripts, platform.mainBundle, alerts};
  ScriptInstaller installer{{.runLoop = platform.runLoop,
                             .fileManager = platform.fileManager,
                             .securityScope = platform.securityScope,
                             .workspace = platform.workspace,
                             .userInterface = platform.userInterface,
                             .userScripts = platform.userScripts,
                             .standardDefaults = platform.standardDefaults,
                             .bundle = platform.mainBundle,
                             .alerts = alerts,
                             .panelCount = panelCount}};
  Shortcuts shortcuts{{.runLoop = platform.runLoop,
                       .hotKeyCenter = platform.hotKeyCenter,
                       .sharedDefaults = platform.sharedDefaults,
                       .bundle = platform.mainBundle,
                       .util = util,
                       .installer = installer,
                       .folderQuery = folderQuery,
                       .creation = creation,
                       .newFilePanel = newFilePanel}};
};

}  // namespace quennel
