#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "platform/linux/scope/Bookmark.h"
#include "platform/linux/scope/BookmarkKey.h"
#include "tests/contract/scope/VolumeTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Sentence.h"

namespace quennel::test {
namespace {

using ::testing::Optional;

/// What is, and is not, taken for a token.
class Token : public VolumeTest {
 protected:
  Token() {
    makeFolder(folder);
    token = bookmark(folder).bytes;
  }

  void TearDown() override { EXPECT_THAT(resolve({token}), Optional(folder)); }

  /// Neither finding the folder nor making a token does more than say why it cannot be done.
  void expectUnusableKey(int code, Error::Kind kind) const {
    const std::string contents = contentsOf(keyFile);
    const Error reason{code, kind, keyFile};
    Error ofResolving;
    EXPECT_FALSE(newScope()->pathByResolvingBookmarkData({token}, &ofResolving));
    EXPECT_EQ(ofResolving, reason);
    Error ofMaking;
    EXPECT_FALSE(newScope()->bookmarkDataForPath(folder, &ofMaking));
    EXPECT_EQ(ofMaking, reason);
    EXPECT_EQ(contentsOf(keyFile), contents);
  }

  const std::string folder = temporary / "folder";
  const std::string keyFile = temporary / "keys/key";
  std::string token;
};

TEST_F(Token, WithAnyBitFlippedGivesNothing) {
  const auto run = newScope();
  for (std::size_t bit = 0; bit < token.size() * 8; ++bit) {
    std::string changed = token;
    changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << (bit % 8)));
    EXPECT_FALSE(run->pathByResolvingBookmarkData({changed})) << bit;
  }
}

TEST_F(Token, CutShortGivesNothing) {
  const auto run = newScope();
  for (std::size_t size = 0; size < token.size(); ++size) {
    EXPECT_FALSE(run->pathByResolvingBookmarkData({token.substr(0, size)})) << size;
  }
}

TEST_F(Token, WithMoreBehindItGivesNothing) {
  EXPECT_FALSE(resolve({token + '\0'}));
  EXPECT_FALSE(resolve({token + token}));
}

TEST_F(Token, MadeOfRandomBytesGivesNothing) {
  std::mt19937 random(1);
  const auto run = newScope();
  for (int round = 0; round < 2000; ++round) {
    std::string garbage(random() % 600, '\0');
    for (char& byte : garbage) {
      byte = static_cast<char>(random());
    }
    EXPECT_FALSE(run->pathByResolvingBookmarkData({garbage}));
    EXPECT_FALSE(run->pathByResolvingBookmarkData({token.substr(0, 36) + garbage}));
  }
}

