#include "manage/Templates.h"

#include <algorithm>
#include <utility>

#include "manage/BoundKeys.h"
#include "manage/StoredList.h"
#include "platform/values/URL.h"
#include "settings/SharedSettings.h"

namespace quennel {
namespace {

using Array = PropertyList::Array;
using Reason = Failure::Reason;
using Check = std::optional<Failure>;

std::size_t distance(std::size_t left, std::size_t right) {
  return left > right ? left - right : right - left;
}

/// Where the record is now: of several equal ones the nearest to where it was.
std::optional<std::size_t> nearest(const Array& templates, const FileTemplate& record,
                                   std::size_t index) {
  std::optional<std::size_t> found;
  for (std::size_t candidate = 0; candidate < templates.size(); ++candidate) {
    if (templates[candidate] == record &&
        (!found || distance(candidate, index) < distance(*found, index))) {
      found = candidate;
    }
  }
  return found;
}

Result<std::size_t, Failure> find(const TemplatePlace& place, const Array& templates) {
  if (place.record) {
    const auto index = nearest(templates, *place.record, place.index);
    return index ? Result<std::size_t, Failure>(*index)
                 : Failure{.reason = Reason::TemplateChanged, .index = place.index};
  }
  if (place.index >= templates.size()) {
    return Failure{
        .reason = Reason::NoSuchTemplate, .index = place.index, .count = templates.size()};
  }
  return place.index;
}

Array::iterator at(Array& templates, std::size_t index) {
  return templates.begin() + static_cast<std::ptrdiff_t>(index);
}

}  // namespace

Templates::Templates(UserDefaults& settings, const FileInspector& files, Autostart& autostart,
                     HelperConnection& helper)
    : _settings(settings), _files(files), _autostart(autostart), _helper(helper) {}

Result<Array, Failure> Templates::all() const { return storedList(_settings, fileTemplatesKey); }

bool Templates::isFileMissing(const FileTemplate& record) const {
  return !_files.factsOf(templateText(record, "filePath"));
}

Result<TemplateChange, Failure> Templates::add(const TemplateDescription& description) {
  const auto wanted = checked(description, _files);
  if (!wanted) {
    return wanted.failure();
  }
  const auto complete = withDefaults(wanted.value(), _files);
  if (!complete) {
    return complete.failure();
  }
  const auto record = applied(complete.value(), PropertyList::Dictionary());
  if (!record) {
    return record.failure();
  }
  return change([&](Array& templates, TemplateChange& done) -> Check {
    done = {templates.size(), record.value()};
    templates.push_back(record.value());
    return {};
  });
}

Result<TemplateChange, Failure> Templates::edit(const TemplatePlace& place,
                                                const TemplateDescription& description) {
  const auto wanted = checked(description, _files);
  if (!wanted) {
    return wanted.failure();
  }
  return change([&](Array& templates, TemplateChange& done) -> Check {
    const auto index = find(place, templates);
    if (!index) {
      return index.failure();
    }
    const auto record = applied(wanted.value(), templates[index.value()]);
    if (!record) {
      return record.failure();
    }
    done = {index.value(), record.value()};
    templates[index.value()] = record.value();
    return {};
  });
}

Result<TemplateChange, Failure> Templates::remove(const TemplatePlace& place) {
  return change([&](Array& templates, TemplateChange& done) -> Check {
    const auto index = find(place, templates);
    if (!index) {
      return index.failure();
    }
    done = {index.value(), templates[index.value()]};
    templates.erase(at(templates, index.value()));
    return {};
  });
}

Result<TemplateChange, Failure> Templates::move(const TemplatePlace& place,
                                                const TemplatePlace& to) {
  return change([&](Array& templates, TemplateChange& done) -> Check {
    const auto index = find(place, templates);
    if (!index) {
      return index.failure();
    }
    const auto target = find(to, templates);
    if (!target) {
      return target.failure();
    }
    done = {target.value(), templates[index.value()]};
    templates.erase(at(templates, index.value()));
    templates.insert(at(templates, target.value()), done.record);
    return {};
  });
}

Result<void, Failure> Templates::makeFile(const TemplatePlace& place, const std::string& folder) {
  const auto templates = all();
  if (!templates) {
    return templates.failure();
  }
  const auto index = find(place, templates.value());
  if (!index) {
    return index.failure();
  }
  const auto opened =
      _helper.open(urlForDirectory("quennel", folder, std::to_string(index.value())));
  if (!opened) {
    return Failure{.reason = Reason::HelperSilent, .silence = opened.failure()};
  }
  return {};
}

Result<TemplateChange, Failure> Templates::change(const Work& work) {
  TemplateChange done;
  const auto stored = changeStoredList(_settings, fileTemplatesKey,
                                       [&](Array& templates) { return work(templates, done); });
  if (!stored) {
    return stored.failure();
  }
  done.autostartFailure = updateAutostart();
  // A helper that is not running, or a session without a bus, has nobody to tell.
  static_cast<void>(_helper.notify("fileTemplates"));
  return done;
}

/// The helper has to run for the shortcuts to work.
std::optional<Error> Templates::updateAutostart() {
  const auto templates = all();
  if (!templates) {
    return std::nullopt;  // somebody has just put something else there
  }
  Error error;
  const bool isNeeded = std::ranges::any_of(templates.value(), hasShortcut);
  return _autostart.setEnabled(isNeeded, &error) ? std::nullopt : std::optional(error);
}

}  // namespace quennel
