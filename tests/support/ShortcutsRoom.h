#pragma once

#include "shortcuts/FolderQuery.h"
#include "shortcuts/ScriptInstaller.h"
#include "shortcuts/Shortcuts.h"
#include "tests/support/CreationRoom.h"

namespace quennel::test {

/// The room of shortcuts, with those below it, on a desktop of fakes.
struct ShortcutsRoom : CreationRoom {
  explicit ShortcutsRoom(FakeDesktop& fakes)
      : CreationRoom(fakes),
        folderQuery(fakes.runLoop, fakes.userScripts, fakes.mainBundle, alerts),
        installer({.runLoop = fakes.runLoop,
                   .fileManager = fakes.fileManager,
                   .securityScope = fakes.securityScope,
                   .workspace = fakes.workspace,
                   .userInterface = fakes.userInterface,
                   .userScripts = fakes.userScripts,
                   .standardDefaults = fakes.standardDefaults,
                   .bundle = fakes.mainBundle,
                   .alerts = alerts,
                   .panelCount = panelCount}),
        shortcuts({.runLoop = fakes.runLoop,
                   .hotKeyCenter = fakes.hotKeyCenter,
                   .sharedDefaults = fakes.sharedDefaults,
                   .bundle = fakes.mainBundle,
                   .util = util,
                   .installer = installer,
                   .folderQuery = folderQuery,
                   .creation = creation,
                   .newFilePanel = newFilePanel}) {}

  FolderQuery folderQuery;
  ScriptInstaller installer;
  Shortcuts shortcuts;
};

}  // namespace quennel::test
