#include <array>
#include <ostream>
#include <string>

#include "ctl/Command.h"
#include "ctl/CommandError.h"
#include "ctl/Sentence.h"
#include "ctl/Words.h"
#include "platform/values/Text.h"

namespace quennel {
namespace {

void makeFile(const Options& options, CommandContext& context) {
  const auto& arguments = options.arguments();
  const std::size_t index = templateIndex(arguments[0]);
  const std::string folder =
      existingFolder(arguments.size() > 1 ? arguments[1] : ".", context.files);
  orFail(context.templates.makeFile({index}, folder));
}

void notify(const Options& options, CommandContext& context) {
  const std::string& command = options.arguments()[0];
  if (command.empty() || !isValidUTF8(command)) {
    throw UsageError("'" + shown(command) + "' is no command");
  }
  const auto isRunning = context.helper.notify(command);
  if (!isRunning) {
    fail({.reason = Failure::Reason::HelperSilent, .silence = isRunning.failure()});
  }
  if (!isRunning.value()) {
    context.errors << "The helper is not running.\n";
  }
}

constexpr std::array commands{
    Command{"new",
            "INDEX [DIR]",
            "make a file from a template",
            "Asks the helper for a new file from template INDEX in the folder DIR, or in the\n"
            "current one. The helper is started if needed; what goes wrong then, it tells itself.",
            {},
            1,
            2,
            makeFile},
    Command{"notify",
            "COMMAND",
            "send the helper a command",
            "Sends a command to the helper if it is running:\n\n"
            "  quit           leave at once\n"
            "  fileTemplates  read the templates' keyboard shortcuts again",
            {},
            1,
            1,
            notify},
};

}  // namespace

std::span<const Command> helperCommands() { return commands; }

}  // namespace quennel
