#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <limits>
#include <set>

#include "tests/settings/SettingsTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Sentence.h"

namespace quennel::test {
namespace {

class Writing : public SettingsTest {
 protected:
  /// The names in the folder, the lock file left out.
  std::set<std::string> names() const {
    std::set<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
      found.insert(entry.path().filename());
    }
    found.erase("domain.plist.lock");
    return found;
  }
};

unsigned modeOf(const std::string& path) {
  struct stat status {};
  return stat(path.c_str(), &status) == 0 ? status.st_mode & 07777U : 0;
}

// Comments, an order, and values that would not survive being parsed and written.
const std::string handWritten = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<!-- mine -->
<plist version="1.0">
  <dict>
    <key>z</key> <integer>1</integer> <!-- last letter first -->
    <key>past</key> <date>0001-01-01T00:00:00Z</date>
    <key>huge</key> <integer>170141183460469231731687303715884105727</integer>
    <key>real</key> <real>1.50</real>
    <key>a &#38; b</key> <string><![CDATA[<x>]]></string>
    <key>reference</key> <dict><key>CF$UID</key><integer>3</integer></dict>
  </dict>
</plist>
)";

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  return text.replace(text.find(from), from.size(), to);
}

}  // namespace

TEST_F(Writing, ANewFileIsXMLForItsOwnerAlone) {
  ASSERT_TRUE(store("value", "key"));
  EXPECT_EQ(readFile(path), xmlFile("<dict>\n\t<key>key</key>\n\t<string>value</string>\n</dict>"));
  EXPECT_EQ(modeOf(path), 0600U);
  EXPECT_EQ(names(), std::set<std::string>{"domain.plist"});
}

TEST_F(Writing, MissingFoldersAreMadeForTheirOwnerAlone) {
  PropertyListUserDefaults deep(folder / "a/b/domain.plist");
  deep.setObject(1, "key");
  ASSERT_TRUE(deep.synchronize());
  EXPECT_EQ(modeOf(folder / "a"), 0700U);
  EXPECT_EQ(deep.objectForKey("key"), PropertyList(1));
}

TEST_F(Writing, PythonReadsWhatIsWritten) {
  ASSERT_TRUE(store(Array{Dictionary{{"title", "é <&>"}, {"enabled", true}, {"n", -1}}}, "list"));
  ASSERT_TRUE(store(Data{std::string("\0\xFF", 2)}, "data"));
  ASSERT_TRUE(store(0.1, "real"));
  EXPECT_EQ(askPython("print(plistlib.load(open(path, 'rb')))", path),
            "{'list': [{'enabled': True, 'n': -1, 'title': 'é <&>'}], "
            "'data': b'\\x00\\xff', 'real': 0.1}\n");
}

TEST_F(Writing, ReplacingAnEntryLeavesEveryOtherByte) {
  writeFile(path, handWritten);
  ASSERT_TRUE(store(2, "z"));
  EXPECT_EQ(readFile(path), replaced(handWritten, "<key>z</key> <integer>1</integer>",
                                     "<key>z</key>\n\t<integer>2</integer>"));
}

TEST_F(Writing, AddingAnEntryLeavesEveryOtherByte) {
  writeFile(path, handWritten);
  ASSERT_TRUE(store(true, "new"));
  EXPECT_EQ(readFile(path), replaced(handWritten, "</dict>\n  </dict>",
                                     "</dict>\n\t<key>new</key>\n\t<true/>\n  </dict>"));
}

TEST_F(Writing, RemovingAnEntryLeavesEveryOtherByte) {
  writeFile(path, handWritten);
  defaults.removeObjectForKey("a & b");
  ASSERT_TRUE(defaults.synchronize());
  EXPECT_EQ(
      readFile(path),
      replaced(handWritten, "\n    <key>a &#38; b</key> <string><![CDATA[<x>]]></string>", ""));
}

