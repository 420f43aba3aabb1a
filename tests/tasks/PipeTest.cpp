#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>

#include "platform/Pipe.h"

namespace quennel::test {
namespace {

TEST(Pipe, ReadingWaitsUntilTheWritingEndIsClosed) {
  const Pipe pipe;
  auto read = std::async(std::launch::async,
                         [&pipe] { return pipe.fileHandleForReading().readDataToEndOfFile(); });
  pipe.fileHandleForWriting()->writeData("one ");
  EXPECT_EQ(read.wait_for(std::chrono::milliseconds(20)), std::future_status::timeout);
  pipe.fileHandleForWriting()->writeData("two");
  pipe.fileHandleForWriting()->closeFile();
  EXPECT_EQ(read.get(), "one two");
}

TEST(Pipe, HoldsMoreThanASystemsPipeWithoutAReader) {
  const Pipe pipe;
  pipe.fileHandleForWriting()->writeData(std::string(1'000'000, 'x'));
  pipe.fileHandleForWriting()->closeFile();
  EXPECT_EQ(pipe.fileHandleForReading().readDataToEndOfFile().size(), 1'000'000u);
}

TEST(Pipe, WhatWasReadIsNotReadAgain) {
  const Pipe pipe;
  pipe.fileHandleForWriting()->writeData("once");
  pipe.fileHandleForWriting()->closeFile();
  EXPECT_EQ(pipe.fileHandleForReading().readDataToEndOfFile(), "once");
  EXPECT_EQ(pipe.fileHandleForReading().readDataToEndOfFile(), "");
}

TEST(Pipe, WhatIsWrittenAfterClosingIsDropped) {
  const Pipe pipe;
  pipe.fileHandleForWriting()->closeFile();
  pipe.fileHandleForWriting()->writeData("late");
  EXPECT_EQ(pipe.fileHandleForReading().readDataToEndOfFile(), "");
}

}  // namespace
}  // namespace quennel::test
