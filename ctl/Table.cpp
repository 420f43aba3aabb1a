#include "ctl/Table.h"

#include <locale.h>
#include <wchar.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace quennel {
namespace {

/// The number of columns that a terminal gives the text: East Asian characters have two, combining
/// ones none.
std::size_t width(std::string_view text) {
  static const locale_t unicode = newlocale(LC_CTYPE_MASK, "C.UTF-8", nullptr);
  const locale_t previous = uselocale(unicode);
  std::size_t columns = 0;
  std::mbstate_t state{};
  while (!text.empty()) {
    wchar_t character = 0;
    const std::size_t length = mbrtowc(&character, text.data(), text.size(), &state);
    const bool isCharacter = length > 0 && length <= text.size();
    columns += static_cast<std::size_t>(isCharacter ? std::max(wcwidth(character), 0) : 1);
    text.remove_prefix(isCharacter ? length : 1);
  }
  uselocale(previous);
  return columns;
}

}  // namespace

std::string table(const std::vector<std::vector<std::string>>& rows) {
  std::vector<std::size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (std::size_t column = 0; column < row.size(); ++column) {
      widths[column] = std::max(widths[column], width(row[column]));
    }
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    std::size_t end = 0;
    for (std::size_t column = 0; column < row.size(); ++column) {
      line += row[column];
      end = row[column].empty() ? end : line.size();
      line.append(widths[column] - width(row[column]) + 2, ' ');
    }
    text.append(line, 0, end).append("\n");
  }
  return text;
}

}  // namespace quennel
