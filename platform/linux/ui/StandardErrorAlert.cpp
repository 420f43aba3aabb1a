#include "platform/linux/ui/StandardErrorAlert.h"

#include <cstdio>

namespace quennel {

int dismissingAnswer(const Alert& alert) {
  const int count = static_cast<int>(alert.buttons.size());
  return UserInterface::alertFirstButtonReturn + (count > 0 ? count - 1 : 0);
}

int runOnStandardError(const Alert& alert) {
  const std::string title = alert.messageText.value_or("");
  const std::string message = alert.informativeText.value_or("");
  const char* separator = title.empty() || message.empty() ? "" : ": ";
  std::fprintf(stderr, "%s%s%s\n", title.c_str(), separator, message.c_str());
  return dismissingAnswer(alert);
}

std::optional<std::string> runOnStandardError(const OpenPanel& panel) {
  std::fprintf(stderr, "%s: %s (%s)\n", panel.title.c_str(), panel.message.c_str(),
               panel.directory.c_str());
  return std::nullopt;
}

ModalResponse runOnStandardError(const std::string& title, const std::string& directory) {
  std::fprintf(stderr, "%s (%s)\n", title.c_str(), directory.c_str());
  return ModalResponse::Abort;
}

}  // namespace quennel
