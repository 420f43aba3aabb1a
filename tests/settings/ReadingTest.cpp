#include <sys/stat.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <limits>
#include <string>
#include <vector>

#include "platform/linux/settings/PropertyListFile.h"
#include "tests/settings/SettingsTest.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/Process.h"

namespace quennel::test {
namespace {

using namespace std::string_literals;

constexpr const char* pythonValue = R"(
value = {
  'templates': [{'title': 'Text <&> é', 'enabled': True, 'executable': False, 'shortcut': b'\x00\xff'}],
  'count': -5, 'large': 2**64 - 1, 'real': 0.1, 'empty': [], 'none': {}, '': 'empty key',
  'date': datetime.datetime(2001, 9, 9, 1, 46, 40)}
)";

const PropertyList expectedValue =
    Dictionary{{"templates", Array{Dictionary{{"title", "Text <&> é"},
                                              {"enabled", true},
                                              {"executable", false},
                                              {"shortcut", Data{std::string("\0\xFF", 2)}}}}},
               {"count", -5},
               {"large", std::numeric_limits<std::uint64_t>::max()},
               {"real", 0.1},
               {"empty", Array{}},
               {"none", Dictionary{}},
               {"", "empty key"},
               {"date", PropertyList::Date{std::chrono::seconds(1'000'000'000)}}};

/// A dictionary within dictionaries.
std::string nestedXML(int depth) {
  std::string text;
  for (int level = 0; level < depth; ++level) {
    text += "<dict><key>k</key>";
  }
  text += "<true/>";
  for (int level = 0; level < depth; ++level) {
    text += "</dict>";
  }
  return xmlFile(text);
}

/// A binary property list of these objects, the first of which is the top one; places are one byte.
std::string binaryFile(const std::vector<std::string>& objects) {
  std::string file = "bplist00";
  std::string offsets;
  for (const std::string& object : objects) {
    offsets += static_cast<char>(file.size());
    file += object;
  }
  const auto table = static_cast<char>(file.size());
  return file + offsets + std::string(6, '\0') + "\x01\x01" + std::string(7, '\0') +
         static_cast<char>(objects.size()) + std::string(15, '\0') + table;
}

class Reading : public SettingsTest {
 protected:
  PropertyList contents() const {
    const auto dictionary = dictionaryWithContentsOfFile(path);
    return dictionary ? PropertyList(*dictionary) : PropertyList("unreadable");
  }
  PropertyList contentsOf(std::string_view bytes) const {
    writeFile(path, bytes);
    return contents();
  }
};

const PropertyList unreadable = "unreadable";

}  // namespace

TEST_F(Reading, AMissingFileHasNoDictionary) { EXPECT_EQ(contents(), unreadable); }

TEST_F(Reading, AnXMLFileOfPythonIsRead) {
  askPython(std::string(pythonValue) + "plistlib.dump(value, open(path, 'wb'))", path);
  EXPECT_EQ(contents(), expectedValue);
}

TEST_F(Reading, ABinaryFileOfPythonIsRead) {
  askPython(
      std::string(pythonValue) + "plistlib.dump(value, open(path, 'wb'), fmt=plistlib.FMT_BINARY)",
      path);
  EXPECT_EQ(contents(), expectedValue);
}

TEST_F(Reading, FilesOfPlistutilAreRead) {
  if (!isInstalled("plistutil")) {
    GTEST_SKIP() << "no plistutil: package libplist-utils";
  }
  askPython(std::string(pythonValue) + "plistlib.dump(value, open(path, 'wb'))", path);
  const std::string binary = folder / "binary.plist";
  ASSERT_EQ(Process({"plistutil", "-f", "bin", "-i", path, "-o", binary}).wait(), 0);
  EXPECT_TRUE(readFile(binary).starts_with("bplist00"));
  EXPECT_EQ(contentsOf(readFile(binary)), expectedValue);
  ASSERT_EQ(Process({"plistutil", "-f", "xml", "-i", binary, "-o", path}).wait(), 0);
  EXPECT_EQ(contents(), expectedValue);
}

TEST_F(Reading, CommentsSectionsAndEntitiesAreUnderstood) {
  EXPECT_EQ(contentsOf(xmlFile("<!-- <dict> --><dict><?x <array>?>"
                               "<key>a&amp;<![CDATA[<b>]]>&#233;</key>"
                               "<string>x<!--</string>-->y&lt;</string></dict>")),
            PropertyList(Dictionary{{"a&<b>é", "xy<"}}));
}

TEST_F(Reading, AByteOrderMarkAndSingleQuotesAreUnderstood) {
  EXPECT_EQ(contentsOf("\xEF\xBB\xBF<?xml version='1.0'?><plist version='1.0'><dict>"
                       "<key>a</key><true/></dict></plist>"),
            PropertyList(Dictionary{{"a", true}}));
}

TEST_F(Reading, TheLastOfSeveralEntriesUnderOneKeyCounts) {
  EXPECT_EQ(contentsOf(xmlFile("<dict><key>a</key><true/><key>a</key><false/></dict>")),
            PropertyList(Dictionary{{"a", false}}));
}

TEST_F(Reading, WhatIsNoDictionaryIsUnreadable) {
  EXPECT_EQ(contentsOf(""), unreadable);
  EXPECT_EQ(contentsOf("garbage"), unreadable);
  EXPECT_EQ(contentsOf(std::string(1000, '\0')), unreadable);
  EXPECT_EQ(contentsOf("bplist00"), unreadable);
  EXPECT_EQ(contentsOf(xmlFile("")), unreadable);
  EXPECT_EQ(contentsOf(xmlFile("<array/>")), unreadable);
  EXPECT_EQ(contentsOf(xmlFile("<string>x</string>")), unreadable);
  EXPECT_EQ(contentsOf("<dict/>"), unreadable);
  EXPECT_EQ(contentsOf(xmlFile("<dict/><dict/>")), unreadable);
  EXPECT_EQ(contentsOf("{\"a\": 1}"), unreadable);
}

TEST_F(Reading, XMLThatIsNotWellFormedIsUnreadable) {
  for (const char* text :
       {"<dict><key>a</key></dict>", "<dict><true/></dict>", "<dict><key>a</key><true/>",
        "<dict><key>a</key><array></dict></array>", "<dict><key>a</key><true/></array>",
        "<dict><key>a</key><string>&bogus;</string></dict>", "<dict><!-- </dict>", "</dict>",
        "<dict a='></dict>", "<dict><key>a</key><string>\xFF</string></dict>",
        "<dict><![CDATA[ <array> ]]></dict>", "<dict><></dict>", "<dict><key>a</key><true/",
        "<!["}) {
    EXPECT_EQ(contentsOf(xmlFile(text)), unreadable) << text;
  }
}

TEST_F(Reading, ADocumentTypeWithDeclarationsOfItsOwnIsUnreadable) {
  EXPECT_EQ(contentsOf("<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><dict/></plist>"), unreadable);
  EXPECT_EQ(contentsOf("<!DOCTYPE plist \"x>y\"><plist><dict/></plist>"), unreadable);
}

TEST_F(Reading, NoTruncatedXMLFileIsReadable) {
  askPython(std::string(pythonValue) + "plistlib.dump(value, open(path, 'wb'))", path);
  const std::string whole = readFile(path);
  const std::size_t end = whole.rfind("</plist>") + 8;
  for (std::size_t length = 0; length < end; ++length) {
    ASSERT_FALSE(PropertyListDocument::create(whole.substr(0, length))) << length;
  }
}

TEST_F(Reading, NoTruncatedBinaryFileIsReadable) {
  askPython(
      std::string(pythonValue) + "plistlib.dump(value, open(path, 'wb'), fmt=plistlib.FMT_BINARY)",
      path);
  const std::string whole = readFile(path);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    ASSERT_FALSE(PropertyListDocument::create(whole.substr(0, length))) << length;
  }
}

TEST_F(Reading, ADamagedFileNeverCrashes) {
  askPython(
      std::string(pythonValue) + "plistlib.dump(value, open(path, 'wb'), fmt=plistlib.FMT_BINARY)",
      path);
  const std::string whole = readFile(path);
  int readable = 0;
  for (std::size_t place = 0; place < whole.size(); ++place) {
    for (const char byte : {'\x00', '\x7F', '\xFF', '\xD3', '\xA1'}) {
      std::string damaged = whole;
      damaged[place] = byte;
      readable += PropertyListDocument::create(damaged) ? 1 : 0;
    }
  }
  EXPECT_GT(readable, 0);
}

TEST_F(Reading, DepthIsLimited) {
  EXPECT_NE(contentsOf(nestedXML(100)), unreadable);
  EXPECT_EQ(contentsOf(nestedXML(200)), unreadable);
  EXPECT_EQ(contentsOf(nestedXML(200'000)), unreadable);
}

TEST_F(Reading, DepthCannotBeHiddenFromTheCheck) {
  for (const std::string& closing : std::vector<std::string>{
           "<x a=\"</array>\"/>", "<!-- </array> -->", "<?x </array>?>", "<!x '></array>'>"}) {
    std::string text;
    for (int level = 0; level < 1000; ++level) {
      text += "<array>" + closing;
    }
    EXPECT_EQ(contentsOf(xmlFile("<dict><key>a</key>" + text + "<true/></dict>")), unreadable)
        << closing;
  }
}

TEST_F(Reading, SizeIsLimited) {
  EXPECT_EQ(contentsOf(xmlFile("<dict/>" + std::string(17 << 20, ' '))), unreadable);
  EXPECT_NE(contentsOf(xmlFile("<dict/>" + std::string(1 << 20, ' '))), unreadable);
}

TEST_F(Reading, AMillionValuesAreTooMany) {
  std::string values;
  for (int count = 0; count < 1'000'000; ++count) {
    values += "<true/>";
  }
  EXPECT_EQ(contentsOf(xmlFile("<dict><key>a</key><array>" + values + "</array></dict>")),
            unreadable);
}

// Each list holds the next one ten times: a thousand bytes that stand for 10^40 values.
TEST_F(Reading, ABinaryFileThatUnfoldsWithoutEndIsUnreadable) {
  askPython(R"(
value = {'a': 1}
shared = []
for level in range(40):
  shared = [shared] * 10
value['list'] = shared
import struct
objects = [b'\xd1\x01\x02', b'\x51a'] + [b'\xaa' + bytes([3 + i]) * 10 for i in range(40)] + [b'\xa0']
data = b'bplist00'
offsets = []
for item in objects:
  offsets.append(len(data))
  data += item
table = len(data)
data += b''.join(struct.pack('>H', offset) for offset in offsets)
data += struct.pack('>6xBBQQQ', 2, 1, len(objects), 0, table)
open(path, 'wb').write(data)
)",
            path);
  EXPECT_LT(readFile(path).size(), 1000U);
  EXPECT_EQ(contents(), unreadable);
}

TEST_F(Reading, ABinaryFileWhoseObjectHoldsItselfIsUnreadable) {
  askPython(R"(
import struct
data = b'bplist00' + b'\xd1\x01\x02' + b'\x51a' + b'\xa1\x02'
table = len(data)
data += bytes([8, 11, 13]) + struct.pack('>6xBBQQQ', 1, 1, 3, 0, table)
open(path, 'wb').write(data)
)",
            path);
  EXPECT_EQ(contents(), unreadable);
}

TEST_F(Reading, ABinaryFileWithATextThatIsNoneIsUnreadable) {
  const auto withText = [&](const std::string& marker, const std::string& bytes) {
    return contentsOf(binaryFile({"\xD1\x01\x02", marker + bytes, "\x09"}));
  };
  EXPECT_EQ(withText("\x52", "ab"), PropertyList(Dictionary{{"ab", true}}));
  EXPECT_EQ(withText("\x52", "a\0"s), unreadable);
  EXPECT_EQ(withText("\x52", "a\x80"), unreadable);
  EXPECT_EQ(withText("\x62", "\x04\x16\xD8\x3D"), unreadable);
  EXPECT_EQ(withText("\x62", "\x04\x16\0\0"s), unreadable);
  EXPECT_EQ(withText("\x62", "\xDE\x00\xD8\x3D"s), unreadable);
  EXPECT_EQ(withText("\x62", "\xD8\x3D\xDE\x00"s), PropertyList(Dictionary{{"😀", true}}));
}

TEST_F(Reading, ABinaryFileWithANullIsReadButForTheNull) {
  EXPECT_EQ(contentsOf(binaryFile({"\xD2\x01\x02\x03\x04",
                                   "\x51"
                                   "a",
                                   "\x51"
                                   "b",
                                   "\0"s, "\xA2\x03\x05", "\x09"})),
            PropertyList(Dictionary{{"b", Array{true}}}));
}

TEST_F(Reading, TheSameObjectMayBeReferredToManyTimes) {
  EXPECT_EQ(contentsOf(binaryFile({"\xD1\x01\x02",
                                   "\x51"
                                   "a",
                                   "\xA3\x03\x03\x03", "\xA1\x04", "\x10\x07"})),
            PropertyList(Dictionary{{"a", Array{Array{7}, Array{7}, Array{7}}}}));
}

TEST_F(Reading, NumbersThatDoNotFitAreHeldAtTheLimits) {
  constexpr auto greatest = std::numeric_limits<std::uint64_t>::max();
  constexpr auto least = std::numeric_limits<std::int64_t>::min();
  const auto integer = [&](const std::string& digits) {
    return *contentsOf(xmlFile("<dict><key>a</key><integer>" + digits + "</integer></dict>"))
                .objectForKey("a");
  };
  EXPECT_EQ(integer("170141183460469231731687303715884105727"), PropertyList(greatest));
  EXPECT_EQ(integer("-170141183460469231731687303715884105727"), PropertyList(least));
  EXPECT_EQ(integer("-9223372036854775808"), PropertyList(least));
  EXPECT_EQ(integer(" +0x1F "), PropertyList(31));
  const auto binary = [&](const std::string& bytes) {
    return *contentsOf(binaryFile({"\xD1\x01\x02",
                                   "\x51"
                                   "a",
                                   "\x14" + bytes}))
                .objectForKey("a");
  };
  EXPECT_EQ(binary(std::string(8, '\0') + std::string(8, '\xFF')), PropertyList(greatest));
  EXPECT_EQ(binary("\x01" + std::string(15, '\0')), PropertyList(greatest));
  EXPECT_EQ(binary(std::string(15, '\xFF') + "\xFB"), PropertyList(-5));
  EXPECT_EQ(binary("\x80" + std::string(15, '\0')), PropertyList(least));
}

TEST_F(Reading, XMLElementsWithTextThatIsNotTheirsAreUnreadable) {
  for (const char* element :
       {"<integer>12x</integer>", "<integer>-</integer>", "<real>x</real>", "<real>1,5</real>",
        "<date>yesterday</date>", "<date>2026-02-30T00:00:00Z</date>", "<data>*</data>",
        "<true>no</true>", "<string>a<b/>c</string>", "<string>&#1;</string>",
        "<string>&#xD800;</string>", "<name>x</name>", "</string>"}) {
    EXPECT_EQ(contentsOf(xmlFile("<dict><key>a</key>" + std::string(element) + "</dict>")),
              unreadable)
        << element;
  }
}

TEST_F(Reading, TenThousandTemplatesWithShortcutsAreRead) {
  const PropertyList shortcut = Dictionary{{"characters", "N"},
                                           {"charactersIgnoringModifiers", "n"},
                                           {"keyCode", 45},
                                           {"modifierFlags", 1'179'648}};
  Array templates;
  for (int number = 0; number < 10'000; ++number) {
    templates.push_back(Dictionary{{"title", "Letter " + std::to_string(number)},
                                   {"prefix", "Letter"},
                                   {"suffix", "odt"},
                                   {"filePath", "/home/me/Templates/Letter.odt"},
                                   {"executable", false},
                                   {"enabled", true},
                                   {"shortcut", shortcut}});
  }
  ASSERT_TRUE(store(templates, "fileTemplates"));
  EXPECT_EQ(contents(), PropertyList(Dictionary{{"fileTemplates", templates}}));
  askPython(
      "value = plistlib.load(open(path, 'rb'))\n"
      "plistlib.dump(value, open(path, 'wb'), fmt=plistlib.FMT_BINARY)",
      path);
  EXPECT_EQ(contents(), PropertyList(Dictionary{{"fileTemplates", templates}}));
}

TEST_F(Reading, AFolderAndAPipeAreUnreadableAtOnce) {
  ASSERT_EQ(mkdir(path.c_str(), 0700), 0);
  EXPECT_EQ(contents(), unreadable);
  ASSERT_EQ(rmdir(path.c_str()), 0);
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(contents(), unreadable);
}

TEST_F(Reading, NumbersHaveAPointInEveryLocale) {
  if (!isInstalled("localedef") ||
      Process({"localedef", "-i", "de_DE", "-f", "UTF-8", folder / "de_DE.UTF-8"}).wait() > 1) {
    GTEST_SKIP() << "no German locale can be made: package locales";
  }
  writeFile(path, xmlFile("<dict><key>real</key><real>0.5</real></dict>"));
  const std::string answer = inChildProcess([&] {
    setenv("LOCPATH", folder.path().c_str(), 1);
    if (!std::setlocale(LC_ALL, "de_DE.UTF-8")) {
      return std::string("no locale");
    }
    defaults.setObject(0.25, "written");
    return defaults.synchronize() ? contents().description() : std::string("not stored");
  });
  EXPECT_EQ(answer, "{real: 0.5, written: 0.25}");
  EXPECT_NE(readFile(path).find("<real>0.25</real>"), std::string::npos);
}

TEST_F(Reading, AChangeOfTheFileShowsAtTheNextRead) {
  writeFile(path, xmlFile("<dict><key>a</key><integer>1</integer></dict>"));
  EXPECT_EQ(defaults.objectForKey("a"), PropertyList(1));
  for (int value = 2; value < 200; ++value) {
    // Rewritten in place, with the same size and often within one tick of the clock.
    writeFile(path, xmlFile("<dict><key>a</key><integer>" + std::to_string(value % 10) +
                            "</integer></dict>"));
    ASSERT_EQ(defaults.objectForKey("a"), PropertyList(value % 10));
  }
}

TEST_F(Reading, WhileTheFileIsGarbageItsLastReadableValuesHold) {
  defaults.registerDefaults({{"a", "default"}});
  const std::string good = xmlFile("<dict><key>a</key><string>stored</string></dict>");
  writeFile(path, good);
  EXPECT_EQ(defaults.objectForKey("a"), PropertyList("stored"));
  for (const std::string& broken : {std::string("garbage"), good.substr(0, good.size() / 2),
                                    std::string(), xmlFile("<array/>")}) {
    writeFile(path, broken);
    EXPECT_EQ(defaults.objectForKey("a"), PropertyList("stored")) << broken;
  }
  writeFile(path, xmlFile("<dict><key>a</key><string>repaired</string></dict>"));
  EXPECT_EQ(defaults.objectForKey("a"), PropertyList("repaired"));
  ASSERT_EQ(unlink(path.c_str()), 0);
  EXPECT_EQ(defaults.objectForKey("a"), PropertyList("default"));
  writeFile(path, "garbage");
  EXPECT_EQ(defaults.objectForKey("a"), PropertyList("default"));
}

TEST_F(Reading, GarbageFromTheStartReadsAsEmptyUntilItIsRepaired) {
  defaults.registerDefaults({{"a", "default"}});
  writeFile(path, "garbage");
  EXPECT_EQ(defaults.objectForKey("a"), PropertyList("default"));
  writeFile(path, xmlFile("<dict><key>a</key><string>repaired</string></dict>"));
  EXPECT_EQ(defaults.objectForKey("a"), PropertyList("repaired"));
}

TEST_F(Reading, TheStampOfAFileThatHasJustChangedIsNotTrusted) {
  writeFile(path, xmlFile("<dict/>"));
  EXPECT_FALSE(PropertyListFile::read(path).isStampSettled);
  FileStamp old;
  old.changeTime = 1'000'000'000;
  EXPECT_TRUE(old.isSettled());
}

TEST(SettingsPath, IsInTheConfigurationFolder) {
  const auto pathWith = [](const char* config, const char* home) {
    return inChildProcess([&] {
      setenv("XDG_CONFIG_HOME", config, 1);
      setenv("HOME", home, 1);
      return PropertyListUserDefaults::pathForDomain("some.domain");
    });
  };
  EXPECT_EQ(pathWith("/config", "/home/me"), "/config/some.domain.plist");
  EXPECT_EQ(pathWith("", "/home/me"), "/home/me/.config/some.domain.plist");
  EXPECT_EQ(pathWith("relative", "/home/me"), "/home/me/.config/some.domain.plist");
  EXPECT_TRUE(pathWith("", "").ends_with("/.config/some.domain.plist"));
}

}  // namespace quennel::test
