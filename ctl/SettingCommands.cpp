#include <algorithm>
#include <array>
#include <cctype>
#include <ostream>
#include <string>
#include <vector>

#include "ctl/Command.h"
#include "ctl/CommandError.h"
#include "ctl/Suggestion.h"
#include "ctl/Table.h"
#include "settings/SharedSettings.h"

namespace quennel {
namespace {

/// The settings that are on or off.
constexpr std::array<std::string_view, 5> switches = {skipFilenameKey, showFileOnCreationKey,
                                                      playSoundKey, openFileOnCreationKey,
                                                      runInBackgroundKey};

constexpr auto switchesInHelp =
    "  skipFilename        make the file at once, without asking for its name and place\n"
    "  showFileOnCreation  select the new file in the file manager\n"
    "  playSound           play a sound\n"
    "  openFileOnCreation  open the new file with its default application\n"
    "  runInBackground     the helper does not leave by itself; keyboard shortcuts need this";

bool isSwitch(std::string_view key) { return std::ranges::find(switches, key) != switches.end(); }

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
  throw UsageError(key + " is either yes or no, not '" + PropertyList(text).description() + "'");
}

void set(const Options& options, CommandContext& context) {
  const std::string& key = options.arguments()[0];
  if (!isSwitch(key)) {
    throw UsageError("there is no setting " + PropertyList(key).description() + " to be set" +
                     suggestion(key, switches));
  }
  const bool value = switchValue(key, options.arguments()[1]);
  Error error;
  if (!context.settings.updateObjectForKey(
          key, [&](const auto&) { return std::optional<PropertyList>(value); }, &error)) {
    throw CommandFailure(error.localizedDescription);
  }
}

void getAll(CommandContext& context) {
  std::vector<std::vector<std::string>> rows;
  rows.reserve(switches.size());
  for (const std::string_view key : switches) {
    rows.push_back({std::string(key), context.settings.boolForKey(key) ? "yes" : "no"});
  }
  context.output << table(rows);
}

void get(const Options& options, CommandContext& context) {
  if (options.arguments().empty()) {
    getAll(context);
    return;
  }
  const std::string& key = options.arguments()[0];
  if (isSwitch(key)) {
    context.output << (context.settings.boolForKey(key) ? "yes\n" : "no\n");
    return;
  }
  const auto value = context.settings.objectForKey(key);
  if (!value) {
    throw CommandFailure("nothing is set under " + PropertyList(key).description() +
                         suggestion(key, switches));
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
