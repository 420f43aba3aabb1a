#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tests/e2e/folders/FileManagerSession.h"
#include "tests/support/TemporaryDirectory.h"

namespace quennel::test {
namespace {

using namespace std::chrono_literals;

/// A program called thunar that does what the test says.
class FileManagerSessionTest : public testing::Test {
 protected:
  void SetUp() override {
    if (const auto missing = FileManagerSession::missingProgram("thunar")) {
      GTEST_SKIP() << *missing << " is not installed";
    }
  }
  std::string program(const std::string& script) const {
    const std::string path = _folder / "thunar";
    std::ofstream(path) << "#!/bin/sh\n" << script << "\n";
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }

  TemporaryDirectory _folder;
};

TEST_F(FileManagerSessionTest, OneThatShowsNothingIsStartedOnceMore) {
  const std::string mark = _folder / "mark";
  FileManagerSession session(
      program("[ -e '" + mark + "' ] && exec thunar \"$@\"; touch '" + mark + "'"), 8s);
  EXPECT_NE(session.openNewFolder("folder"), "");
}

TEST_F(FileManagerSessionTest, WhatOneWroteThatShowsNothingIsInTheMessage) {
  FileManagerSession session(program("echo 'no such theme'; echo 'no lock' >&2"), 100ms);
  try {
    session.openNewFolder("folder");
    ADD_FAILURE() << "there is no window";
  } catch (const std::runtime_error& error) {
    const std::string message = error.what();
    EXPECT_NE(message.find("opens no window"), std::string::npos) << message;
    EXPECT_NE(message.find("no such theme"), std::string::npos) << message;
    EXPECT_NE(message.find("no lock"), std::string::npos) << message;
    EXPECT_NE(message.find("at the second attempt"), std::string::npos) << message;
  }
}

}  // namespace
}  // namespace quennel::test
