#pragma once

#include <string>

#include "tests/support/FakeBundle.h"

namespace quennel::test {

/// Puts every text of the table in brackets, so that one that does not come from there shows.
class BracketingBundle final : public FakeBundle {
 public:
  std::string localizedStringForKey(const std::string& key) const override {
    return "[" + key + "]";
  }
};

}  // namespace quennel::test
