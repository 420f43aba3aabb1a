#include <algorithm>
#include <array>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "ctl/BoundKeys.h"
#include "ctl/Command.h"
#include "ctl/CommandError.h"
#include "ctl/FilePath.h"
#include "ctl/Table.h"
#include "ctl/TemplateIndex.h"
#include "ctl/TemplateRecord.h"
#include "settings/SharedSettings.h"

namespace quennel {
namespace {

using Array = PropertyList::Array;

/// Tells the helper, if there is one, that its keyboard shortcuts may have changed.
void announce(CommandContext& context) {
  try {
    context.helper.notify("fileTemplates");
  } catch (const CommandFailure&) {
    // Without a session bus there is nobody to tell.
  }
}

/// The helper has to run for the shortcuts to work.
void updateAutostart(CommandContext& context) {
  const Array templates = templatesOf(context.settings.objectForKey(fileTemplatesKey));
  Error error;
  if (!context.autostart.setEnabled(std::ranges::any_of(templates, hasShortcut), &error)) {
    context.errors << "quennelctl: whether the helper starts at login stays as it was: "
                   << error.localizedDescription << "\n";
  }
}

/// Changes the list under the lock of the settings, so that nothing that another program changes at
/// the same moment is lost.
void change(CommandContext& context, const std::function<void(Array&)>& work) {
  Error error;
  const bool isStored = context.settings.updateObjectForKey(
      fileTemplatesKey,
      [&](const std::optional<PropertyList>& stored) {
        Array templates = templatesOf(stored);
        work(templates);
        return std::optional<PropertyList>(std::move(templates));
      },
      &error);
  if (!isStored) {
    throw CommandFailure(error.localizedDescription);
  }
  updateAutostart(context);
  announce(context);
}

/// "Added template 0: Report (report.md)"
void report(CommandContext& context, const std::string& done, const FileTemplate& record) {
  context.output << done << ": " << shown(templateText(record, "title")) << " ("
                 << shown(nameMadeBy(record)) << ")\n";
}

/// Says whether a shortcut that was just given works; to ask starts the helper, too.
void reportShortcut(std::size_t index, const FileTemplate& record, CommandContext& context) {
  const BoundKeys keys(context.helper);
  context.output << "Its shortcut " << shortcutText(record)
                 << (keys.isBound(index) ? " works now" : " does not work: " + keys.reason(index))
                 << "\n";
}

std::string named(std::size_t index) { return "template " + std::to_string(index); }

std::vector<std::string> cells(std::size_t index, const FileTemplate& record) {
  return {std::to_string(index), templateFlag(record, "enabled") ? "yes" : "no",
          shown(templateText(record, "title")), shown(nameMadeBy(record)),
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

/// What a user should know about the template and no column says.
std::string remarkOn(const FileTemplate& record) {
  std::error_code error;
  return std::filesystem::exists(templateText(record, "filePath"), error) ? "" : "(missing)";
}

void list(const Options& options, CommandContext& context) {
  const Array templates = templatesOf(context.settings.objectForKey(fileTemplatesKey));
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
    rows.push_back(cells(index, templates[index]));
    rows.back().push_back(remarkOn(templates[index]));
  }
  context.output << table(rows);
}

void add(const Options& options, CommandContext& context) {
  TemplateDescription description = TemplateDescription::fromOptions(options);
  if (!options.arguments().empty() && description.filePath) {
    throw UsageError("FILE is given twice");
  }
  if (!options.arguments().empty()) {
    description.setFile(options.arguments()[0]);
  }
  if (!description.filePath) {
    throw UsageError("template add needs the FILE to copy");
  }
  const PropertyList record =
      description.withDefaults().appliedTo(PropertyList(PropertyList::Dictionary{}));
  std::size_t index = 0;
  change(context, [&](Array& templates) {
    index = templates.size();
    templates.push_back(record);
  });
  report(context, "Added " + named(index), record);
  if (hasShortcut(record)) {
    reportShortcut(index, record, context);
  }
}

void edit(const Options& options, CommandContext& context) {
  const TemplateDescription description = TemplateDescription::fromOptions(options);
  if (description.isEmpty()) {
    throw UsageError("template edit needs an option that says what to change");
  }
  std::size_t index = 0;
  FileTemplate record = false;
  change(context, [&](Array& templates) {
    index = templateIndex(options.arguments()[0], templates.size());
    record = description.appliedTo(templates[index]);
    templates[index] = record;
  });
  report(context, "Changed " + named(index), record);
  if (description.shortcut && hasShortcut(record)) {
    reportShortcut(index, record, context);
  }
}

void remove(const Options& options, CommandContext& context) {
  std::size_t index = 0;
  FileTemplate record = false;
  change(context, [&](Array& templates) {
    index = templateIndex(options.arguments()[0], templates.size());
    record = templates[index];
    templates.erase(templates.begin() + static_cast<std::ptrdiff_t>(index));
  });
  report(context, "Removed " + named(index), record);
}

void move(const Options& options, CommandContext& context) {
  std::size_t from = 0;
  std::size_t to = 0;
  FileTemplate record = false;
  change(context, [&](Array& templates) {
    from = templateIndex(options.arguments()[0], templates.size());
    to = templateIndex(options.arguments()[1], templates.size());
    record = templates[from];
    templates.erase(templates.begin() + static_cast<std::ptrdiff_t>(from));
    templates.insert(templates.begin() + static_cast<std::ptrdiff_t>(to), record);
  });
  report(context, "Moved " + named(from) + " to " + std::to_string(to), record);
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
