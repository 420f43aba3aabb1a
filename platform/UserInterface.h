#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/SavePanel.h"

namespace quennel {

class Windowing;

/// The presentation of an alert; the numbers are those of the platform the texts were written for.
enum class AlertStyle { Informational = 1, Critical = 2 };

/// A modal message. Absent texts show as empty; with no buttons the alert has the platform's single
/// default button.
struct Alert {
  std::optional<std::string> messageText;
  std::optional<std::string> informativeText;
  AlertStyle alertStyle = AlertStyle::Informational;
  std::vector<std::string> buttons;
};

/// A panel in which the user chooses one item that exists.
struct OpenPanel {
  std::string title;
  /// What the choice is for.
  std::string message;
  /// The name of the button that chooses.
  std::string prompt;
  /// The folder shown at first.
  std::string directory;
  bool canChooseFiles = true;
  bool canChooseDirectories = false;
  bool showsHiddenFiles = false;
  PanelLevel level = PanelLevel::Normal;
};

/// Everything the helper shows. Main thread only. Modal operations serve the main queue while they
/// wait, and return at once, with the answer that dismissing gives, when the run loop terminates.
class UserInterface {
 public:
  /// What `runModal` answers for the first button; each further one adds 1.
  static constexpr int alertFirstButtonReturn = 1000;

  virtual ~UserInterface() = default;

  /// Shows the alert until the user dismisses it and answers the button. Closing it any other way
  /// (Escape, the window's close button) counts as the last button. With no display its texts go to
  /// standard error and the answer is the last button.
  virtual int runModal(const Alert& alert) = 0;

  /// The path of what the user chooses, or nothing when the panel is dismissed otherwise.
  using Choice = std::function<void(const std::optional<std::string>& path)>;

  /// Shows the panel until the user answers it. With no display its texts go to standard error and
  /// the answer is that of a panel that was dismissed.
  virtual std::optional<std::string> runModalOpenPanel(const OpenPanel& panel) = 0;

  /// Shows the panel and returns; several may stand side by side. `completion` is called once, on
  /// the main queue, when it has closed; as a dismissed one when nothing can be shown; not at all
  /// when the run loop terminates first.
  virtual void beginOpenPanel(const OpenPanel& panel, const Choice& completion) = 0;

  /// A panel that is not shown yet. Never null.
  virtual std::unique_ptr<SavePanel> savePanel() = 0;

  /// Null where no window can be made. Lives as long as this.
  virtual Windowing* windowing() = 0;

  /// The token by which the sender of the request that is being served lets what it leads to come
  /// to the front; empty for none. Good for the next thing shown.
  virtual void setActivationToken(const std::string& token) = 0;

  /// Asks that the next thing shown comes to the front of all applications.
  virtual void activateIgnoringOtherApps() = 0;

  /// The description, in the user's language, of the type that files with this name extension have
  /// ("txt": "plain text document"); nothing for an extension that no type has.
  virtual std::optional<std::string> localizedDescriptionOfFileExtension(
      const std::string& extension) = 0;
};

}  // namespace quennel