TEST_F(Writing, SettingAKeyThatIsThereTwiceLeavesOneEntry) {
  writeFile(path,
            xmlFile("<dict><key>a</key><true/><key>b</key><true/><key>a</key><true/></dict>"));
  ASSERT_TRUE(store(1, "a"));
  EXPECT_EQ(readFile(path), xmlFile("<dict><key>b</key><true/><key>a</key>\n"
                                    "\t<integer>1</integer></dict>"));
  writeFile(path, xmlFile("<dict><key>a</key><true/><key>a</key><true/></dict>"));
  defaults.removeObjectForKey("a");
  ASSERT_TRUE(defaults.synchronize());
  EXPECT_EQ(readFile(path), xmlFile("<dict></dict>"));
}

TEST_F(Writing, StoringWhatIsStoredAlreadyWritesNothing) {
  ASSERT_TRUE(store("value", "key"));
  struct stat before {};
  ASSERT_EQ(stat(path.c_str(), &before), 0);
  ASSERT_TRUE(store("value", "key"));
  struct stat after {};
  ASSERT_EQ(stat(path.c_str(), &after), 0);
  EXPECT_EQ(before.st_ino, after.st_ino);
}

TEST_F(Writing, RemovingFromAMissingFileMakesNone) {
  defaults.removeObjectForKey("key");
  ASSERT_TRUE(defaults.synchronize());
  EXPECT_TRUE(names().empty());
}

TEST_F(Writing, ABinaryFileStaysBinaryAndKeepsWhatIsNotUnderstood) {
  askPython(R"(
plistlib.dump({'uid': plistlib.UID(7), 'date': datetime.datetime(1, 1, 1), 'real': 0.1,
  'data': b'\x00', 'large': 2**64 - 1, 'list': [plistlib.UID(1), datetime.datetime(2020, 1, 1)]},
  open(path, 'wb'), fmt=plistlib.FMT_BINARY))",
            path);
  ASSERT_TRUE(store("value", "key"));
  EXPECT_TRUE(readFile(path).starts_with("bplist00"));
  EXPECT_EQ(askPython("value = plistlib.load(open(path, 'rb'))\n"
                      "print(*(f'{key}={value[key]}' for key in sorted(value)), sep='\\n')",
                      path),
            "data=b'\\x00'\ndate=0001-01-01 00:00:00\nkey=value\nlarge=18446744073709551615\n"
            "list=[UID(1), datetime.datetime(2020, 1, 1, 0, 0)]\nreal=0.1\nuid=UID(7)\n");
  defaults.removeObjectForKey("uid");
  ASSERT_TRUE(defaults.synchronize());
  EXPECT_EQ(askPython("print('uid' in plistlib.load(open(path, 'rb')))", path), "False\n");
}

TEST_F(Writing, ABinaryFileKeepsEveryByteOfWhatIsNotChanged) {
  // A null, a real of four bytes and a date between two microseconds.
  writeFile(path, std::string("bplist00\xD3\1\2\3\4\5\6\x51n\x51r\x51"
                              "d\0\x22\x3F\x80\0\0\x33",
                              28) +
                      std::string("\x3F\xB9\x99\x99\x99\x99\x99\x9B", 8) +
                      std::string("\x08\x0F\x11\x13\x15\x16\x1B\0\0\0\0\0\0\1\1", 15) +
                      std::string(7, '\0') + "\x07" + std::string(15, '\0') + "\x24");
  ASSERT_TRUE(store(1, "key"));
  const std::string written = readFile(path);
  EXPECT_NE(written.find(std::string("\x22\x3F\x80\0\0", 5)), std::string::npos);
  EXPECT_NE(written.find("\x33\x3F\xB9\x99\x99\x99\x99\x99\x9B"), std::string::npos);
  EXPECT_NE(written.find("\x51n"), std::string::npos);
  EXPECT_EQ(defaults.objectForKey("r"), PropertyList(1.0));
}

TEST_F(Writing, AFileThatIsChangedOftenDoesNotGrow) {
  askPython("plistlib.dump({'list': list(range(100))}, open(path, 'wb'), fmt=plistlib.FMT_BINARY)",
            path);
  ASSERT_TRUE(store(0, "key"));
  const std::size_t size = readFile(path).size();
  for (int value = 1; value < 10; ++value) {
    ASSERT_TRUE(store(value, "key"));
  }
  EXPECT_LE(readFile(path).size(), size + 8);
}

