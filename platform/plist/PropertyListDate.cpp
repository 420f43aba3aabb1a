#include "platform/plist/PropertyListDate.h"

#include <chrono>
#include <cmath>

namespace quennel {
namespace {

using std::chrono::duration;
using std::chrono::duration_cast;
using std::chrono::microseconds;
using Date = PropertyList::Date;
using Seconds = duration<double>;

constexpr Date epoch{std::chrono::seconds(978'307'200)};

}  // namespace

Date dateOfPropertyListSeconds(double seconds) {
  const double since1970 = seconds + Seconds(epoch.time_since_epoch()).count();
  if (!(since1970 > Seconds(Date::min().time_since_epoch()).count() + 1)) {
    return Date::min();
  }
  if (since1970 > Seconds(Date::max().time_since_epoch()).count() - 1) {
    return Date::max();
  }
  // Counted from 1970: from 2001 on, the nanoseconds back to the first dates do not fit.
  return Date(microseconds(std::llround(static_cast<long double>(seconds) * 1e6L)) +
              duration_cast<microseconds>(epoch.time_since_epoch()));
}

double propertyListSecondsOfDate(Date date) {
  const auto time = std::chrono::floor<microseconds>(date.time_since_epoch()) -
                    duration_cast<microseconds>(epoch.time_since_epoch());
  return static_cast<double>(static_cast<long double>(time.count()) / 1e6L);
}

}  // namespace quennel
