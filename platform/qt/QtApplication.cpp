#include "platform/qt/QtApplication.h"

#include <malloc.h>

#include <QtCore/QAbstractEventDispatcher>
#include <QtCore/QLibraryInfo>
#include <QtCore/QLocale>
#include <QtCore/QSocketNotifier>
#include <QtCore/QTranslator>
#include <QtGui/QDrag>
#include <QtGui/QIcon>
#include <QtGui/QPixmapCache>
#include <QtWidgets/QDialog>
#include <clocale>
#include <utility>

#include "platform/RunLoop.h"

namespace quennel {
namespace {

char programName[] = "quennelhelper";
char platformOption[] = "-platform";

void dismissEverything() {
  QDrag::cancel();
  while (QWidget* const popup = QApplication::activePopupWidget()) {
    popup->close();
  }
  const QWidgetList windows = QApplication::topLevelWidgets();
  for (QWidget* const window : windows) {
    auto* const dialog = qobject_cast<QDialog*>(window);
    if (dialog && dialog->isVisible()) {
      dialog->reject();
    }
  }
}

void setAttributes() {
  // A window that closes ends nothing here, and the session manager has nothing to save.
  QApplication::setQuitOnLastWindowClosed(false);
  QApplication::setAttribute(Qt::AA_DisableSessionManager);
  QApplication::setApplicationName(programName);
  QApplication::setDesktopFileName("net.brellow.QuennelHelper");
}

}  // namespace

QtApplication::QtApplication(RunLoop& runLoop, std::string platforms)
    : _runLoop(runLoop),
      _platforms(std::move(platforms)),
      _arguments{programName, platformOption, _platforms.data(), nullptr} {
  setAttributes();
  _application.emplace(_argumentCount, _arguments);
  // The toolkit has taken over the user's locale; numbers are read and written in one form only.
  std::setlocale(LC_NUMERIC, "C");
  // Its keys would stay behind, and be of no use to the application objects that come after.
  QPixmapCache::setCacheLimit(0);
  QApplication::setWindowIcon(QIcon::fromTheme("document-new"));
  installTranslations();

  _mainQueueNotifier =
      std::make_unique<QSocketNotifier>(_runLoop.descriptor(), QSocketNotifier::Read);
  QObject::connect(_mainQueueNotifier.get(), &QSocketNotifier::activated, _mainQueueNotifier.get(),
                   [this] { serveMainQueue(); });
  // Work that was queued, and timers that were armed, since the last wait do not make the
  // descriptor readable by themselves.
  QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                   _mainQueueNotifier.get(), [this] { serveMainQueue(); });
}

QtApplication::~QtApplication() {
  _mainQueueNotifier.reset();
  _application.reset();
  // Not for the programs that are started later.
  qunsetenv("XDG_ACTIVATION_TOKEN");
  qunsetenv("DESKTOP_STARTUP_ID");
  malloc_trim(0);
}

void QtApplication::activate() {
  if (QWidget* const window = QApplication::activeModalWidget()) {
    window->raise();
    window->activateWindow();
  }
}

void QtApplication::serveMainQueue() {
  if (_runLoop.serve()) {
    return;
  }
  dismissEverything();
  // When this is called because an event loop is about to wait, and that loop has just been told to
  // end, by now or by the loops inside of it that have ended meanwhile, it would wait all the same.
  QAbstractEventDispatcher::instance()->wakeUp();
}

void QtApplication::installTranslations() {
  auto* const translator = new QTranslator(&*_application);
  if (translator->load(QLocale(), "qtbase", "_",
                       QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    QApplication::installTranslator(translator);
  }
}

}  // namespace quennel
