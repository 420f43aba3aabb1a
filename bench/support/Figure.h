#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

namespace quennel::bench {

/// What a figure has to reach.
struct Goal {
  enum class Kind {
    /// ours / reference is at most the limit.
    RatioAtMost,
    /// ours / reference is at least the limit: for what is better the more there is.
    RatioAtLeast,
    /// ours is at most the limit, in the figure's unit, whatever the reference does.
    OursAtMost,
  };

  Kind kind;
  double limit;
};

/// One thing measured, for us and for a reference in the same run and unit ("ms", "1/s", "kB").
struct Figure {
  std::string name;
  std::string unit;
  double ours;
  double reference;
  Goal goal;

  double ratio() const { return ours / reference; }
  bool reachesGoal() const {
    switch (goal.kind) {
      case Goal::Kind::RatioAtMost:
        return ratio() <= goal.limit;
      case Goal::Kind::RatioAtLeast:
        return ratio() >= goal.limit;
      case Goal::Kind::OursAtMost:
        return ours <= goal.limit;
    }
    return false;
  }
};

/// Prints the figures of one program, a line each, in the columns of bench/run, and remembers
/// whether one falls short.
class Report {
 public:
  enum class Mode {
    Measuring,
    /// Small sizes, only to see that it runs: no figure falls short.
    Smoke,
  };

  explicit Report(Mode mode) : _mode(mode) {}
  /// From the arguments of a benchmark: `--smoke` or none.
  Report(int argumentCount, char** arguments)
      : Report(argumentCount > 1 && std::string_view(arguments[1]) == "--smoke" ? Mode::Smoke
                                                                                : Mode::Measuring) {
  }

  bool isSmoke() const { return _mode == Mode::Smoke; }

  void add(const Figure& figure) {
    const bool isShort = !isSmoke() && !figure.reachesGoal();
    _someShort = _someShort || isShort;
    const std::string_view verdict = isSmoke() ? "smoke" : isShort ? "short" : "ok";
    std::printf("%-46s %15s %15s %7s  %-10s %s\n", figure.name.c_str(),
                quantity(figure.ours, figure.unit).c_str(),
                quantity(figure.reference, figure.unit).c_str(), ratioText(figure).c_str(),
                text(figure).c_str(), verdict.data());
    std::fflush(stdout);
  }

  /// For what cannot be measured here, and why.
  void addNotMeasured(const std::string& name, const std::string& reason) {
    std::printf("%-46s not measured: %s\n", name.c_str(), reason.c_str());
    std::fflush(stdout);
  }

  /// What main returns.
  int exitStatus() const { return _someShort ? 1 : 0; }

 private:
  static std::string quantity(double value, const std::string& unit) {
    char text[64];
    const int decimals = value < 10 ? 3 : value < 1000 ? 1 : 0;
    std::snprintf(text, sizeof text, "%.*f %s", decimals, value, unit.c_str());
    return text;
  }

  static std::string ratioText(const Figure& figure) {
    if (figure.reference == 0) {
      return "-";
    }
    char text[64];
    std::snprintf(text, sizeof text, "%.2f", figure.ratio());
    return text;
  }

  static std::string text(const Figure& figure) {
    char text[64];
    switch (figure.goal.kind) {
      case Goal::Kind::RatioAtMost:
        std::snprintf(text, sizeof text, "<= %.2f", figure.goal.limit);
        break;
      case Goal::Kind::RatioAtLeast:
        std::snprintf(text, sizeof text, ">= %.2f", figure.goal.limit);
        break;
      case Goal::Kind::OursAtMost:
        std::snprintf(text, sizeof text, "<= %g %s", figure.goal.limit, figure.unit.c_str());
        break;
    }
    return text;
  }

  Mode _mode;
  bool _someShort = false;
};

inline double median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/// How long the operation takes, in milliseconds.
template <typename Operation>
double millisecondsOf(const Operation& operation) {
  const auto start = std::chrono::steady_clock::now();
  operation();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

struct Medians {
  double ours;
  double reference;
};

/// Runs both by turns, changing who begins, so that what else the machine does hits both alike.
/// Each answers what it measured.
template <typename Ours, typename Reference>
Medians compare(int rounds, const Ours& ours, const Reference& reference) {
  std::vector<double> oursValues;
  std::vector<double> referenceValues;
  for (int round = 0; round < rounds; ++round) {
    const bool oursFirst = round % 2 == 0;
    if (oursFirst) {
      oursValues.push_back(ours());
    }
    referenceValues.push_back(reference());
    if (!oursFirst) {
      oursValues.push_back(ours());
    }
  }
  return {median(oursValues), median(referenceValues)};
}

}  // namespace quennel::bench
