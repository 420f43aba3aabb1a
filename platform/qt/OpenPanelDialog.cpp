#include "platform/qt/OpenPanelDialog.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLayout>

#include "platform/qt/PanelWindow.h"

namespace quennel {

OpenPanelDialog::OpenPanelDialog(const OpenPanel& panel) {
  // First of all: this makes the widgets that everything below works on. The desktop's own dialog
  // would know no message.
  setOptions(DontUseNativeDialog | ReadOnly);
  setFileMode(panel.canChooseDirectories ? Directory : ExistingFile);
  setOption(ShowDirsOnly, !panel.canChooseFiles);
  if (panel.showsHiddenFiles) {
    setFilter(filter() | QDir::Hidden);
  }
  if (panel.level == PanelLevel::AboveOthers) {
    keepAboveOthers(*this);
  }
  setDirectory(nearestFolder(panel.directory));
  setTexts(panel);
  simplify(panel);
}

std::optional<std::string> OpenPanelDialog::run() {
  setModal(true);  // before it is shown
  showInFront(*this);
  exec();
  return choice();
}

std::optional<std::string> OpenPanelDialog::choice() const {
  const QStringList chosen = selectedFiles();
  if (result() != Accepted || chosen.isEmpty()) {
    return std::nullopt;
  }
  return QFile::encodeName(QDir::cleanPath(chosen.first())).toStdString();
}

void OpenPanelDialog::setTexts(const OpenPanel& panel) {
  setWindowTitle(QString::fromStdString(panel.title));
  setLabelText(Accept, buttonTitle(panel.prompt));
  const QString message = QString::fromStdString(panel.message);
  setAccessibleDescription(message);
  auto* const label = new QLabel(message, this);
  label->setObjectName("message");
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  const QMargins margins = layout()->contentsMargins();
  label->setContentsMargins(margins.left(), margins.top(), margins.right(), 0);
  layout()->setMenuBar(label);  // the one place of a layout that can be put above its first row
}

void OpenPanelDialog::simplify(const OpenPanel& panel) {
  if (panel.canChooseFiles) {
    return;
  }
  for (const char* const name : {"fileTypeLabel", "fileTypeCombo", "newFolderButton"}) {
    if (auto* const widget = findChild<QWidget*>(name)) {
      widget->hide();
    }
  }
}

}  // namespace quennel
