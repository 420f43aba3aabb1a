#pragma once

#include "platform/HelperConnection.h"

namespace quennel {

/// The helper on the user's session bus. Connects anew for every operation: most of what a program
/// does needs no helper.
class BusHelperConnection final : public HelperConnection {
 public:
  Result<void, HelperSilence> open(const std::string& url) override;
  Result<bool, HelperSilence> notify(const std::string& command) override;
  Result<bool, HelperSilence> perform(const std::string& action) override;
  Result<std::vector<HelperKey>, HelperSilence> keys() override;
};

}  // namespace quennel
