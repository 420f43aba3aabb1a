#include <array>
#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "ctl/Command.h"
#include "ctl/CommandError.h"
#include "ctl/KeyReport.h"
#include "ctl/Sentence.h"
#include "ctl/Table.h"
#include "ctl/Words.h"
#include "manage/BoundKeys.h"

namespace quennel {
namespace {

using Array = PropertyList::Array;

/// "Added template 0: Report (report.md)"
void report(CommandContext& context, const std::string& done, const TemplateChange& change) {
  context.output << done << ": " << shown(templateText(change.record, "title")) << " ("
                 << shown(templateFileName(change.record)) << ")\n";
  if (change.autostartFailure) {
    context.errors << "quennelctl: whether the helper starts at login stays as it was: "
                   << change.autostartFailure->description() << "\n";
  }
}

/// Says whether a shortcut that was just given works; to ask starts the helper, too.
void reportShortcut(const TemplateChange& change, CommandContext& context) {
  const BoundKeys keys(context.helper);
  const std::string obstacle = obstacleTo(change.index, keys);
  context.output << "Its shortcut " << shortcutShown(change.record)
                 << (obstacle.empty() ? " works now" : " does not work: " + obstacle) << "\n";
}

std::string named(std::size_t index) { return "template " + std::to_string(index); }

std::vector<std::string> cells(std::size_t index, const FileTemplate& record) {
  return {std::to_string(index), templateFlag(record, "enabled") ? "yes" : "no",
          shown(templateText(record, "title")), shown(templateFileName(record)),
          shown(templateText(record, "filePath"))};
}

void listPlainly(const Array& templates, CommandContext& context) {
  for (std::size_t index = 0; index < templates.size(); ++index) {
    std::string line;
    for (const std::string& cell : cells(index, templates[index])) {
      line += (line.empty() ? "" : "\t") + cell;
    }
    context.output << line << "\n";
  }
}

void list(const Options& options, CommandContext& context) {
  const Array templates = orFail(context.templates.all());
  if (options.has("plain")) {
    listPlainly(templates, context);
    return;
  }
  if (templates.empty()) {
    context.output << "There are no templates yet. Add one: quennelctl template add FILE\n";
    return;
  }
  std::vector<std::vector<std::string>> rows{{"INDEX", "ENABLED", "TITLE", "MAKES", "FILE"}};
  for (std::size_t index = 0; index < templates.size(); ++index) {
    const FileTemplate& record = templates[index];
    rows.push_back(cells(index, record));
    rows.back().push_back(context.templates.isFileMissing(record) ? "(missing)" : "");
  }
  context.output << table(rows);
}

TemplateDescription describedBy(const Options& options, const FileInspector& files) {
  TemplateDescription description{.title = options.valueOf("title"),
                                  .prefix = options.valueOf("prefix"),
                                  .suffix = options.valueOf("suffix"),
                                  .executable = options.choice("executable", "no-executable"),
                                  .enabled = options.choice("enabled", "disabled"),
                                  .removesShortcut = options.has("no-shortcut")};
  if (!description.removesShortcut) {
    description.shortcut = options.valueOf("shortcut");
  }
  if (const auto file = options.valueOf("file")) {
    description.filePath = existingPath(*file, files);
  }
  return description;
}

void add(const Options& options, CommandContext& context) {
  TemplateDescription description = describedBy(options, context.files);
  if (!options.arguments().empty() && description.filePath) {
    throw UsageError("FILE is given twice");
  }
  if (!options.arguments().empty()) {
    description.filePath = existingPath(options.arguments()[0], context.files);
  }
  if (!description.filePath) {
    throw UsageError("template add needs the FILE to copy");
  }
  const TemplateChange added = orFail(context.templates.add(description));
  report(context, "Added " + named(added.index), added);
  if (hasShortcut(added.record)) {
    reportShortcut(added, context);
  }
}

void edit(const Options& options, CommandContext& context) {
  const TemplateDescription description = describedBy(options, context.files);
  if (description.isEmpty()) {
    throw UsageError("template edit needs an option that says what to change");
  }
  const std::size_t index = templateIndex(options.arguments()[0]);
  const TemplateChange changed = orFail(context.templates.edit({index}, description));
  report(context, "Changed " + named(changed.index), changed);
  if (description.shortcut && hasShortcut(changed.record)) {
    reportShortcut(changed, context);
  }
}

void remove(const Options& options, CommandContext& context) {
  const std::size_t index = templateIndex(options.arguments()[0]);
  report(context, "Removed " + named(index), orFail(context.templates.remove({index})));
}

void move(const Options& options, CommandContext& context) {
  const std::size_t from = templateIndex(options.arguments()[0]);
  const std::size_t to = templateIndex(options.arguments()[1]);
  const TemplateChange moved = orFail(context.templates.move({from}, {to}));
  report(context, "Moved " + named(from) + " to " + std::to_string(moved.index), moved);
}

constexpr std::array listOptions{
    Option{"plain", "", "one template a line, its fields separated by tabs, for scripts"}};

constexpr std::array recordOptions{
    Option{"title", "TEXT", "its name in menus"},
    Option{"prefix", "TEXT", "the name of the new files, without the extension"},
    Option{"suffix", "TEXT", "their extension; an empty one for none"},
    Option{"file", "FILE", "the file or folder to copy"},
    Option{"executable", "", "the new files can be run"},
    Option{"no-executable", "", "they cannot"},
    Option{"enabled", "", "menus offer the template"},
    Option{"disabled", "", "they do not"},
    Option{"shortcut", "KEYS", "keys that make a file in the folder in front: Ctrl+Alt+N"},
    Option{"no-shortcut", "", "no such keys"},
};

constexpr std::array commands{
    Command{"template list", "", "show the templates",
            "Shows the templates in their order, each with its index, whether menus offer it, its\n"
            "title, the name of the files that it makes and the file that it copies.",
            listOptions, 0, 0, list},
    Command{"template add", "FILE", "add a template",
            "Adds a template at the end of the list. What is not said comes from FILE: report.md\n"
            "makes files named report.md, and a program makes programs. FILE itself is not copied\n"
            "or moved: a change of it shows in every file made later.",
            recordOptions, 0, 1, add},
    Command{"template edit", "INDEX", "change a template",
            "Changes what the options say and keeps everything else.", recordOptions, 1, 1, edit},
    Command{"template remove",
            "INDEX",
            "remove a template",
            "Removes the template from the list. Its file stays, and later templates move up by\n"
            "one.",
            {},
            1,
            1,
            remove},
    Command{"template move",
            "FROM TO",
            "put a template in another place",
            "Takes the template out of place FROM and puts it in place TO.",
            {},
            2,
            2,
            move},
};

}  // namespace

std::span<const Command> templateCommands() { return commands; }

}  // namespace quennel
