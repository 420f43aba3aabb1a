#include <gtest/gtest.h>

#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "platform/keys/KeyCombination.h"
#include "platform/keys/KeyedArchive.h"

namespace quennel::test {
namespace {

std::string bytesOfHex(std::string_view hex) {
  std::string bytes;
  for (std::size_t index = 0; index < hex.size(); index += 2) {
    bytes += static_cast<char>(std::stoi(std::string(hex.substr(index, 2)), nullptr, 16));
  }
  return bytes;
}

/// An object of a class KeyRecord: keyCode 45, modifierFlags Command and Shift.
const std::string archivedObject = bytesOfHex(
    "62706c6973743030d4010203040506070a582476657273696f6e592461726368697665725424746f7058246f626a65"
    "63747312000186a05f100f4e534b657965644172636869766572d1080954726f6f748001a30b0c1355246e756c6cd3"
    "0d0e0f1011125624636c617373576b6579436f64655d6d6f646966696572466c6167738002102d1200120000d21415"
    "16175a24636c6173736e616d655824636c6173736573594b65795265636f7264a21618584e534f626a656374081"
    "11a24293237494c5153575d646b738183858a8f9aa3adb000000000000001010000000000000019000000000000000"
    "0"
    "00000000000000b9");

/// A dictionary: keyCode 45, modifiers 768.
const std::string archivedDictionary = bytesOfHex(
    "62706c6973743030d4010203040506070a582476657273696f6e592461726368697665725424746f7058246f626a65"
    "63747312000186a05f100f4e534b657965644172636869766572d1080954726f6f748001a70b0c1718191a1b55246e"
    "756c6cd30d0e0f1011145624636c617373574e532e6b6579735a4e532e6f626a656374738006a2121380028003a215"
    "1680048005576b6579436f6465596d6f64696669657273102d110300d21c1d1e1f5a24636c6173736e616d65582463"
    "6"
    "c61737365735c4e5344696374696f6e617279a21e20584e534f626a65637408111a24293237494c51535b61686f778"
    "2"
    "8487898b8e90929aa4a6a9aeb9c2cfd200000000000001010000000000000021000000000000000000000000000000"
    "d"
    "b");

std::string read(const std::string& bytes) {
  const auto combination = KeyCombination::fromPropertyList(PropertyList::Data{bytes});
  return combination ? combination->acceleratorText() : "none";
}

/// A property list of these objects, one byte for an offset and one for a reference; the first is
/// the root.
std::string binaryPropertyList(const std::vector<std::string>& objects) {
  std::string bytes = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += static_cast<char>(bytes.size());
    bytes += object;
  }
  const char table = static_cast<char>(bytes.size());
  bytes += offsets + std::string("\0\0\0\0\0\0\1\1", 8);
  bytes += std::string(7, '\0') + static_cast<char>(objects.size());
  return bytes + std::string(8, '\0') + std::string(7, '\0') + table;
}

std::string text(const std::string& characters) {
  return static_cast<char>(0x50 + characters.size()) + characters;
}

}  // namespace

TEST(KeyedArchive, FieldsOfAnObjectAreRead) {
  const auto root = KeyedArchive::rootOfData(archivedObject);
  ASSERT_TRUE(root && root->dictionary());
  EXPECT_EQ(*root,
            (PropertyList::Dictionary{{"keyCode", 45}, {"modifierFlags", (1 << 20) + (1 << 17)}}));
  EXPECT_EQ(read(archivedObject), "Shift+Super+N");
}

TEST(KeyedArchive, EntriesOfADictionaryAreRead) {
  const auto root = KeyedArchive::rootOfData(archivedDictionary);
  ASSERT_TRUE(root);
  EXPECT_EQ(*root, (PropertyList::Dictionary{{"keyCode", 45}, {"modifiers", 768}}));
  EXPECT_EQ(read(archivedDictionary), "Shift+Super+N");
}

