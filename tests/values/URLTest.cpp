#include <gtest/gtest.h>

#include "platform/values/Text.h"
#include "platform/values/URL.h"

namespace quennel::test {

std::string pathOf(std::string_view string) {
  const auto url = URL::create(string);
  return url ? url->path() : "no URL";
}

std::optional<std::string> queryOf(std::string_view string) {
  const auto url = URL::create(string);
  return url ? url->query() : "no URL";
}

TEST(URL, PathIsDecodedAndLosesItsTrailingSlash) {
  const auto url = URL::create("quennel:///Users/me/My%20Files/?1");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->path(), "/Users/me/My Files");
  EXPECT_EQ(url->query(), "1");
}

TEST(URL, PathIsDecodedOnce) { EXPECT_EQ(pathOf("quennel:///a%2520b"), "/a%20b"); }

TEST(URL, PathLosesOneTrailingSlashUnlessItIsTheRoot) {
  EXPECT_EQ(pathOf("quennel:///"), "/");
  EXPECT_EQ(pathOf("quennel:///a/"), "/a");
  EXPECT_EQ(pathOf("quennel:///a//"), "/a/");
}

TEST(URL, PathThatIsNotUTF8KeepsItsBytes) {
  EXPECT_EQ(pathOf("quennel:///caf%E9/%FF?0"), "/caf\xE9/\xFF");
}

TEST(URL, PathMayHoldEscapedDelimiters) {
  EXPECT_EQ(pathOf("quennel:///100%25/a%3Fb%23c/?2"), "/100%/a?b#c");
}

TEST(URL, AbsentPathIsEmpty) {
  EXPECT_EQ(pathOf("quennel://host"), "");
  EXPECT_EQ(pathOf("quennel://?1"), "");
  EXPECT_EQ(pathOf(""), "");
}

TEST(URL, TextAfterASchemeWithoutASlashIsNoPath) {
  EXPECT_EQ(pathOf("quennel:Users/me?1"), "");
  EXPECT_EQ(pathOf("quennel:/Users/me?1"), "/Users/me");
}

TEST(URL, PathWithANulByteIsEmpty) { EXPECT_EQ(pathOf("quennel:///home/me%00/etc"), ""); }

TEST(URL, SchemeHostAndFragmentPlayNoPartInPathAndQuery) {
  const auto url = URL::create("x-y.z+1://me:pw@host:80/dir?3#part?4");
  ASSERT_TRUE(url);
  EXPECT_EQ(url->path(), "/dir");
  EXPECT_EQ(url->query(), "3");
}

TEST(URL, QueryIsRawFromTheFirstQuestionMark) {
  EXPECT_EQ(queryOf("quennel:///a?%31?2"), "%31?2");
  EXPECT_EQ(queryOf("quennel:///a?"), "");
  EXPECT_EQ(queryOf("quennel:///a?-1"), "-1");
  EXPECT_EQ(queryOf("quennel:///a?2#x"), "2");
}

TEST(URL, AbsentQueryIsNothingAndReadsAsIndexZero) {
  EXPECT_EQ(queryOf("quennel:///a"), std::nullopt);
  EXPECT_EQ(queryOf("quennel:///a#x?2"), std::nullopt);
  EXPECT_EQ(integerValue(queryOf("quennel:///a").value_or("")), 0);
}

TEST(URL, KeepsTheStringItWasMadeOf) {
  EXPECT_EQ(URL::create("quennel:///a%20b/?1")->string(), "quennel:///a%20b/?1");
}

TEST(URL, CharactersThatMustBeEscapedGiveNoURL) {
  for (const char* string :
       {"quennel:///a b", "quennel:///a\n", "quennel:///é", "quennel:///a\"b", "quennel:///a<b",
        "quennel:///a\\b", "quennel:///a[b", "quennel:///a^b", "quennel:///a`b", "quennel:///a{b",
        "quennel:///a|b", "a?b c", "a#b#c", "a#b c", "\x7F"}) {
    EXPECT_FALSE(URL::create(string)) << string;
  }
}

TEST(URL, UnfinishedEscapesGiveNoURL) {
  for (const char* string : {"quennel:///a%", "quennel:///a%2", "quennel:///a%2x", "a?%", "a#%",
                             "//%/", "quennel:///%%20"}) {
    EXPECT_FALSE(URL::create(string)) << string;
  }
}

TEST(URL, InvalidSchemesGiveNoURL) {
  for (const char* string : {":", ":a", "1a:b", "a_b:c", "%61:b", "-:x", "a%20b:c"}) {
    EXPECT_FALSE(URL::create(string)) << string;
  }
}

TEST(URL, RelativeReferencesAreURLs) {
  for (const char* string : {"", "a", "/a", "//host/a", "?q", "#f", "./a:b", "a/b:c", "a;b=c,d"}) {
    EXPECT_TRUE(URL::create(string)) << string;
  }
}

TEST(URL, HostsAndPortsOfTheGrammarAreAccepted) {
  for (const char* string :
       {"s://", "s://h:", "s://h:80", "s://u@h", "s://u:p@h:1", "s://127.0.0.1", "s://h%20x",
        "s://[::]", "s://[::1]:80/", "s://[1:2:3:4:5:6:7:8]", "s://[1::8]", "s://[::1.2.3.4]",
        "s://[1:2:3:4:5:6:1.2.3.4]", "s://[1:2:3:4:5:6:7::]", "s://[v1.a:b]", "s://@h", "s://:@"}) {
    EXPECT_TRUE(URL::create(string)) << string;
  }
}

