#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/UserInterface.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeSavePanel.h"
#include "tests/support/FakeWindowing.h"

namespace quennel::test {

/// A user who answers at once. What happens while an alert is up (time that passes, work on the
/// main queue) is the test's to say in `whileShown`.
class FakeUserInterface : public UserInterface {
 public:
  explicit FakeUserInterface(CallLog& log) : windows(log), _log(log) {}

  std::vector<Alert> alerts;
  /// The buttons to press, in order; when none is left the last button of the alert is.
  std::deque<int> answers;
  std::function<void(const Alert&)> whileShown;
  std::map<std::string, std::string> typeDescriptions;
  int activations = 0;
  std::vector<std::string> activationTokens;
  std::vector<OpenPanel> openPanels;
  /// What to choose in the open panels, in order; when none is left they are cancelled.
  std::deque<std::optional<std::string>> choices;
  std::function<void(const OpenPanel&)> whilePanelShown;
  /// What the user does in a save panel; without it the panel is cancelled.
  std::function<ModalResponse(FakeSavePanel&)> whileSavePanelShown;

  FakeWindowing windows;

  Windowing* windowing() override { return &windows; }

  int runModal(const Alert& alert) override {
    alerts.push_back(alert);
    _log.add("alert");
    if (whileShown) {
      whileShown(alert);
    }
    if (!answers.empty()) {
      const int answer = answers.front();
      answers.pop_front();
      return answer;
    }
    return alertFirstButtonReturn +
           (alert.buttons.empty() ? 0 : static_cast<int>(alert.buttons.size()) - 1);
  }

  std::optional<std::string> runModalOpenPanel(const OpenPanel& panel) override {
    openPanels.push_back(panel);
    _log.add("open panel");
    if (whilePanelShown) {
      whilePanelShown(panel);
    }
    if (choices.empty()) {
      return std::nullopt;
    }
    const auto choice = choices.front();
    choices.pop_front();
    return choice;
  }

  void beginOpenPanel(const OpenPanel& panel, const Choice& completion) override {
    openPanels.push_back(panel);
    _log.add("open panel");
    if (whilePanelShown) {
      whilePanelShown(panel);
    }
    _begun.push_back(completion);
  }

  /// The user answers the panel that was begun first and stands there still.
  void answerBegunPanel(const std::optional<std::string>& choice) {
    const Choice completion = _begun.at(0);
    _begun.pop_front();
    completion(choice);
  }
  std::size_t begunPanels() const { return _begun.size(); }

  std::unique_ptr<SavePanel> savePanel() override {
    return std::make_unique<FakeSavePanel>(_log, [this](FakeSavePanel& panel) {
      return whileSavePanelShown ? whileSavePanelShown(panel) : ModalResponse::Cancel;
    });
  }

  void setActivationToken(const std::string& token) override { activationTokens.push_back(token); }

  void activateIgnoringOtherApps() override {
    ++activations;
    _log.add("activate");
  }

  std::optional<std::string> localizedDescriptionOfFileExtension(
      const std::string& extension) override {
    const auto entry = typeDescriptions.find(extension);
    return entry == typeDescriptions.end() ? std::nullopt : std::optional(entry->second);
  }

 private:
  CallLog& _log;
  std::deque<Choice> _begun;
};

}  // namespace quennel::test
