#include "platform/qt/BegunPanels.h"

#include <QtCore/QEventLoop>
#include <QtCore/QThread>
#include <utility>

#include "platform/RunLoop.h"
#include "platform/qt/OpenPanelDialog.h"
#include "platform/qt/PanelWindow.h"
#include "platform/qt/QtApplication.h"

namespace quennel {

struct BegunPanels::Begun {
  Begun(std::shared_ptr<QtApplication> itsApplication, const OpenPanel& panel,
        UserInterface::Choice itsCompletion)
      : application(std::move(itsApplication)),
        dialog(panel),
        completion(std::move(itsCompletion)) {}

  std::shared_ptr<QtApplication> application;
  OpenPanelDialog dialog;
  UserInterface::Choice completion;
};

BegunPanels::~BegunPanels() = default;

void BegunPanels::begin(const std::shared_ptr<QtApplication>& application, const OpenPanel& panel,
                        const UserInterface::Choice& completion) {
  const auto begun = std::make_shared<Begun>(application, panel, completion);
  _panels.push_back(begun);
  QObject::connect(&begun->dialog, &QDialog::finished, &begun->dialog,
                   [this, entry = std::weak_ptr(begun)] { finish(entry.lock()); });
  showInFront(begun->dialog);
  serve();
}

void BegunPanels::serve() {
  if (QThread::currentThread()->loopLevel() == 0) {
    _closed.clear();
  }
  if (!_panels.empty() && QThread::currentThread()->loopLevel() == 0) {
    _runLoop.dispatchAsync([this] { run(); });
  }
}

void BegunPanels::run() {
  if (_panels.empty() || QThread::currentThread()->loopLevel() > 0) {
    return;
  }
  // The last panel must not take the application object with it inside of this loop.
  const auto application = _panels.front()->application;
  QEventLoop loop;
  _loop = &loop;
  while (!_panels.empty()) {
    loop.exec();
  }
  _loop = nullptr;
  _closed.clear();
}

/// Called in the middle of the dialog's own signal.
void BegunPanels::finish(const std::shared_ptr<Begun>& begun) {
  _panels.remove(begun);
  // Work that a terminating run loop refuses is destroyed at once; the dialog must not go with it.
  _closed.push_back(begun);
  if (_panels.empty() && _loop) {
    _loop->quit();
  }
  _runLoop.dispatchAsync([this, entry = begun]() mutable {
    _closed.remove(entry);
    const auto choice = entry->dialog.choice();
    const auto completion = std::move(entry->completion);
    entry.reset();
    completion(choice);
  });
}

}  // namespace quennel