TEST(URL, OtherHostsAndPortsGiveNoURL) {
  for (const char* string : {"s://h:x",
                             "s://h:1:2",
                             "s://u@v@h",
                             "s://[",
                             "s://[]",
                             "s://[::1",
                             "s://[::1]x",
                             "s://[::1]:x",
                             "s://[1:2:3:4:5:6:7]",
                             "s://[1:2:3:4:5:6:7:8:9]",
                             "s://[1::2::3]",
                             "s://[1:2:3:4:5:6:7::8]",
                             "s://[:::]",
                             "s://[12345::]",
                             "s://[::g]",
                             "s://[::256.1.1.1]",
                             "s://[::01.1.1.1]",
                             "s://[1.2.3.4::]",
                             "s://[:1:2:3:4:5:6:7]",
                             "s://[1:2:3:4:5:6:7:]",
                             "s://[::1.2.3]",
                             "s://[v.a]",
                             "s://[v1.]",
                             "s://[vg.a]",
                             "s://[v1a]",
                             "s://h[",
                             "s://h]"}) {
    EXPECT_FALSE(URL::create(string)) << string;
  }
}

TEST(EscapingInvalidCharacters, LeavesAURLAsItIs) {
  for (const char* string :
       {"quennel:///a%20b/?1#x", "s://u:p@[::1]:80/?a?b", "", "//h/a:b", "quennel:///%ff"}) {
    EXPECT_EQ(escapingInvalidCharacters(string), string);
  }
}

TEST(EscapingInvalidCharacters, EscapesWhatLaunchersLeaveRaw) {
  EXPECT_EQ(escapingInvalidCharacters("quennel:///My Files/é\n?1"),
            "quennel:///My%20Files/%C3%A9%0A?1");
  EXPECT_EQ(escapingInvalidCharacters("quennel:///\xFF[]?1"), "quennel:///%FF%5B%5D?1");
}

TEST(EscapingInvalidCharacters, EscapesAPercentSignThatStartsNoEscape) {
  EXPECT_EQ(escapingInvalidCharacters("quennel:///100% sure/%41%4/%?1"),
            "quennel:///100%25%20sure/%41%254/%25?1");
}

TEST(EscapingInvalidCharacters, StartsTheQueryAtTheFirstQuestionMark) {
  const auto url = URL::create(escapingInvalidCharacters("quennel:///a b?1 ?é#f#"));
  ASSERT_TRUE(url);
  EXPECT_EQ(url->path(), "/a b");
  EXPECT_EQ(url->query(), "1%20?%C3%A9");
}

TEST(EscapingInvalidCharacters, MakesAURLOfEveryText) {
  for (const char* string :
       {":", "1a://h/x", "::/?#", "s://[/a", "s://h:x/a", "s://a@b@c", "s://h ö:80/x", "%:%"}) {
    EXPECT_TRUE(URL::create(escapingInvalidCharacters(string))) << string;
  }
  EXPECT_EQ(escapingInvalidCharacters("1a://h/x:y?z"), "1a%3A//h/x%3Ay?z");
  EXPECT_EQ(escapingInvalidCharacters("s://h ö:80/x"), "s://h%20%C3%B6:80/x");
  EXPECT_EQ(escapingInvalidCharacters("s://[x:y/"), "s://%5Bx%3Ay/");
}

TEST(ResolvingRelativePath, PutsAFolderBeforeARelativePath) {
  EXPECT_EQ(resolvingRelativePath("Documents?2", "/home/me"), "/home/me/Documents?2");
  EXPECT_EQ(resolvingRelativePath("../a b?0#c", "/100% mine"), "/100%25%20mine/../a b?0#c");
}

TEST(ResolvingRelativePath, LeavesEverythingElseAsItIs) {
  for (const char* const reference :
       {"quennel:///d?0", "quennel:d?0", "//host/d", "/d?0", "?0", "#c", ""}) {
    EXPECT_EQ(resolvingRelativePath(reference, "/home/me"), reference);
  }
}

TEST(FileURL, EscapesWhatIsNoPlainPathCharacter) {
  EXPECT_EQ(fileURL("/home/me/a b.txt"), "file:///home/me/a%20b.txt");
  EXPECT_EQ(fileURL("/100%25?#"), "file:///100%2525%3F%23");
  EXPECT_EQ(fileURL("/\xFF"), "file:///%FF");
}

TEST(URLForDirectory, NamesTheDirectoryAndTheIndex) {
  EXPECT_EQ(urlForDirectory("quennel", "/Users/me/My Files", "1"),
            "quennel:///Users/me/My%20Files?1");
}

TEST(URLForDirectory, EveryByteOfAPathComesBack) {
  std::string path = "/";
  for (int byte = 1; byte < 256; ++byte) {
    path += static_cast<char>(byte);
  }
  const auto url = URL::create(urlForDirectory("quennel", path, "12"));
  ASSERT_TRUE(url);
  EXPECT_EQ(url->path(), path);
  EXPECT_EQ(url->query(), "12");
}

}  // namespace quennel::test
