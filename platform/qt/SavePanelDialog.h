#pragma once

#include <QtCore/QFileInfo>
#include <QtCore/QList>
#include <QtCore/QUrl>
#include <QtWidgets/QFileDialog>
#include <optional>
#include <string>

#include "platform/qt/SavePanelContents.h"

class QLabel;
class QLineEdit;
class QPushButton;

namespace quennel {

class Bundle;

/// A save panel on screen: the toolkit's file dialog with the accessory under its name field and,
/// below that, what the name comes to or why it cannot be used.
class SavePanelDialog : public QFileDialog {
 public:
  /// Neither is owned. What changes in `contents` meanwhile is shown by the operations below.
  SavePanelDialog(const SavePanelContents& contents, const Bundle& bundle);
  SavePanelDialog(const SavePanelDialog&) = delete;
  SavePanelDialog& operator=(const SavePanelDialog&) = delete;
  ~SavePanelDialog() override;

  void showTitle();
  void showName();
  void showExtension();
  void showDirectory();
  void showNewFolderButton();

  /// Shows the panel until it is answered. The path of the file that is to be made, or replaced;
  /// nothing when the panel was dismissed.
  std::optional<std::string> run();

 protected:
  /// Not that of the toolkit, which looks for a file of the typed name without its extension.
  void accept() override;

 private:
  void makePlaces();
  void arrangeColumns();
  void simplify();
  void makeAccessory(PopUpButton& view);
  void makeHint();
  void nameControls();
  void listenToNameField();

  void typedNameChanged();
  void hideExtensionOfPickedName();
  void updateSaveButton();
  void showHint(const std::string& hint);
  QString shortened(const QString& text) const;

  QString typedName() const;
  QString typedPlace() const;
  QString typedPath() const;
  bool leadsToFolder() const;
  std::string problemWith(const QString& path) const;
  std::string lossWith(const QFileInfo& item) const;
  bool userAgreesToReplace(const QString& path);
  std::string localizedText(const char* key) const;

  const SavePanelContents& _contents;
  const Bundle& _bundle;
  QLineEdit* _nameField;
  QPushButton* _saveButton;
  QLabel* _hint = nullptr;
  QString _saveTitle;
  QList<QUrl> _usersPlaces;
  bool _isSettingName = false;
  QString _path;
};

}  // namespace quennel
