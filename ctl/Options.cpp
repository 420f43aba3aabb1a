#include "ctl/Options.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "ctl/CommandError.h"
#include "ctl/Suggestion.h"

namespace quennel {
namespace {

bool isOption(const std::string& word) {
  // "-1" is a number, and "-" alone no option either.
  return word.size() > 1 && word[0] == '-' && !(word[1] >= '0' && word[1] <= '9');
}

const Option& find(std::string_view word, std::span<const Option> known) {
  const std::string_view name = word.substr(std::min(word.find_first_not_of('-'), word.size()));
  const auto option = std::ranges::find(known, name, &Option::name);
  if (option != known.end() && word.starts_with("--")) {
    return *option;
  }
  std::vector<std::string_view> names;
  std::ranges::transform(known, std::back_inserter(names), &Option::name);
  throw UsageError("there is no option " + std::string(word) + suggestion(name, names, "--"));
}

}  // namespace

Options Options::parse(std::span<const std::string> words, std::span<const Option> known) {
  Options result;
  for (auto word = words.begin(); word != words.end(); ++word) {
    if (*word == "--") {
      result._arguments.insert(result._arguments.end(), word + 1, words.end());
      break;
    }
    if (!isOption(*word)) {
      result._arguments.push_back(*word);
      continue;
    }
    const std::size_t equals = std::min(word->find('='), word->size());
    const bool hasValue = equals < word->size();
    const Option& option = find(std::string_view(*word).substr(0, equals), known);
    const std::string name(option.name);
    if (option.value.empty() && hasValue) {
      throw UsageError("--" + name + " takes no value");
    }
    std::string value = hasValue ? word->substr(equals + 1) : std::string();
    if (!option.value.empty() && !hasValue) {
      if (++word == words.end()) {
        throw UsageError("--" + name + " needs a value");
      }
      value = *word;
    }
    result._options.emplace_back(name, std::move(value));
  }
  return result;
}

std::optional<std::string> Options::valueOf(std::string_view name) const {
  std::optional<std::string> last;
  for (const auto& [option, value] : _options) {
    if (option == name) {
      last = value;
    }
  }
  return last;
}

std::optional<bool> Options::choice(std::string_view on, std::string_view off) const {
  std::optional<bool> last;
  for (const auto& [option, value] : _options) {
    if (option == on || option == off) {
      last = option == on;
    }
  }
  return last;
}

}  // namespace quennel
