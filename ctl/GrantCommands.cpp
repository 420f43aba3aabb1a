#include <array>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "ctl/Command.h"
#include "ctl/CommandError.h"
#include "ctl/FilePath.h"
#include "ctl/Suggestion.h"
#include "ctl/Table.h"
#include "platform/values/Path.h"
#include "settings/AuthorizedDir.h"
#include "settings/SharedSettings.h"

namespace quennel {
namespace {

using Array = PropertyList::Array;

Array grantsOf(const std::optional<PropertyList>& stored) {
  if (stored && !stored->array()) {
    throw CommandFailure(std::string("the settings hold something else under ") +
                         authorizedDirsKey);
  }
  return authorizedDirsOf(stored);
}

void change(CommandContext& context, const UserDefaults::Change& change) {
  Error error;
  if (!context.settings.updateObjectForKey(authorizedDirsKey, change, &error)) {
    throw CommandFailure(error.localizedDescription);
  }
}

/// Where the record's folder is now.
std::optional<std::string> placeOf(const AuthorizedDir& record, CommandContext& context) {
  const PropertyList::Data* bookmark = authorizationBookmark(record);
  return bookmark ? context.scope.pathByResolvingBookmarkData(*bookmark) : std::nullopt;
}

void grant(const Options& options, CommandContext& context) {
  const std::string path = existingFolder(options.arguments()[0]);
  Error error;
  const auto bookmark = context.scope.bookmarkDataForPath(path, &error);
  if (!bookmark) {
    throw CommandFailure(error.localizedDescription);
  }
  change(context, [&](const auto& stored) {
    Array records = grantsOf(stored);
    const auto record = findAuthorizedDir(records, path);
    if (record == records.end()) {
      records.push_back(makeAuthorizedDir(path, *bookmark));
    } else if (placeOf(*record, context) != path) {
      // The folder that was meant is gone or elsewhere; the user means the one that is there now.
      *record = makeAuthorizedDir(path, *bookmark);
    }
    return PropertyList(std::move(records));
  });
}

void listPlainly(const Array& records, CommandContext& context) {
  for (const AuthorizedDir& record : records) {
    if (const std::string* path = authorizedPath(record)) {
      const auto place = placeOf(record, context);
      context.output << shown(*path) << "\t" << (place ? shown(*place) : "") << "\n";
    }
  }
}

void list(const Options& options, CommandContext& context) {
  const Array records = grantsOf(context.settings.objectForKey(authorizedDirsKey));
  if (options.has("plain")) {
    listPlainly(records, context);
    return;
  }
  if (records.empty()) {
    context.output << "The helper may not write anywhere yet. Let it: quennelctl grant DIR\n";
    return;
  }
  std::vector<std::vector<std::string>> rows{{"GRANTED", "NOW"}};
  for (const AuthorizedDir& record : records) {
    const std::string* path = authorizedPath(record);
    const auto place = placeOf(record, context);
    const bool isThere = path && place == *path;
    rows.push_back({path ? shown(*path) : "(no path)",
                    isThere ? "there" : (place ? "at " + shown(*place) : "not to be found")});
  }
  context.output << table(rows);
}

void revoke(const Options& options, CommandContext& context) {
  const std::string& name = options.arguments()[0];
  std::error_code error;
  const std::string path = standardizingPath(std::filesystem::absolute(name, error).native());
  change(context, [&](const auto& stored) {
    Array records = grantsOf(stored);
    const std::size_t count = records.size();
    std::erase_if(records, [&](const AuthorizedDir& record) {
      const std::string* recorded = authorizedPath(record);
      return recorded && (*recorded == name || *recorded == path);
    });
    if (records.size() == count) {
      std::vector<std::string_view> known;
      for (const AuthorizedDir& record : records) {
        known.push_back(authorizedPath(record) ? *authorizedPath(record) : std::string_view());
      }
      throw CommandFailure(shown(path) + " was not granted" + suggestion(path, known));
    }
    return PropertyList(std::move(records));
  });
}

constexpr std::array listOptions{
    Option{"plain", "", "one folder a line: as granted, a tab, where it is now; for scripts"}};

constexpr std::array commands{
    Command{
        "grant",
        "DIR",
        "let the helper write in a folder",
        "Lets the helper make files in the folder DIR and in all folders below it, as choosing\n"
        "it in the helper's panel does. A helper that is running takes it up when it is\n"
        "started next.",
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
            "or above it that were granted by themselves stay so. A helper that is running keeps\n"
            "its access until it leaves.",
            {},
            1,
            1,
            revoke},
};

}  // namespace

std::span<const Command> grantCommands() { return commands; }

}  // namespace quennel
