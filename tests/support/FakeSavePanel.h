#pragma once

#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/PopUpButton.h"
#include "platform/SavePanel.h"
#include "platform/values/Path.h"
#include "tests/support/CallLog.h"

namespace quennel::test {

/// A save panel that holds what a real one would show. What the user does in it is the test's to
/// say: to set `name` is to type it, `directory` to go elsewhere.
class FakeSavePanel : public SavePanel {
 public:
  using User = std::function<ModalResponse(FakeSavePanel&)>;

  FakeSavePanel(CallLog& log, User user) : _log(log), _user(std::move(user)) {}

  std::string title;
  std::string name;
  std::optional<std::vector<std::string>> allowedFileTypes;
  bool extensionHidden = false;
  std::string directory;
  PanelLevel level = PanelLevel::Normal;
  bool canCreateDirectories = false;
  PopUpButton* accessory = nullptr;

  void setTitle(const std::string& value) override { set(title, value, "setTitle"); }
  void setNameFieldStringValue(const std::string& value) override {
    set(name, value, "setNameFieldStringValue");
  }
  void setAllowedFileTypes(const std::optional<std::vector<std::string>>& types) override {
    set(allowedFileTypes, types, "setAllowedFileTypes");
  }
  void setExtensionHidden(bool hidden) override {
    set(extensionHidden, hidden, "setExtensionHidden");
  }
  void setDirectoryURL(const std::string& value) override {
    set(directory, value, "setDirectoryURL");
  }
  void setLevel(PanelLevel value) override { set(level, value, "setLevel"); }
  void setCanCreateDirectories(bool can) override {
    set(canCreateDirectories, can, "setCanCreateDirectories");
  }
  void setAccessoryView(PopUpButton& view) override { set(accessory, &view, "setAccessoryView"); }

  ModalResponse runModal() override {
    _log.add("save panel");
    return _user ? _user(*this) : ModalResponse::Cancel;
  }

  std::string path() const override {
    const bool isAnyType = !allowedFileTypes || allowedFileTypes->empty();
    return appendingPathComponent(
        directory, isAnyType ? name : completingPathExtension(name, allowedFileTypes->front()));
  }

  /// The titles of the accessory's lines.
  std::vector<std::string> menu() const {
    std::vector<std::string> titles;
    for (const MenuItem& item : accessory->items()) {
      titles.push_back(item.title);
    }
    return titles;
  }
  /// The user picks the line of that title; one that is not there is no choice.
  void choose(const std::string& itemTitle) {
    const auto titles = menu();
    for (std::size_t index = 0; index < titles.size(); ++index) {
      if (titles[index] == itemTitle) {
        accessory->chooseItemAtIndex(index);
        return;
      }
    }
  }

 private:
  template <typename Value>
  void set(Value& field, const Value& value, const char* call) {
    field = value;
    _log.add(call);
  }

  CallLog& _log;
  User _user;
};

}  // namespace quennel::test