TEST_F(Token, OfEnormousSizeGivesNothingAtOnce) {
  const PropertyList::Data huge{token + std::string(std::size_t{64} << 20U, 'x')};
  const auto run = newScope();
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(run->pathByResolvingBookmarkData(huge));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

TEST_F(Token, ForgedWithAnotherKeyGivesNothing) {
  const TemporaryDirectory other;
  LandlockSecurityScope forger(other / "key");
  const auto forged = forger.bookmarkDataForPath(folder, nullptr);
  ASSERT_TRUE(forged);
  EXPECT_FALSE(resolve(*forged));
}

TEST_F(Token, GivesNothingWhenItsUserHasNoKeyOrAnotherOne) {
  std::filesystem::rename(keyFile, keyFile + ".away");
  EXPECT_FALSE(resolve({token}));
  EXPECT_FALSE(exists(keyFile));
  EXPECT_THAT(resolve(bookmark(folder)), Optional(folder));
  EXPECT_FALSE(resolve({token}));
  std::filesystem::rename(keyFile + ".away", keyFile);
}

TEST_F(Token, IsAuthenticatedWithAKeyThatOnlyTheUserCanRead) {
  EXPECT_EQ(modeOf(keyFile), 0600U);
  EXPECT_EQ(modeOf(temporary / "keys"), 0700U);
}

TEST_F(Token, GivesNothingWhileItsKeyIsOpenToOthers) {
  for (const mode_t mode : {0640U, 0604U, 0620U, 0602U}) {
    chmod(keyFile.c_str(), mode);
    EXPECT_FALSE(resolve({token})) << mode;
  }
  chmod(keyFile.c_str(), 0600);
}

TEST_F(Token, IsNotMadeWithAKeyThatIsOpenToOthersAndTheKeyStaysAsItIs) {
  chmod(keyFile.c_str(), 0644);
  expectUnusableKey(EPERM, Error::Kind::KeyOpenToOthers);
  EXPECT_EQ(modeOf(keyFile), 0644U);
  chmod(keyFile.c_str(), 0600);
}

TEST_F(Token, IsNotMadeWithAKeyThatIsALinkAndTheLinkStays) {
  std::filesystem::rename(keyFile, keyFile + ".away");
  std::filesystem::create_symlink(keyFile + ".away", keyFile);
  expectUnusableKey(ELOOP, Error::Kind::Reading);
  EXPECT_TRUE(std::filesystem::is_symlink(keyFile));
  std::filesystem::rename(keyFile + ".away", keyFile);
}

TEST_F(Token, IsNotMadeWithAFileThatIsNoKeyAndTheFileStays) {
  std::filesystem::rename(keyFile, keyFile + ".away");
  for (const char* const contents : {"", "short", "of a length that no key has at all"}) {
    writeFile(keyFile, contents);
    chmod(keyFile.c_str(), 0600);
    expectUnusableKey(EBADMSG, Error::Kind::NoKeyOfGrants);
  }
  std::filesystem::remove(keyFile);
  makeFolder(keyFile);
  Error error;
  EXPECT_FALSE(newScope()->bookmarkDataForPath(folder, &error));
  EXPECT_TRUE(std::filesystem::is_directory(keyFile));
  std::filesystem::remove(keyFile);
  std::filesystem::rename(keyFile + ".away", keyFile);
}

TEST_F(Token, IsNotMadeWithAKeyThatCannotBeReadAndTheKeyStaysAsItIs) {
  if (isRoot()) {
    EXPECT_NE(contentsOf(keyFile), "");  // root reads every file
    return;
  }
  const std::string old = contentsOf(keyFile);
  chmod(keyFile.c_str(), 0);
  Error error;
  EXPECT_FALSE(newScope()->bookmarkDataForPath(folder, &error));
  EXPECT_EQ(error.code, EACCES);
  chmod(keyFile.c_str(), 0600);
  EXPECT_EQ(contentsOf(keyFile), old);
}

TEST_F(Token, CannotBeMadeWhereTheKeyCannotBeWritten) {
  writeFile(temporary / "file", "");
  LandlockSecurityScope keyless(temporary / "file/key");
  Error error;
  EXPECT_FALSE(keyless.bookmarkDataForPath(folder, &error));
  EXPECT_EQ(error.code, ENOTDIR);
  EXPECT_NE(sentenceOf(error), "");
}

TEST_F(Token, OfPathsThatAreNotTextResolves) {
  const std::string strange = temporary / "a\n\xff\\040 b";
  makeFolder(strange);
  EXPECT_THAT(resolve(bookmark(strange)), Optional(strange));
}

/// Tokens whose folder has been replaced by another one, which the user has authorized.
class RenewedToken : public Token {
 protected:
  RenewedToken() {
    std::filesystem::remove(folder);
    makeFolder(folder);
    EXPECT_TRUE(renew(token, folder));
  }

  bool renew(const std::string& renewed, const std::string& path, Error* error = nullptr) const {
    return newScope()->renewBookmark({renewed}, path, error);
  }
  std::vector<std::string> renewals() const {
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(keyFile + ".renewals")) {
      paths.push_back(entry.path());
    }
    return paths;
  }
};

TEST_F(RenewedToken, LeadsToTheNewFolderInALaterRun) {
  EXPECT_THAT(resolve({token}), Optional(folder));
  const auto run = newScope();
  EXPECT_FALSE(run->isAccessible(folder));
  const auto access = run->startAccessing({token});
  EXPECT_TRUE(run->isAccessible(folder));
}

TEST_F(RenewedToken, IsRememberedForTheUserAlone) {
  ASSERT_EQ(renewals().size(), 1U);
  EXPECT_EQ(modeOf(renewals().front()), 0600U);
  EXPECT_EQ(modeOf(keyFile + ".renewals"), 0700U);
}

TEST_F(RenewedToken, IsRememberedOnceHoweverOftenItIsAuthorized) {
  const std::string before = contentsOf(renewals().front());
  EXPECT_TRUE(renew(token, folder));
  EXPECT_EQ(contentsOf(renewals().front()), before);
  std::filesystem::remove(folder);
  makeFolder(folder);
  EXPECT_TRUE(renew(token, folder));
  EXPECT_EQ(renewals().size(), 1U);
}

