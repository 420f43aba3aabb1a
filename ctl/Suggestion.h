#pragma once

#include <span>
#include <string>
#include <string_view>

namespace quennel {

/// "; did you mean <prefix><known>?" for the known word that `word` is most likely a slip of, else
/// empty.
std::string suggestion(std::string_view word, std::span<const std::string_view> known,
                       std::string_view prefix = {});

}  // namespace quennel
