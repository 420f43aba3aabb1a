#include <dlfcn.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <string>

#include "platform/linux/desktop/CanberraSound.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FakeBundle.h"

namespace quennel::test {
namespace {

bool isLibraryLoaded() {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find("libcanberra") != std::string::npos) {
      return true;
    }
  }
  return false;
}

TEST(CanberraSound, LoadsTheLibraryAtTheFirstSoundOnly) {
  void* const library = dlopen("libcanberra.so.0", RTLD_LAZY | RTLD_LOCAL);
  if (!library) {
    GTEST_SKIP() << "libcanberra0 is not installed";
  }
  dlclose(library);
  EXPECT_EQ(inChildProcess([] {
              setenv("CANBERRA_DRIVER", "null", 1);
              FakeBundle bundle;
              bundle.resources["sound.oga"] = QUENNEL_SOUND;
              CanberraSound sound(bundle);
              const bool before = isLibraryLoaded();
              sound.playSoundNamed("sound");
              sound.playSoundNamed("sound");
              return std::string(before ? "early" : "late") + (isLibraryLoaded() ? " loaded" : "");
            }),
            "late loaded");
}

TEST(CanberraSound, WithoutTheResourceNothingIsLoaded) {
  EXPECT_EQ(inChildProcess([] {
              FakeBundle bundle;
              CanberraSound(bundle).playSoundNamed("sound");
              return std::string(isLibraryLoaded() ? "loaded" : "nothing");
            }),
            "nothing");
}

}  // namespace
}  // namespace quennel::test
