// What everything that plays sounds does, run on the adapter, with a library that only takes note,
// and on the fake.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <type_traits>
#include <vector>

#include "platform/linux/desktop/CanberraSound.h"
#include "tests/support/CallLog.h"
#include "tests/support/FakeBundle.h"
#include "tests/support/FakeSound.h"

namespace quennel::test {
namespace {

using Names = std::vector<std::string>;

/// The stand-in for the sound library; from now on it is the one that the adapter opens.
class Library {
 public:
  static Library& shared() {
    static Library library;
    return library;
  }

  std::vector<std::string>& files() { return *_files; }
  int contexts() const { return *_contexts; }

 private:
  Library() {
    void* const handle = dlopen(SOUND_LIBRARY_STAND_IN, RTLD_NOW | RTLD_LOCAL);
    if (!handle) {
      throw std::runtime_error(dlerror());
    }
    _files = reinterpret_cast<std::vector<std::string>* (*)()>(dlsym(handle, "playedFiles"))();
    _contexts = reinterpret_cast<int* (*)()>(dlsym(handle, "openContexts"))();
  }

  std::vector<std::string>* _files = nullptr;
  int* _contexts = nullptr;
};

class LibrarySound {
 public:
  LibrarySound() {
    _library.files().clear();
    _bundle.resources["sound.oga"] = "/resources/sound.oga";
    _bundle.resources["other.wav"] = "/resources/other.wav";
  }

  Sound& get() { return *_sound; }
  Names played() const {
    Names names;
    for (const auto& file : _library.files()) {
      names.push_back(std::filesystem::path(file).stem());
    }
    return names;
  }
  void end() { _sound.reset(); }
  bool isSilent() const { return _library.contexts() == 0; }

 private:
  Library& _library = Library::shared();
  FakeBundle _bundle;
  std::unique_ptr<CanberraSound> _sound = std::make_unique<CanberraSound>(_bundle);
};

class FakedSound {
 public:
  FakedSound() { _sound.missing = {"", "noise"}; }

  Sound& get() { return _sound; }
  Names played() const { return _sound.played; }
  void end() {}
  bool isSilent() const { return true; }

 private:
  CallLog _log;
  FakeSound _sound{_log};
};

template <typename Subject>
class SoundContract : public testing::Test {
 protected:
  Sound& sound() { return _subject.get(); }

  Subject _subject;
};

using Subjects = testing::Types<LibrarySound, FakedSound>;
struct SubjectNames {
  template <typename Subject>
  static std::string GetName(int) {
    return std::is_same_v<Subject, FakedSound> ? "Fake" : "Library";
  }
};
TYPED_TEST_SUITE(SoundContract, Subjects, SubjectNames);

TYPED_TEST(SoundContract, ASoundOfTheBundleIsPlayed) {
  this->sound().playSoundNamed("sound");
  EXPECT_EQ(this->_subject.played(), Names{"sound"});
}

TYPED_TEST(SoundContract, NothingIsPlayedUnasked) { EXPECT_EQ(this->_subject.played(), Names{}); }

TYPED_TEST(SoundContract, EachSoundIsPlayedAsOftenAsItIsAskedForInTheOrderOfTheCalls) {
  for (const char* const name : {"sound", "other", "sound", "sound"}) {
    this->sound().playSoundNamed(name);
  }
  EXPECT_EQ(this->_subject.played(), (Names{"sound", "other", "sound", "sound"}));
}

TYPED_TEST(SoundContract, ASoundThatTheBundleDoesNotHaveIsNotPlayed) {
  this->sound().playSoundNamed("noise");
  this->sound().playSoundNamed("");
  EXPECT_EQ(this->_subject.played(), Names{});
}

TYPED_TEST(SoundContract, AfterOneThatIsMissingTheNextIsPlayed) {
  this->sound().playSoundNamed("noise");
  this->sound().playSoundNamed("sound");
  EXPECT_EQ(this->_subject.played(), Names{"sound"});
}

TYPED_TEST(SoundContract, NothingSoundsAfterItsEnd) {
  this->sound().playSoundNamed("sound");
  this->_subject.end();
  EXPECT_TRUE(this->_subject.isSilent());
}

}  // namespace
}  // namespace quennel::test