TEST_F(Writing, LongAndOddValuesSurviveInBothForms) {
  const PropertyList value = Array{std::string(1000, 'x'),
                                   Data{std::string(70'000, '\xFE')},
                                   "ä😀 <&>\n\t\"",
                                   Array{},
                                   Dictionary{},
                                   Dictionary{{"<k&>", -1}},
                                   std::numeric_limits<std::int64_t>::min(),
                                   std::numeric_limits<std::uint64_t>::max(),
                                   255,
                                   65'536,
                                   -0.1,
                                   1e300,
                                   false,
                                   PropertyList::Date(std::chrono::seconds(1'000'000'000))};
  for (const char* form : {"FMT_XML", "FMT_BINARY"}) {
    askPython(std::string("plistlib.dump({}, open(path, 'wb'), fmt=plistlib.") + form + ")", path);
    ASSERT_TRUE(store(value, "key"));
    EXPECT_EQ(PropertyListUserDefaults(path).objectForKey("key"), value) << form;
    EXPECT_EQ(askPython("value = plistlib.load(open(path, 'rb'))['key']\n"
                        "print(len(value), len(value[0]), value[1] == b'\\xfe' * 70000, value[2:])",
                        path),
              "14 1000 True ['ä😀 <&>\\n\\t\"', [], {}, {'<k&>': -1}, -9223372036854775808, "
              "18446744073709551615, 255, 65536, -0.1, 1e+300, False, "
              "datetime.datetime(2001, 9, 9, 1, 46, 40)]\n")
        << form;
  }
}

TEST_F(Writing, ABinaryFileKeepsAnyDateToTheMicrosecond) {
  using namespace std::chrono;
  askPython("plistlib.dump({}, open(path, 'wb'), fmt=plistlib.FMT_BINARY)", path);
  for (const auto day : {1800y / January / 1, 1999y / December / 31, 2248y / October / 16}) {
    const PropertyList date = PropertyList::Date(sys_days(day) + microseconds(1'234'567));
    ASSERT_TRUE(store(date, "date"));
    EXPECT_EQ(defaults.objectForKey("date"), date);
  }
}

TEST_F(Writing, AChangedListKeepsTheReferencesInIt) {
  askPython(
      "plistlib.dump({'list': [{'shortcut': plistlib.UID(7)}]}, open(path, 'wb'), "
      "fmt=plistlib.FMT_BINARY)",
      path);
  ASSERT_TRUE(defaults.updateObjectForKey("list", [](std::optional<PropertyList> list) {
    Array array = *list->array();
    array.emplace_back("new");
    return PropertyList(array);
  }));
  EXPECT_EQ(askPython("print(plistlib.load(open(path, 'rb')))", path),
            "{'list': [{'shortcut': UID(7)}, 'new']}\n");
}

TEST_F(Writing, TheModeOfTheFileIsKept) {
  writeFile(path, xmlFile("<dict/>"));
  ASSERT_EQ(chmod(path.c_str(), 0640), 0);
  ASSERT_TRUE(store(1, "key"));
  EXPECT_EQ(modeOf(path), 0640U);
  EXPECT_EQ(defaults.objectForKey("key"), PropertyList(1));
}

TEST_F(Writing, ASymbolicLinkStaysAndItsTargetIsReplaced) {
  ASSERT_EQ(mkdir((folder / "dotfiles").c_str(), 0700), 0);
  writeFile(folder / "dotfiles/q.plist", xmlFile("<dict/>"));
  ASSERT_EQ(symlink("dotfiles/q.plist", (folder / "step").c_str()), 0);
  ASSERT_EQ(symlink((folder / "step").c_str(), path.c_str()), 0);
  ASSERT_TRUE(store(1, "key"));
  EXPECT_TRUE(std::filesystem::is_symlink(path));
  EXPECT_TRUE(std::filesystem::is_symlink(folder / "step"));
  EXPECT_NE(readFile(folder / "dotfiles/q.plist").find("<key>key</key>"), std::string::npos);
}

TEST_F(Writing, ADanglingSymbolicLinkGetsItsTarget) {
  ASSERT_EQ(symlink("target.plist", path.c_str()), 0);
  ASSERT_TRUE(store(1, "key"));
  EXPECT_TRUE(std::filesystem::is_symlink(path));
  EXPECT_EQ(defaults.objectForKey("key"), PropertyList(1));
}

TEST_F(Writing, LinksInACircleAreAnError) {
  ASSERT_EQ(symlink("domain.plist", path.c_str()), 0);
  Error error;
  EXPECT_FALSE(store(1, "key", &error));
  EXPECT_FALSE(sentenceOf(error).empty());
}

TEST_F(Writing, AFileThatCannotBeParsedIsNeverOverwritten) {
  for (const std::string& contents : {std::string("garbage"), std::string(), xmlFile("<array/>"),
                                      xmlFile("<dict>"), std::string("bplist00")}) {
    writeFile(path, contents);
    Error error;
    EXPECT_FALSE(store(1, "key", &error));
    EXPECT_NE(sentenceOf(error).find(path), std::string::npos);
    EXPECT_NE(sentenceOf(error).find("not a property list"), std::string::npos);
    EXPECT_FALSE(defaults.updateObjectForKey("key", [](auto) { return PropertyList(1); }));
    EXPECT_EQ(readFile(path), contents);
  }
}

TEST_F(Writing, WhatCouldNotBeStoredIsStoredOnceTheFileIsRepaired) {
  writeFile(path, "garbage");
  EXPECT_FALSE(store("kept", "key"));
  EXPECT_EQ(defaults.objectForKey("key"), PropertyList("kept"));
  writeFile(path, xmlFile("<dict/>"));
  ASSERT_TRUE(defaults.synchronize());
  EXPECT_NE(readFile(path).find("kept"), std::string::npos);
}

TEST_F(Writing, TextThatAPropertyListCannotHoldIsAnErrorAndChangesNothing) {
  ASSERT_TRUE(store("old", "key"));
  const std::string before = readFile(path);
  for (const std::string& text : {std::string("\xFF"), std::string("a\0b", 3), std::string("\x01"),
                                  std::string("a\rb"), std::string("\xEF\xBF\xBF")}) {
    Error error;
    EXPECT_FALSE(store(Array{text}, "key", &error)) << PropertyList(text).description();
    EXPECT_FALSE(sentenceOf(error).empty());
    EXPECT_EQ(readFile(path), before);
    defaults.setObject("old", "key");
  }
  EXPECT_FALSE(store(1, "\xFF"));
}

TEST_F(Writing, AFolderThatCannotBeWrittenIsAnError) {
  writeFile(path, xmlFile("<dict/>"));
  ASSERT_EQ(chmod(path.c_str(), 0644), 0);
  ASSERT_EQ(chmod(folder.path().c_str(), 0555), 0);
  const std::string answer = inChildProcess([&]() -> std::string {
    // Root may write everywhere.
    constexpr uid_t nobody = 65534;
    if (geteuid() == 0 && setresuid(nobody, nobody, nobody) != 0) {
      return "cannot become somebody else";
    }
    Error error;
    const bool isStored = store(1, "key", &error);
    return isStored ? "stored" : sentenceOf(error);
  });
  EXPECT_EQ(answer, "“" + path + ".lock” could not be written: you are not allowed to.");
  EXPECT_EQ(readFile(path), xmlFile("<dict/>"));
}

TEST_F(Writing, AFileInPlaceOfTheFolderIsAnError) {
  writeFile(path, xmlFile("<dict/>"));
  PropertyListUserDefaults below(path + "/domain.plist");
  below.setObject(1, "key");
  Error error;
  EXPECT_FALSE(below.synchronize(&error));
  EXPECT_EQ(error.code, ENOTDIR);
}

}  // namespace quennel::test