TEST(KeyedArchive, ArchivedTextIsAnAccelerator) {
  // {$archiver: NSKeyedArchiver, $objects: [Ctrl+N], $top: {root: UID 0}}
  const std::string bytes =
      binaryPropertyList({std::string("\xD3\1\2\3\4\5\6", 7), text("$archiver"), text("$objects"),
                          text("$top"), "\x5F\x10\x0FNSKeyedArchiver", "\xA1\x07", "\xD1\x08\x09",
                          text("Ctrl+N"), text("root"), std::string("\x80\0", 2)});
  EXPECT_EQ(read(bytes), "Ctrl+N");
}

TEST(KeyedArchive, PropertyListThatIsNoArchiveIsRefused) {
  EXPECT_EQ(KeyedArchive::rootOfData(""), std::nullopt);
  EXPECT_EQ(KeyedArchive::rootOfData("bplist00"), std::nullopt);
  EXPECT_EQ(KeyedArchive::rootOfData(std::string(1000, '\0')), std::nullopt);
  EXPECT_EQ(KeyedArchive::rootOfData(
                binaryPropertyList({std::string("\xD1\1\2"), text("keyCode"), "\x10\x2D"})),
            std::nullopt);
}

TEST(KeyedArchive, ArchiveCutShortAnywhereIsRefused) {
  for (std::size_t size = 0; size < archivedObject.size(); ++size) {
    EXPECT_EQ(KeyedArchive::rootOfData(archivedObject.substr(0, size)), std::nullopt) << size;
  }
}

TEST(KeyedArchive, LargerThanAnyRecordIsRefused) {
  EXPECT_EQ(KeyedArchive::rootOfData("bplist00" + std::string(100000, 'x')), std::nullopt);
}

TEST(KeyedArchive, ObjectsThatReferToEachOtherManyTimesAreNotUnfolded) {
  // The root of the archive is a chain of 60 arrays, each twice the next: 2^60 items.
  std::vector<std::string> objects = {std::string("\xD3\1\2\3\4\5\6", 7),
                                      text("$archiver"),
                                      text("$objects"),
                                      text("$top"),
                                      "\x5F\x10\x0FNSKeyedArchiver",
                                      "\xA1\x09",
                                      "\xD1\x07\x08",
                                      text("root"),
                                      std::string("\x80\0", 2)};
  for (int depth = 0; depth < 60; ++depth) {
    const auto next = static_cast<char>(objects.size() + 1);
    objects.push_back({static_cast<char>(0xA2), next, next});
  }
  objects.push_back({static_cast<char>(0xD1), 9, 9});  // a dictionary, of the chain by the chain
  const std::string bytes = binaryPropertyList(objects);
  EXPECT_EQ(KeyedArchive::rootOfData(bytes), std::nullopt);
}

TEST(KeyedArchive, ObjectThatHoldsItselfIsReadOnce) {
  // The root refers to an object whose only field is that object.
  const std::string bytes =
      binaryPropertyList({std::string("\xD3\1\2\3\4\5\6", 7), text("$archiver"), text("$objects"),
                          text("$top"), "\x5F\x10\x0FNSKeyedArchiver", "\xA1\x09", "\xD1\x07\x08",
                          text("root"), std::string("\x80\0", 2), "\xD1\x07\x09"});
  EXPECT_EQ(KeyedArchive::rootOfData(bytes), PropertyList(PropertyList::Dictionary{}));
}

TEST(KeyedArchive, DamagedArchivesAreSurvived) {
  std::mt19937 random(4711);
  std::uniform_int_distribution<int> byte(0, 255);
  int understood = 0;
  for (int round = 0; round < 50000; ++round) {
    std::string bytes = round % 2 == 0 ? archivedObject : archivedDictionary;
    std::uniform_int_distribution<std::size_t> place(0, bytes.size() - 1);
    for (int changes = 1 + round % 8; changes > 0; --changes) {
      bytes[place(random)] = static_cast<char>(byte(random));
    }
    if (const auto combination = KeyCombination::fromPropertyList(PropertyList::Data{bytes})) {
      ++understood;
      ASSERT_EQ(KeyCombination::fromAccelerator(combination->acceleratorText()), combination);
    }
  }
  // Much of an archive says nothing about the record.
  EXPECT_GT(understood, 2500);
}

}  // namespace quennel::test
