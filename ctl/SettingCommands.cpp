#include <algorithm>
#include <array>
#include <cctype>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "ctl/Command.h"
#include "ctl/CommandError.h"
#include "ctl/Sentence.h"
#include "ctl/Suggestion.h"
#include "ctl/Table.h"

namespace quennel {
namespace {

constexpr auto switchesInHelp =
    "  skipFilename        make the file at once, without asking for its name and place\n"
    "  showFileOnCreation  select the new file in the file manager\n"
    "  playSound           play a sound\n"
    "  openFileOnCreation  open the new file with its default application\n"
    "  runInBackground     the helper never leaves by itself; shortcuts then outlast a request";

std::string lowerCase(std::string text) {
  std::ranges::transform(text, text.begin(),
                         [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return text;
}

bool switchValue(const std::string& key, const std::string& text) {
  const std::string word = lowerCase(text);
  if (word == "yes" || word == "true" || word == "1") {
    return true;
  }
  if (word == "no" || word == "false" || word == "0") {
    return false;
  }
  throw UsageError(key + " is either yes or no, not '" + shown(text) + "'");
}

void set(const Options& options, CommandContext& context) {
  const std::string& key = options.arguments()[0];
  if (!Switches::isSwitch(key)) {
    throw UsageError("there is no setting " + shown(key) + " to be set" +
                     suggestion(key, Switches::keys));
  }
  orFail(context.switches.set(key, switchValue(key, options.arguments()[1])));
}

void getAll(CommandContext& context) {
  std::vector<std::vector<std::string>> rows;
  rows.reserve(Switches::keys.size());
  for (const std::string_view key : Switches::keys) {
    rows.push_back({std::string(key), context.switches.isOn(key) ? "yes" : "no"});
  }
  context.output << table(rows);
}

void get(const Options& options, CommandContext& context) {
  if (options.arguments().empty()) {
    getAll(context);
    return;
  }
  const std::string& key = options.arguments()[0];
  if (Switches::isSwitch(key)) {
    context.output << (context.switches.isOn(key) ? "yes\n" : "no\n");
    return;
  }
  const auto value = context.switches.valueOf(key);
  if (!value) {
    throw CommandFailure("nothing is set under " + shown(key) + suggestion(key, Switches::keys));
  }
  context.output << value->description() << "\n";
}

const std::string& setDescription() {
  static const std::string text =
      std::string("Turns a setting on (yes, true, 1) or off (no, false, 0):\n\n") + switchesInHelp;
  return text;
}

const std::string& getDescription() {
  static const std::string text =
      std::string(
          "Prints a setting, the default where none was set; without KEY all of these:\n\n") +
      switchesInHelp;
  return text;
}

}  // namespace

std::span<const Command> settingCommands() {
  static const std::array commands{
      Command{"set", "KEY VALUE", "turn a setting on or off", setDescription(), {}, 2, 2, set},
      Command{"get", "[KEY]", "print a setting", getDescription(), {}, 0, 1, get},
  };
  return commands;
}

}  // namespace quennel
