#include <algorithm>
#include <array>
#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "ctl/Command.h"
#include "ctl/KeyReport.h"
#include "ctl/Sentence.h"
#include "ctl/Table.h"
#include "manage/BoundKeys.h"

namespace quennel {
namespace {

using Rows = std::vector<std::vector<std::string>>;

/// Index, shortcut, title, whether it works, why not.
Rows rowsOf(const PropertyList::Array& templates, CommandContext& context) {
  Rows rows;
  const BoundKeys keys(context.helper);
  for (std::size_t index = 0; index < templates.size(); ++index) {
    const FileTemplate& record = templates[index];
    if (hasShortcut(record)) {
      const std::string obstacle = obstacleTo(index, keys);
      rows.push_back({std::to_string(index), shortcutShown(record),
                      shown(templateText(record, "title")), obstacle.empty() ? "yes" : "no",
                      obstacle});
    }
  }
  return rows;
}

void printPlainly(const Rows& rows, std::ostream& output) {
  for (const auto& row : rows) {
    for (std::size_t column = 0; column < row.size(); ++column) {
      output << (column == 0 ? "" : "\t") << row[column];
    }
    output << "\n";
  }
}

void list(const Options& options, CommandContext& context) {
  const auto templates = orFail(context.templates.all());
  const bool isPlain = options.has("plain");
  const bool isAny = std::ranges::any_of(templates, hasShortcut);
  if (!isAny) {
    context.output << (isPlain ? ""
                               : "No template has a keyboard shortcut. Give one: quennelctl "
                                 "template edit INDEX --shortcut Ctrl+Alt+N\n");
    return;
  }
  Rows rows = rowsOf(templates, context);
  if (isPlain) {
    printPlainly(rows, context.output);
    return;
  }
  rows.insert(rows.begin(), {"INDEX", "SHORTCUT", "TITLE", "WORKS", ""});
  context.output << table(rows);
}

constexpr std::array listOptions{
    Option{"plain", "", "one shortcut a line, its fields separated by tabs, for scripts"}};

constexpr std::array commands{
    Command{"shortcuts", "", "show the keyboard shortcuts",
            "Shows the templates that have a keyboard shortcut, and of each whether it works in\n"
            "all programs or why it does not. Starts the helper, which alone can tell.",
            listOptions, 0, 0, list}};

}  // namespace

std::span<const Command> shortcutCommands() { return commands; }

}  // namespace quennel
