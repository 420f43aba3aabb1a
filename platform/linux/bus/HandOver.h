#pragma once

#include <string>
#include <vector>

namespace quennel {

/// What became of URLs that were to be handed over.
enum class HandOver {
  /// The helper has answered: it sees to them from now on.
  Accepted,
  /// There is no bus, or no helper on it that could be reached or started. Nobody has the URLs.
  NobodyThere,
  /// It is not known whether the helper has them.
  Failed,
};

/// Asks the session's helper, which the bus starts if need be, to open the URLs; without any, to
/// start. The launch token of the environment goes along. Waits for the answer, which comes as soon
/// as the helper has received them.
///
/// A launcher may end a moment after it has sent a message of its own, and the message is lost with
/// it. A program that it starts lives on, so the entry of the desktop names one that calls this.
HandOver handOverToHelper(const std::vector<std::string>& urls);

}  // namespace quennel
