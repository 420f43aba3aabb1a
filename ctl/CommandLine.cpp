#include "ctl/CommandLine.h"

#include <algorithm>
#include <ostream>
#include <string_view>
#include <vector>

#include "ctl/CommandError.h"
#include "ctl/Help.h"
#include "ctl/Suggestion.h"

namespace quennel {
namespace {

using Words = std::span<const std::string>;
using Commands = std::span<const Command>;

constexpr int done = 0;
constexpr int failed = 1;
constexpr int notUnderstood = 2;

std::vector<Command> allCommands() {
  std::vector<Command> commands;
  for (const auto group : {templateCommands(), shortcutCommands(), settingCommands(),
                           grantCommands(), helperCommands()}) {
    commands.insert(commands.end(), group.begin(), group.end());
  }
  return commands;
}

std::string_view firstWordOf(const Command& command) {
  return command.name.substr(0, command.name.find(' '));
}

bool hasTwoWords(const Command& command) { return firstWordOf(command) != command.name; }

/// Whether further words choose between commands that all start with this one.
bool isGroup(std::string_view word, Commands commands) {
  return std::ranges::any_of(commands, [&](const Command& command) {
    return hasTwoWords(command) && firstWordOf(command) == word;
  });
}

const Command* find(Words words, Commands commands) {
  for (const Command& command : commands) {
    const std::size_t length = hasTwoWords(command) ? 2 : 1;
    if (words.size() < length) {
      continue;
    }
    const std::string name = length == 2 ? words[0] + " " + words[1] : words[0];
    if (command.name == name) {
      return &command;
    }
  }
  return nullptr;
}

bool isHelp(const std::string& word) { return word == "--help" || word == "-h"; }

bool asksForHelp(Words words) {
  // What stands behind "--" is no option.
  return std::any_of(words.begin(), std::ranges::find(words, "--"), isHelp);
}

[[noreturn]] void refuse(Words words, Commands commands) {
  std::vector<std::string_view> names;
  const bool isInGroup = isGroup(words[0], commands);
  for (const Command& command : commands) {
    if (isInGroup && firstWordOf(command) == words[0]) {
      names.push_back(command.name.substr(words[0].size() + 1));
    } else if (!isInGroup) {
      names.push_back(firstWordOf(command));
    }
  }
  const std::string prefix = isInGroup ? words[0] + " " : "";
  const std::string& word = words[isInGroup ? 1 : 0];
  throw UsageError("there is no command " + prefix + word + suggestion(word, names, prefix));
}

void checkCount(const Command& command, const Options& options) {
  const std::size_t count = options.arguments().size();
  if (count < command.leastArguments) {
    throw UsageError(std::string(command.name) +
                     " needs more arguments: " + std::string(command.arguments));
  }
  if (count > command.mostArguments) {
    throw UsageError("too many arguments, from '" + options.arguments()[command.mostArguments] +
                     "' on");
  }
}

int run(const Command& command, Words rest, CommandContext& context) {
  if (asksForHelp(rest)) {
    context.output << helpForCommand(command);
    return done;
  }
  const Options options = Options::parse(rest, command.options);
  checkCount(command, options);
  command.run(options, context);
  return done;
}

int showGroup(std::string_view word, bool isAsked, Commands commands, CommandContext& context) {
  (isAsked ? context.output : context.errors) << helpForGroup(word, commands);
  return isAsked ? done : notUnderstood;
}

/// `command` is the one that the words start with, if there is one.
int dispatch(Words words, const Command* command, Commands commands, CommandContext& context) {
  if (words.empty()) {
    context.errors << helpForProgram(commands);
    return notUnderstood;
  }
  if (command) {
    return run(*command, words.subspan(hasTwoWords(*command) ? 2 : 1), context);
  }
  if (isHelp(words[0]) || words[0] == "help") {
    context.output << helpForProgram(commands);
    return done;
  }
  if (words[0] == "--version") {
    context.output << "quennelctl " QUENNEL_VERSION "\n";
    return done;
  }
  if (isGroup(words[0], commands) && (words.size() == 1 || isHelp(words[1]))) {
    return showGroup(words[0], words.size() > 1, commands, context);
  }
  refuse(words, commands);
}

/// The words before "--help" that say most about what was tried.
std::string nameForHelp(Words words, const Command* command, Commands commands) {
  if (command) {
    return " " + std::string(command->name);
  }
  return isGroup(words[0], commands) ? " " + words[0] : "";
}

}  // namespace

int runCommandLine(Words words, CommandContext& context) {
  const std::vector<Command> commands = allCommands();
  const Command* command = find(words, commands);
  try {
    return dispatch(words, command, commands, context);
  } catch (const UsageError& error) {
    context.errors << "quennelctl: " << error.what() << "\nSee 'quennelctl"
                   << nameForHelp(words, command, commands) << " --help'.\n";
    return notUnderstood;
  } catch (const CommandFailure& failure) {
    context.errors << "quennelctl: " << failure.what() << "\n";
    return failed;
  }
}

}  // namespace quennel
