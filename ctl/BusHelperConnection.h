#pragma once

#include "ctl/HelperConnection.h"

namespace quennel {

/// The helper on the user's session bus. Connects anew for every operation: most commands do
/// without.
class BusHelperConnection final : public HelperConnection {
 public:
  void open(const std::string& url) override;
  bool notify(const std::string& command) override;
  std::vector<HelperKey> keys() override;
};

}  // namespace quennel
