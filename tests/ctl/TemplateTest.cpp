#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/ctl/QuennelctlTest.h"
#include "tests/support/ChildProcess.h"

namespace quennel::test {
namespace {

using Array = PropertyList::Array;
using Dictionary = PropertyList::Dictionary;

class TemplateTest : public QuennelctlTest {
 protected:
  /// Stores templates with these titles.
  void store(const Words& wanted) {
    Array records;
    for (const std::string& title : wanted) {
      records.push_back(Dictionary{{"title", title}, {"prefix", title}, {"unknown", 0.5}});
    }
    settings.setObject(records, "fileTemplates");
    ASSERT_TRUE(settings.synchronize());
  }
};

}  // namespace

TEST_F(TemplateTest, AddTakesWhatIsNotSaidFromTheFile) {
  const std::string file = makeFile("report.tar.gz");
  const Answer answer = run({"template", "add", file});
  EXPECT_EQ(answer.status, 0) << answer.errors;
  EXPECT_EQ(answer.output, "Added template 0: report.tar (report.tar.gz)\n");
  EXPECT_EQ(templates(), (Array{Dictionary{{"title", "report.tar"},
                                           {"prefix", "report.tar"},
                                           {"suffix", "gz"},
                                           {"filePath", file},
                                           {"executable", false},
                                           {"enabled", true}}}));
}

TEST_F(TemplateTest, AddTakesEveryOption) {
  const std::string file = makeFile("a.md");
  const Answer answer = run({"template", "add", "--file", file, "--title=Meeting notes", "--prefix",
                             "notes", "--suffix", ".txt", "--executable", "--disabled"});
  EXPECT_EQ(answer.status, 0) << answer.errors;
  EXPECT_EQ(templates(), (Array{Dictionary{{"title", "Meeting notes"},
                                           {"prefix", "notes"},
                                           {"suffix", "txt"},
                                           {"filePath", file},
                                           {"executable", true},
                                           {"enabled", false}}}));
}

TEST_F(TemplateTest, AddOfAProgramMakesPrograms) {
  const std::string file = makeFile("tool.sh");
  ASSERT_EQ(chmod(file.c_str(), 0755), 0);
  EXPECT_EQ(run({"template", "add", file}).status, 0);
  EXPECT_EQ(run({"template", "add", file, "--no-executable"}).status, 0);
  EXPECT_TRUE(templates().at(0).objectForKey("executable")->boolValue());
  EXPECT_FALSE(templates().at(1).objectForKey("executable")->boolValue());
}

TEST_F(TemplateTest, AddOfAFolderKeepsItsWholeNameWhateverDotsAreInIt) {
  ASSERT_TRUE(std::filesystem::create_directory(folder / "Project v1.2"));
  EXPECT_EQ(run({"template", "add", folder / "Project v1.2/"}).output,
            "Added template 0: Project v1.2 (Project v1.2)\n");
  EXPECT_EQ(templates().at(0).objectForKey("filePath")->description(), folder / "Project v1.2");
  EXPECT_FALSE(templates().at(0).objectForKey("executable")->boolValue());
}

TEST_F(TemplateTest, AddMakesARelativePathAbsolute) {
  makeFile("a.md");
  ASSERT_TRUE(std::filesystem::create_directory(folder / "sub"));
  const std::string answer = inChildProcess([&]() -> std::string {
    if (chdir((folder / "sub").c_str()) != 0) {
      return "no such folder";
    }
    const Answer added = run({"template", "add", ".././sub/..//a.md"});
    return added.errors + templates().at(0).objectForKey("filePath")->description();
  });
  EXPECT_EQ(answer, std::filesystem::canonical(folder / "a.md"));
}

TEST_F(TemplateTest, AddGoesUpFromWhereALinkLeads) {
  ASSERT_TRUE(std::filesystem::create_directories(folder / "real/inner"));
  makeFile("real/a.md");
  ASSERT_EQ(symlink("real/inner", (folder / "link").c_str()), 0);
  EXPECT_EQ(run({"template", "add", folder / "link/../a.md"}).status, 0);
  EXPECT_EQ(templates().at(0).objectForKey("filePath")->description(),
            std::filesystem::canonical(folder / "real/a.md"));
}

TEST_F(TemplateTest, AddKeepsTheUsersOwnNameOfALink) {
  makeFile("real.md");
  ASSERT_EQ(symlink("real.md", (folder / "link.md").c_str()), 0);
  EXPECT_EQ(run({"template", "add", folder / "link.md"}).status, 0);
  EXPECT_EQ(templates().at(0).objectForKey("filePath")->description(), folder / "link.md");
}

TEST_F(TemplateTest, AddRefusesWhatCannotBeCopied) {
  const auto refusal = [&](const std::string& path) {
    const Answer answer = run({"template", "add", path});
    EXPECT_EQ(answer.status, 1);
    return answer.errors;
  };
  EXPECT_EQ(refusal(folder / "missing"),
            "quennelctl: “" + folder / "missing” could not be read: it does not exist.\n");
  EXPECT_EQ(refusal(""), "quennelctl: No file is given.\n");
  EXPECT_EQ(refusal("/dev/null"), "quennelctl: /dev/null is neither a file nor a folder\n");
  ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_EQ(refusal(folder / "pipe"),
            "quennelctl: " + folder / "pipe" + " is neither a file nor a folder\n");
  EXPECT_TRUE(templates().empty());
}

TEST_F(TemplateTest, AddRefusesAFileThatTheUserCannotRead) {
  const std::string file = makeFile("secret");
  ASSERT_EQ(chmod(file.c_str(), 0000), 0);
  ASSERT_EQ(chmod(folder.path().c_str(), 0755), 0);
  // The build tree may be where nobody else may look.
  const std::string program = folder / "quennelctl";
  std::filesystem::copy_file(QUENNELCTL, program);
  const std::string answer = inChildProcess([&]() -> std::string {
    constexpr uid_t nobody = 65534;
    if (geteuid() == 0 && setresuid(nobody, nobody, nobody) != 0) {
      return "cannot become somebody else";
    }
    Process process({program, "template", "add", file}, environment);
    process.wait();
    return process.errorOutput();
  });
  EXPECT_EQ(answer, "quennelctl: “" + file + "” could not be read: you are not allowed to.\n");
}

TEST_F(TemplateTest, AddRefusesAPathThatIsNotUTF8) {
  const Answer answer =
      run({"template", "add", makeFile("caf\xE9.txt"), "--title=x", "--prefix=x"});
  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(
      answer.errors,
      "quennelctl: " + folder / "caf\\xe9.txt is not UTF-8, and the settings hold nothing else\n");
  EXPECT_TRUE(templates().empty());
}

TEST_F(TemplateTest, AddRefusesNamesThatNoFileCanHave) {
  const std::string file = makeFile("a.md");
  const auto statusWith = [&](const Words& options) {
    Words words{"template", "add", file};
    words.insert(words.end(), options.begin(), options.end());
    return run(words).status;
  };
  EXPECT_EQ(statusWith({"--title="}), 2);
  EXPECT_EQ(statusWith({"--prefix=a/b"}), 2);
  EXPECT_EQ(statusWith({"--suffix=a/b"}), 2);
  EXPECT_EQ(statusWith({"--prefix=", "--suffix="}), 2);
  EXPECT_EQ(statusWith({"--prefix=..", "--suffix="}), 2);
  EXPECT_EQ(statusWith({"--prefix=" + std::string(253, 'x')}), 2);
  EXPECT_TRUE(templates().empty());
  EXPECT_EQ(statusWith({"--prefix=" + std::string(252, 'x')}), 0);
}

TEST_F(TemplateTest, AddNeedsExactlyOneFile) {
  const std::string file = makeFile("a");
  EXPECT_EQ(run({"template", "add"}).status, 2);
  EXPECT_EQ(run({"template", "add", file, "--file", file}).status, 2);
  EXPECT_EQ(run({"template", "add", file, file}).status, 2);
}

TEST_F(TemplateTest, EditChangesWhatIsSaidAndNothingElse) {
  store({"a", "b"});
  const Answer answer = run({"template", "edit", "1", "--title", "new", "--enabled"});
  EXPECT_EQ(answer.status, 0) << answer.errors;
  EXPECT_EQ(answer.output, "Changed template 1: new (b)\n");
  EXPECT_EQ(
      templates(),
      (Array{Dictionary{{"title", "a"}, {"prefix", "a"}, {"unknown", 0.5}},
             Dictionary{{"title", "new"}, {"prefix", "b"}, {"unknown", 0.5}, {"enabled", true}}}));
}

TEST_F(TemplateTest, EditChecksANewFile) {
  store({"a"});
  EXPECT_EQ(run({"template", "edit", "0", "--file", folder / "missing"}).status, 1);
  const std::string file = makeFile("b");
  EXPECT_EQ(run({"template", "edit", "0", "--file", file}).status, 0);
  EXPECT_EQ(templates().at(0).objectForKey("filePath")->description(), file);
}

TEST_F(TemplateTest, EditNeedsSomethingToChange) {
  store({"a"});
  EXPECT_EQ(run({"template", "edit", "0"}).status, 2);
  EXPECT_EQ(run({"template", "edit", "--title=x"}).status, 2);
}

TEST_F(TemplateTest, RemoveTakesOneTemplateOut) {
  store({"a", "b", "c"});
  EXPECT_EQ(run({"template", "remove", "1"}).output, "Removed template 1: b (b)\n");
  EXPECT_EQ(titles(), (Words{"a", "c"}));
}

TEST_F(TemplateTest, MovePutsATemplateInItsNewPlace) {
  store({"a", "b", "c"});
  EXPECT_EQ(run({"template", "move", "0", "2"}).output, "Moved template 0 to 2: a (a)\n");
  EXPECT_EQ(titles(), (Words{"b", "c", "a"}));
  EXPECT_EQ(run({"template", "move", "2", "1"}).status, 0);
  EXPECT_EQ(titles(), (Words{"b", "a", "c"}));
  EXPECT_EQ(run({"template", "move", "1", "1"}).status, 0);
  EXPECT_EQ(titles(), (Words{"b", "a", "c"}));
}

TEST_F(TemplateTest, AnIndexThatTheListDoesNotHaveIsAFailure) {
  EXPECT_EQ(run({"template", "remove", "0"}).errors,
            "quennelctl: there is no template 0; there are none\n");
  store({"a"});
  EXPECT_EQ(run({"template", "remove", "1"}).errors,
            "quennelctl: there is no template 1; there is only template 0\n");
  store({"a", "b"});
  const Answer answer = run({"template", "move", "0", "2"});
  EXPECT_EQ(answer.status, 1);
  EXPECT_EQ(answer.errors, "quennelctl: there is no template 2; they go from 0 to 1\n");
  EXPECT_EQ(run({"template", "remove", "99999999999999999999"}).status, 1);
  EXPECT_EQ(titles(), (Words{"a", "b"}));
}

TEST_F(TemplateTest, AnIndexThatIsNoNumberIsNotUnderstood) {
  store({"a"});
  for (const char* index : {"", "x", "-1", "+0", "0x", "1.0", " 0"}) {
    EXPECT_EQ(run({"template", "remove", index}).status, 2) << index;
  }
  EXPECT_EQ(titles(), Words{"a"});
}

TEST_F(TemplateTest, ListShowsAnAlignedTable) {
  const std::string file = makeFile("a.md");
  ASSERT_EQ(run({"template", "add", file, "--title=Ünïcode"}).status, 0);
  ASSERT_EQ(run({"template", "add", file, "--title=b", "--disabled"}).status, 0);
  ASSERT_EQ(run({"template", "add", makeFile("gone")}).status, 0);
  ASSERT_EQ(unlink((folder / "gone").c_str()), 0);
  EXPECT_EQ(run({"template", "list"}).output,
            "INDEX  ENABLED  TITLE    MAKES  FILE\n"
            "0      yes      Ünïcode  a.md   " +
                file +
                "\n"
                "1      no       b        a.md   " +
                file +
                "\n"
                "2      yes      gone     gone   " +
                folder / "gone" + "  (missing)\n");
}

TEST_F(TemplateTest, ListForScriptsSeparatesFieldsByTabsAndKeepsEachTemplateOnALine) {
  settings.setObject(Array{Dictionary{{"title", "a\tb\n"},
                                      {"prefix", "p"},
                                      {"suffix", "s"},
                                      {"filePath", "/f"},
                                      {"enabled", true}},
                           "no record"},
                     "fileTemplates");
  ASSERT_TRUE(settings.synchronize());
  EXPECT_EQ(run({"template", "list", "--plain"}).output,
            "0\tyes\ta\\tb\\n\tp.s\t/f\n1\tno\t\t\t\n");
}

TEST_F(TemplateTest, ListOfNothingSaysHowToBegin) {
  EXPECT_EQ(run({"template", "list"}).output,
            "There are no templates yet. Add one: quennelctl template add FILE\n");
  EXPECT_EQ(run({"template", "list", "--plain"}).output, "");
}

TEST_F(TemplateTest, SomethingElseInPlaceOfTheListIsAFailureAndStays) {
  settings.setObject("text", "fileTemplates");
  ASSERT_TRUE(settings.synchronize());
  const Answer answer = run({"template", "add", makeFile("a")});
  EXPECT_EQ(answer.status, 1);
  EXPECT_NE(answer.errors.find("something else than a list"), std::string::npos);
  EXPECT_EQ(settings.objectForKey("fileTemplates"), PropertyList("text"));
}

TEST_F(TemplateTest, ManyAtOnceLoseNoTemplate) {
  const std::string file = makeFile("a");
  std::vector<Process> programs;
  for (int number = 0; number < 20; ++number) {
    programs.push_back(start({"template", "add", file}));
  }
  for (Process& program : programs) {
    EXPECT_EQ(program.wait(), 0);
  }
  EXPECT_EQ(templates().size(), 20U);
}

}  // namespace quennel::test
