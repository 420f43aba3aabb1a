#include "ctl/Help.h"

#include <vector>

#include "ctl/Table.h"

namespace quennel {
namespace {

std::string usage(const Command& command) {
  std::string line(command.name);
  if (!command.options.empty()) {
    line += " [OPTIONS]";
  }
  if (!command.arguments.empty()) {
    line.append(" ").append(command.arguments);
  }
  return line;
}

std::vector<std::string> listed(const Command& command) {
  std::string form(command.name);
  if (!command.arguments.empty()) {
    form.append(" ").append(command.arguments);
  }
  return {"  " + form, std::string(command.summary)};
}

std::vector<std::string> listed(const Option& option) {
  std::string form = "  --" + std::string(option.name);
  if (!option.value.empty()) {
    form.append(" ").append(option.value);
  }
  return {form, std::string(option.help)};
}

}  // namespace

std::string helpForProgram(std::span<const Command> commands) {
  std::vector<std::vector<std::string>> rows;
  for (const Command& command : commands) {
    rows.push_back(listed(command));
  }
  return "Keeps the templates and settings of QuennelHelper and asks it for new files.\n"
         "\n"
         "Usage: quennelctl COMMAND [ARGUMENTS]\n"
         "\n" +
         table(rows) +
         "\n"
         "quennelctl COMMAND --help says more about a command.\n"
         "quennelctl --version says which version this is.\n"
         "\n"
         "Exit status: 0 done, 1 failed, 2 the command line was not understood.\n";
}

std::string helpForGroup(std::string_view firstWord, std::span<const Command> commands) {
  std::vector<std::vector<std::string>> rows;
  for (const Command& command : commands) {
    if (command.name.starts_with(std::string(firstWord) + " ")) {
      rows.push_back(listed(command));
    }
  }
  return "Usage: quennelctl " + std::string(firstWord) + " COMMAND [ARGUMENTS]\n\n" + table(rows);
}

std::string helpForCommand(const Command& command) {
  std::string text = "Usage: quennelctl " + usage(command) + "\n\n";
  text.append(command.description).append("\n");
  if (!command.options.empty()) {
    std::vector<std::vector<std::string>> rows;
    for (const Option& option : command.options) {
      rows.push_back(listed(option));
    }
    text += "\nOptions:\n" + table(rows);
  }
  return text;
}

}  // namespace quennel