TEST_F(RenewedToken, IsRenewedForItsOwnPathOnly) {
  makeFolder(temporary / "other");
  Error error;
  EXPECT_FALSE(renew(token, temporary / "other", &error));
  EXPECT_EQ(error.code, EINVAL);
}

TEST_F(RenewedToken, WithAnyBitOfTheRenewalFlippedGivesNothing) {
  const std::string file = renewals().front();
  const std::string kept = contentsOf(file);
  const auto run = newScope();
  for (std::size_t bit = 0; bit < kept.size() * 8; ++bit) {
    std::string changed = kept;
    changed[bit / 8] = static_cast<char>(changed[bit / 8] ^ (1 << (bit % 8)));
    writeFile(file, changed);
    EXPECT_FALSE(run->pathByResolvingBookmarkData({token})) << bit;
  }
  writeFile(file, kept);
}

TEST_F(RenewedToken, IsNotRenewedByTheRenewalOfAnotherOneOrByAToken) {
  makeFolder(temporary / "other");
  const std::string otherToken = bookmark(temporary / "other").bytes;
  std::filesystem::remove(temporary / "other");
  makeFolder(temporary / "other");
  const std::string file = renewals().front();
  const std::string kept = contentsOf(file);
  ASSERT_TRUE(renew(otherToken, temporary / "other"));
  for (const std::string& path : renewals()) {
    writeFile(file, contentsOf(path == file ? renewals().back() : path));
    if (contentsOf(file) != kept) {
      EXPECT_FALSE(resolve({token}));
    }
  }
  writeFile(file, bookmark(folder).bytes);
  EXPECT_FALSE(resolve({token}));
  writeFile(file, kept);
}

TEST_F(RenewedToken, GivesNothingOnceItsUserHasAnotherKey) {
  std::filesystem::rename(keyFile, keyFile + ".away");
  EXPECT_THAT(resolve(bookmark(folder)), Optional(folder));
  EXPECT_FALSE(resolve({token}));
  std::filesystem::rename(keyFile + ".away", keyFile);
}

TEST_F(RenewedToken, MayHaveBeenMadeWithAKeyThatIsLost) {
  std::filesystem::remove(keyFile);
  EXPECT_TRUE(renew(token, folder));
  EXPECT_THAT(resolve({token}), Optional(folder));
}

TEST_F(RenewedToken, IsNotRememberedWithAKeyThatCannotBeUsed) {
  std::filesystem::remove(folder);
  makeFolder(folder);
  chmod(keyFile.c_str(), 0644);
  Error error;
  EXPECT_FALSE(renew(token, folder, &error));
  EXPECT_EQ(error.code, EPERM);
  chmod(keyFile.c_str(), 0600);
  EXPECT_FALSE(resolve({token}));
  EXPECT_TRUE(renew(token, folder));
}

TEST(BookmarkKeyOfManyProcesses, IsTheSameForAll) {
  for (int round = 0; round < 20; ++round) {
    const TemporaryDirectory folder;
    const BookmarkKey key(folder / "a/b/key");
    const auto answers = inChildProcesses(4, [&] {
      const auto made = key.readOrMake(nullptr);
      return made ? std::string(made->begin(), made->end()) : std::string();
    });
    EXPECT_EQ(std::set<std::string>(answers.begin(), answers.end()).size(), 1U);
    EXPECT_EQ(answers[0].size(), 32U);
  }
}

TEST(BookmarkBytes, GiveBackEveryField) {
  const Bookmark bookmark{
      "/a/b", "b", "ext4", {"ext4:00ff", 0x0123456789abcdefU, -1, -2, std::string("\0\xff", 2)}};
  EXPECT_EQ(bookmarkOfBytes(bytesOfBookmark(bookmark)), bookmark);
}

TEST(BookmarkBytes, ThatNoBookmarkHasAreRefused) {
  const DirectoryIdentity identity{"ext4:00ff", 2, 0, 0, ""};
  EXPECT_TRUE(bookmarkOfBytes(bytesOfBookmark({"/a", "a", "ext4", identity})));
  EXPECT_FALSE(bookmarkOfBytes(bytesOfBookmark({"a", "a", "ext4", identity})));
  EXPECT_FALSE(bookmarkOfBytes(bytesOfBookmark({std::string("/a\0b", 4), "a", "ext4", identity})));
  EXPECT_FALSE(bookmarkOfBytes(bytesOfBookmark({"/a", "a", "ext4", {}})));
  EXPECT_FALSE(bookmarkOfBytes(""));
}

}  // namespace
}  // namespace quennel::test
