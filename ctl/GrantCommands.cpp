#include <array>
#include <filesystem>
#include <ostream>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "ctl/Command.h"
#include "ctl/CommandError.h"
#include "ctl/Sentence.h"
#include "ctl/Suggestion.h"
#include "ctl/Table.h"
#include "ctl/Words.h"
#include "platform/values/Path.h"

namespace quennel {
namespace {

void grant(const Options& options, CommandContext& context) {
  orFail(context.grants.grant(existingPath(options.arguments()[0], context.files)));
}

void listPlainly(const std::vector<GrantedFolder>& folders, CommandContext& context) {
  for (const GrantedFolder& folder : folders) {
    if (folder.path) {
      context.output << shown(*folder.path) << "\t" << shown(folder.place.value_or("")) << "\n";
    }
  }
}

std::string placeText(const GrantedFolder& folder) {
  if (folder.obstacle) {
    return "not to be known";
  }
  if (folder.isInItsPlace()) {
    return "there";
  }
  return folder.place ? "at " + shown(*folder.place) : "not to be found";
}

void listAsTable(const std::vector<GrantedFolder>& folders, CommandContext& context) {
  std::vector<std::vector<std::string>> rows{{"GRANTED", "NOW"}};
  for (const GrantedFolder& folder : folders) {
    rows.push_back({folder.path ? shown(*folder.path) : "(no path)", placeText(folder)});
  }
  context.output << table(rows);
}

void list(const Options& options, CommandContext& context) {
  const auto folders = orFail(context.grants.all());
  if (options.has("plain")) {
    listPlainly(folders, context);
  } else if (folders.empty()) {
    context.output << "The helper may not write anywhere yet. Let it: quennelctl grant DIR\n";
  } else {
    listAsTable(folders, context);
  }
  for (const GrantedFolder& folder : folders) {
    if (folder.obstacle) {
      fail({.reason = Failure::Reason::UnreadableItem, .error = *folder.obstacle});
    }
  }
}

/// "; did you mean ...", of the folders that are granted.
std::string suggestionFor(const std::string& path, CommandContext& context) {
  const auto folders = orFail(context.grants.all());
  std::vector<std::string_view> known;
  known.reserve(folders.size());
  for (const GrantedFolder& folder : folders) {
    known.push_back(folder.path ? std::string_view(*folder.path) : std::string_view());
  }
  return suggestion(path, known);
}

void revoke(const Options& options, CommandContext& context) {
  const std::string& name = options.arguments()[0];
  std::error_code error;
  const std::string path = standardizingPath(std::filesystem::absolute(name, error).native());
  const auto revoked = context.grants.revoke(name, path);
  if (!revoked && revoked.failure().reason == Failure::Reason::NotGranted) {
    throw CommandFailure(shown(path) + " was not granted" + suggestionFor(path, context));
  }
  orFail(revoked);
}

constexpr std::array listOptions{
    Option{"plain", "", "one folder a line: as granted, a tab, where it is now; for scripts"}};

constexpr std::array commands{
    Command{
        "grant",
        "DIR",
        "let the helper write in a folder",
        "Lets the helper make files in the folder DIR and in all folders below it, as choosing\n"
        "it in the helper's panel does. A helper that is running takes it up at once.",
        {},
        1,
        1,
        grant},
    Command{"grants", "", "show where the helper may write",
            "Shows every folder that was granted, by the path that it had then, and whether it is\n"
            "still there. A folder that was moved, or whose volume is mounted in another place,\n"
            "stays granted; one that cannot be found may come back.",
            listOptions, 0, 0, list},
    Command{"revoke",
            "PATH",
            "withdraw what was granted",
            "Withdraws the grant of the folder PATH, which need not exist any more. Folders below\n"
            "or above it that were granted by themselves stay so. A helper that is running makes\n"
            "no more files there, once this returns; what is under way ends as it began.",
            {},
            1,
            1,
            revoke},
};

}  // namespace

std::span<const Command> grantCommands() { return commands; }

}  // namespace quennel
