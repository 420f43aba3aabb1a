#include <cstdio>
#include <exception>

#include "bench/files/Measurements.h"

int main(int argumentCount, char** arguments) {
  using namespace quennel::bench;
  try {
    Report report(argumentCount, arguments);
    measureFreeNames(report);
    measureSmallFile(report);
    measureSharedBlocks(report);
    measureFolders(report);
    return report.exitStatus();
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "bench files: %s\n", failure.what());
    return 1;
  }
}
