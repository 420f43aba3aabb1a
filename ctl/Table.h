#pragma once

#include <string>
#include <vector>

namespace quennel {

/// Rows of cells in columns that are aligned as a terminal shows them, two spaces between them and
/// none at the end of a line.
std::string table(const std::vector<std::vector<std::string>>& rows);

}  // namespace quennel
