#include "platform/qt/SavePanelDialog.h"

#include <unistd.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QStandardPaths>
#include <QtGui/QAccessible>
#include <QtGui/QAction>
#include <QtWidgets/QApplication>
#include <QtWidgets/QComboBox>
#include <QtWidgets/QDialogButtonBox>
#include <QtWidgets/QGridLayout>
#include <QtWidgets/QHeaderView>
#include <QtWidgets/QLabel>
#include <QtWidgets/QLineEdit>
#include <QtWidgets/QListView>
#include <QtWidgets/QMessageBox>
#include <QtWidgets/QPushButton>
#include <QtWidgets/QTreeView>

#include "platform/Bundle.h"
#include "platform/PopUpButton.h"
#include "platform/qt/FileTypeIcons.h"
#include "platform/qt/PanelWindow.h"
#include "platform/values/Text.h"
#include "ui_FormatViewController.h"

namespace quennel {
namespace {

// Rows of the toolkit's own layout: the accessory stands in the place of the list of file types.
constexpr int accessoryRow = 3;
constexpr int hintRow = 4;
constexpr QSize comfortableSize(760, 500);

long longestNameIn(const QString& folder) {
  const long limit = pathconf(QFile::encodeName(folder).constData(), _PC_NAME_MAX);
  return limit > 0 ? limit : 255;
}

/// The folders that new files go to most, as far as they are there.
QList<QUrl> usualPlaces() {
  QList<QUrl> places;
  for (const auto location :
       {QStandardPaths::HomeLocation, QStandardPaths::DesktopLocation,
        QStandardPaths::DocumentsLocation, QStandardPaths::DownloadLocation}) {
    const QUrl place = QUrl::fromLocalFile(QStandardPaths::writableLocation(location));
    if (!places.contains(place) && QFileInfo(place.toLocalFile()).isDir()) {
      places.append(place);
    }
  }
  return places;
}

}  // namespace

SavePanelDialog::SavePanelDialog(const SavePanelContents& contents, const Bundle& bundle)
    : _contents(contents), _bundle(bundle) {
  // First of all: this makes the widgets that everything below works on.
  setOptions(DontUseNativeDialog | DontConfirmOverwrite);
  setAcceptMode(AcceptSave);
  setFileMode(AnyFile);
  _nameField = findChild<QLineEdit*>("fileNameEdit");
  _saveButton = findChild<QDialogButtonBox*>("buttonBox")->button(QDialogButtonBox::Save);
  _saveTitle = _saveButton->text();
  if (_contents.level == PanelLevel::AboveOthers) {
    keepAboveOthers(*this);
  }
  showDirectory();
  makePlaces();
  arrangeColumns();
  simplify();
  if (_contents.accessory) {
    makeAccessory(*_contents.accessory);
  }
  makeHint();
  nameControls();
  listenToNameField();
  showTitle();
  showName();
  showNewFolderButton();
  resize(comfortableSize.expandedTo(sizeHint()));
}

SavePanelDialog::~SavePanelDialog() {
  // The toolkit's dialog stores its places, and shows them in all programs.
  setSidebarUrls(_usersPlaces);
}

std::optional<std::string> SavePanelDialog::run() {
  _nameField->setFocus();
  setModal(true);  // before it is shown
  showInFront(*this);
  if (exec() != Accepted) {
    return std::nullopt;
  }
  return QFile::encodeName(_path).toStdString();
}

void SavePanelDialog::showTitle() { setWindowTitle(QString::fromStdString(_contents.title)); }

void SavePanelDialog::showName() {
  const bool isHidden = _contents.extensionHidden;
  const std::string& name = _contents.name;
  _isSettingName = true;
  _nameField->setText(QString::fromStdString(isHidden ? name : _contents.completedName(name)));
  _nameField->setSelection(0, static_cast<int>(QString::fromStdString(name).size()));
  _isSettingName = false;
}

void SavePanelDialog::showExtension() {
  if (!_nameField->isModified()) {  // what the user has typed stays
    showName();
  }
  typedNameChanged();
}

void SavePanelDialog::showDirectory() { setDirectory(nearestFolder(_contents.directory)); }

void SavePanelDialog::showNewFolderButton() {
  findChild<QWidget*>("newFolderButton")->setVisible(_contents.canCreateDirectories);
}

void SavePanelDialog::makePlaces() {
  _usersPlaces = sidebarUrls();
  QList<QUrl> places = usualPlaces();
  for (const QUrl& place : _usersPlaces) {
    if (!places.contains(place)) {
      places.append(place);
    }
  }
  setSidebarUrls(places);
  auto* const sidebar = findChild<QListView*>("sidebar");
  sidebar->setMinimumWidth(sidebar->sizeHintForColumn(0) + 2 * sidebar->frameWidth());
}

/// Room for the names, and for all of what stands beside them.
void SavePanelDialog::arrangeColumns() {
  QHeaderView& columns = *findChild<QTreeView*>("treeView")->header();
  columns.setResizeContentsPrecision(0);  // of what is to be seen, not of thousands of files
  columns.setSectionResizeMode(QHeaderView::ResizeToContents);
  columns.setSectionResizeMode(0, QHeaderView::Stretch);
}

void SavePanelDialog::simplify() {
  // Its list of existing names would cover the accessory and take the Return key.
  _nameField->setCompleter(nullptr);
  for (const char* const name : {"fileTypeLabel", "fileTypeCombo"}) {
    findChild<QWidget*>(name)->hide();
  }
  // Nobody renames or deletes other files in the course of making one, but by a slip.
  for (const char* const name : {"qt_rename_action", "qt_delete_action"}) {
    if (auto* const action = findChild<QAction*>(name)) {
      action->setVisible(false);
    }
  }
}

void SavePanelDialog::makeAccessory(PopUpButton& view) {
  QWidget frame;
  Ui::FormatViewController interface;
  interface.setupUi(&frame);
  interface.formatLabel->setText(QString::fromStdString(view.label()));
  QComboBox& button = *interface.formatButton;
  for (const MenuItem& item : view.items()) {
    button.addItem(iconOfFileExtension(item.image.fileType), QString::fromStdString(item.title));
    button.setIconSize(QSize(item.image.size, item.image.size));
  }
  button.setCurrentIndex(static_cast<int>(view.indexOfSelectedItem()));
  button.setEnabled(!view.items().empty());
  connect(&button, &QComboBox::activated, this,
          [&view](int index) { view.chooseItemAtIndex(static_cast<std::size_t>(index)); });
  // Out of their frame, into the columns of the dialog's own labels and fields.
  auto* const grid = qobject_cast<QGridLayout*>(layout());
  grid->addWidget(interface.formatLabel, accessoryRow, 0);
  grid->addWidget(interface.formatButton, accessoryRow, 1);
  setTabOrder(_nameField, interface.formatButton);
}

void SavePanelDialog::makeHint() {
  _hint = new QLabel(this);
  _hint->setObjectName("hint");
  _hint->setTextFormat(Qt::PlainText);
  _hint->setTextInteractionFlags(Qt::TextSelectableByMouse);
  // A long name must not make the panel wider.
  _hint->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  qobject_cast<QGridLayout*>(layout())->addWidget(_hint, hintRow, 1);
}

/// What assistive technology calls the controls that have no label.
void SavePanelDialog::nameControls() {
  const auto name = [this](const char* object, const std::string& text) {
    findChild<QWidget*>(object)->setAccessibleName(QString::fromStdString(text));
  };
  name("sidebar", localizedText("Places"));
  name("listView", localizedText("Files"));
  name("treeView", localizedText("Files"));
}

/// The toolkit listens, too: what it says comes first, and the last word is ours.
void SavePanelDialog::listenToNameField() {
  connect(_nameField, &QLineEdit::textChanged, this, [this] { typedNameChanged(); });
  connect(this, &QFileDialog::currentChanged, this, [this] { updateSaveButton(); });
  connect(this, &QFileDialog::directoryEntered, this, [this] { typedNameChanged(); });
}

void SavePanelDialog::typedNameChanged() {
  hideExtensionOfPickedName();
  updateSaveButton();
  if (typedName().isEmpty() || leadsToFolder()) {
    showHint("");
    return;
  }
  const QString path = typedPath();
  const QString name = typedName().contains('/') ? path : QFileInfo(path).fileName();
  showHint(formatted(localizedText("Full name: %@"), name.toStdString()));
}

void SavePanelDialog::showHint(const std::string& hint) {
  const QString text = QString::fromStdString(hint);
  _hint->setText(shortened(text));
  _hint->setToolTip(text);
  _nameField->setAccessibleDescription(text);
}

/// The start and the end of a text that is too long for a line.
QString SavePanelDialog::shortened(const QString& text) const {
  return fontMetrics().elidedText(text, Qt::ElideMiddle, comfortableSize.width() * 2 / 3);
}

/// The toolkit puts the whole name of a file that is clicked into the field.
void SavePanelDialog::hideExtensionOfPickedName() {
  if (_isSettingName || _nameField->isModified()) {
    return;
  }
  const QString picked = _nameField->text();
  const QString shown = QString::fromStdString(_contents.shownName(picked.toStdString()));
  if (shown != picked) {
    _isSettingName = true;
    _nameField->setText(shown);
    _isSettingName = false;
  }
}

void SavePanelDialog::updateSaveButton() {
  _saveButton->setEnabled(!typedName().isEmpty());
  _saveButton->setText(leadsToFolder() ? QApplication::translate("QFileDialog", "&Open")
                                       : _saveTitle);
}

QString SavePanelDialog::typedName() const { return _nameField->text().trimmed(); }

/// Where the name leads when it is taken as it is typed.
QString SavePanelDialog::typedPlace() const {
  QString typed = typedName();
  if (typed == "~" || typed.startsWith("~/")) {
    typed.replace(0, 1, QDir::homePath());
  }
  return QDir::cleanPath(directory().absoluteFilePath(typed));
}

QString SavePanelDialog::typedPath() const {
  return QString::fromStdString(_contents.completedName(typedPlace().toStdString()));
}

/// Whether the name is a way to go to a folder, rather than that of a file.
bool SavePanelDialog::leadsToFolder() const {
  const QString typed = typedName();
  const bool isPath = typed.contains('/') || typed == "." || typed == ".." || typed == "~";
  return isPath && QFileInfo(typedPlace()).isDir();
}

void SavePanelDialog::accept() {
  if (typedName().isEmpty()) {
    return;
  }
  if (leadsToFolder()) {
    setDirectory(typedPlace());
    _nameField->clear();
    return;
  }
  const QString path = typedPath();
  const std::string problem = problemWith(path);
  if (!problem.empty()) {
    showHint(problem);
    QAccessibleEvent alert(_hint, QAccessible::Alert);
    QAccessible::updateAccessibility(&alert);
    QApplication::beep();
    return;
  }
  if (!QFileInfo::exists(path) || userAgreesToReplace(path)) {
    _path = path;
    done(Accepted);
  }
}

/// Why there cannot be a file of that path; empty when nothing speaks against it.
std::string SavePanelDialog::problemWith(const QString& path) const {
  const QString folder = typedName().endsWith('/') ? typedPlace() : QFileInfo(path).path();
  if (!QFileInfo(folder).isDir()) {
    return formatted(localizedText("There is no folder “%@”."), folder.toStdString());
  }
  if (QFile::encodeName(QFileInfo(path).fileName()).size() > longestNameIn(folder)) {
    return localizedText("The name is too long.");
  }
  return "";
}

/// What is lost with an item that is replaced.
std::string SavePanelDialog::lossWith(const QFileInfo& item) const {
  if (item.isSymLink()) {
    return localizedText("It is a link. Only the link will be removed, not what it leads to.");
  }
  return item.isDir() ? localizedText("It is a folder. Everything in it will be removed.")
                      : localizedText("What it holds now will be lost.");
}

bool SavePanelDialog::userAgreesToReplace(const QString& path) {
  const QFileInfo item(path);
  const auto text = [](const std::string& string) { return QString::fromStdString(string); };
  QMessageBox question(
      QMessageBox::Warning, windowTitle(),
      text(formatted(localizedText("“%@” exists already. Do you want to replace it?"),
                     shortened(item.fileName()).toStdString())),
      QMessageBox::NoButton, this);
  question.setTextFormat(Qt::PlainText);
  question.setInformativeText(text(lossWith(item)));
  const auto* const replace =
      question.addButton(text(localizedText("&Replace")), QMessageBox::DestructiveRole);
  question.setDefaultButton(question.addButton(QMessageBox::Cancel));
  question.exec();
  return question.clickedButton() == replace;
}

std::string SavePanelDialog::localizedText(const char* key) const {
  return _bundle.localizedStringForKey(key);
}

}  // namespace quennel
