#include <gtest/gtest.h>

#include "tests/support/FakeKernelQueue.h"
#include "watch/VDKQueuePathEntry.h"

namespace quennel::test {
namespace {

class AVDKQueuePathEntry : public ::testing::Test {
 protected:
  AVDKQueuePathEntry() { _queue->addFile("/folder/../file"); }

  std::shared_ptr<FakeKernelQueue> _queue = std::make_shared<FakeKernelQueue>();
  std::shared_ptr<VDKQueuePathEntry> makeEntry(const char* path = "/folder/../file") {
    return VDKQueuePathEntry::create(_queue, SharedText(path), 35);
  }
};

TEST_F(AVDKQueuePathEntry, KeepsThePathAsGivenTheDescriptorAndTheMask) {
  const auto entry = makeEntry();
  EXPECT_EQ(entry->path().view(), "/folder/../file");
  EXPECT_GE(entry->watchedFD(), 0);
  EXPECT_EQ(entry->subscriptionFlags(), 35U);
}

TEST_F(AVDKQueuePathEntry, IsNullForAPathThatCannotBeOpened) {
  EXPECT_EQ(makeEntry("/missing"), nullptr);
}

TEST_F(AVDKQueuePathEntry, OpensAndDoesNotRegister) {
  const auto entry = makeEntry();
  EXPECT_EQ(_queue->openDescriptorCount(), 1U);
  EXPECT_TRUE(_queue->changes().empty());
}

TEST_F(AVDKQueuePathEntry, ClosesItsDescriptorAtItsEnd) {
  makeEntry().reset();
  EXPECT_EQ(_queue->openDescriptorCount(), 0U);
}

TEST_F(AVDKQueuePathEntry, ClosesNothingWhenItHasNoDescriptor) {
  auto entry = makeEntry();
  entry->setWatchedFD(-1);
  entry.reset();
  EXPECT_EQ(_queue->openDescriptorCount(), 1U);
}

TEST_F(AVDKQueuePathEntry, TakesAnotherPathAndAnotherMask) {
  const auto entry = makeEntry();
  entry->setPath(SharedText("/other"));
  entry->setSubscriptionFlags(1);
  EXPECT_EQ(entry->path().view(), "/other");
  EXPECT_EQ(entry->subscriptionFlags(), 1U);
  entry->setPath(SharedText());
  EXPECT_FALSE(entry->path());
}

}  // namespace
}  // namespace quennel::test
