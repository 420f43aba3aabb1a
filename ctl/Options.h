#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quennel {

/// One option that a command understands.
struct Option {
  std::string_view name;
  /// What its value is called in the help; empty for a switch, which has none.
  std::string_view value;
  std::string_view help;
};

/// The words that follow a command, taken apart. Options may stand anywhere, as "--name=value" or
/// "--name value"; "--" ends them. The last of several counts.
class Options {
 public:
  /// Throws a UsageError for an option that is not among `known`, lacks its value or has one too
  /// many.
  static Options parse(std::span<const std::string> words, std::span<const Option> known);

  const std::vector<std::string>& arguments() const { return _arguments; }

  std::optional<std::string> valueOf(std::string_view name) const;

  /// Which of two opposite switches was given last: true for `on`, false for `off`.
  std::optional<bool> choice(std::string_view on, std::string_view off) const;

  bool has(std::string_view name) const { return valueOf(name).has_value(); }
  bool hasNone() const { return _options.empty(); }

 private:
  std::vector<std::string> _arguments;
  std::vector<std::pair<std::string, std::string>> _options;
};

}  // namespace quennel
