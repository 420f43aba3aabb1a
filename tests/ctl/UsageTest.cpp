#include "tests/ctl/QuennelctlTest.h"

namespace quennel::test {
namespace {

class UsageTest : public QuennelctlTest {};

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace

TEST_F(UsageTest, HelpNamesEveryCommand) {
  const Answer answer = run({"--help"});
  EXPECT_EQ(answer.status, 0);
  EXPECT_EQ(answer.errors, "");
  for (const char* command :
       {"template list", "template add FILE", "template edit INDEX", "template remove INDEX",
        "template move FROM TO", "set KEY VALUE", "get [KEY]", "grant DIR", "grants", "revoke PATH",
        "new INDEX [DIR]", "notify COMMAND"}) {
    EXPECT_TRUE(holds(answer.output, std::string("\n  ") + command)) << command;
  }
  EXPECT_EQ(run({"help"}).output, answer.output);
  EXPECT_EQ(run({"-h"}).output, answer.output);
}

TEST_F(UsageTest, EveryCommandHasAHelpOfItsOwn) {
  for (const Words& command :
       {Words{"template", "list"}, Words{"template", "add"}, Words{"template", "edit"},
        Words{"template", "remove"}, Words{"template", "move"}, Words{"set"}, Words{"get"},
        Words{"grant"}, Words{"grants"}, Words{"revoke"}, Words{"new"}, Words{"notify"}}) {
    Words words = command;
    words.emplace_back("--help");
    const Answer answer = run(words);
    const std::string name = command.size() > 1 ? command[0] + " " + command[1] : command[0];
    EXPECT_EQ(answer.status, 0) << name;
    EXPECT_TRUE(answer.output.starts_with("Usage: quennelctl " + name)) << answer.output;
  }
}

TEST_F(UsageTest, HelpOfAGroupNamesItsCommands) {
  const Answer answer = run({"template", "--help"});
  EXPECT_EQ(answer.status, 0);
  EXPECT_TRUE(holds(answer.output, "template move FROM TO"));
  EXPECT_FALSE(holds(answer.output, "notify"));
}

TEST_F(UsageTest, NoLineOfHelpIsWiderThanATerminal) {
  for (const Words& words :
       {Words{"--help"}, Words{"template", "add", "--help"}, Words{"get", "--help"},
        Words{"set", "playSound", "--help"}, Words{"new", "--help"}, Words{"grant", "--help"},
        Words{"grants", "--help"}, Words{"revoke", "--help"},
        Words{"template", "list", "--help"}}) {
    std::string text = run(words).output;
    for (std::size_t end = text.find('\n'); end != std::string::npos; end = text.find('\n')) {
      EXPECT_LE(end, 90U) << text.substr(0, end);
      text.erase(0, end + 1);
    }
  }
}

TEST_F(UsageTest, VersionIsTheProjects) {
  EXPECT_EQ(run({"--version"}).output, "quennelctl " QUENNEL_VERSION "\n");
}

TEST_F(UsageTest, WithoutACommandTheHelpIsAnError) {
  for (const Words& words : {Words{}, Words{"template"}}) {
    const Answer answer = run(words);
    EXPECT_EQ(answer.status, 2);
    EXPECT_EQ(answer.output, "");
    EXPECT_TRUE(holds(answer.errors, "Usage: quennelctl"));
  }
}

TEST_F(UsageTest, UnknownCommandsAreRefusedWithASuggestion) {
  EXPECT_EQ(run({"templat", "list"}).errors,
            "quennelctl: there is no command templat; did you mean template?\n"
            "See 'quennelctl --help'.\n");
  const Answer answer = run({"template", "rmove"});
  EXPECT_EQ(answer.status, 2);
  EXPECT_EQ(answer.errors,
            "quennelctl: there is no command template rmove; did you mean template remove?\n"
            "See 'quennelctl template --help'.\n");
  EXPECT_EQ(run({"--unlike"}).status, 2);
}

TEST_F(UsageTest, TooFewAndTooManyArgumentsAreRefused) {
  EXPECT_EQ(run({"set", "playSound"}).errors,
            "quennelctl: set needs more arguments: KEY VALUE\nSee 'quennelctl set --help'.\n");
  EXPECT_EQ(run({"template", "list", "x"}).errors,
            "quennelctl: too many arguments, from 'x' on\n"
            "See 'quennelctl template list --help'.\n");
}

TEST_F(UsageTest, OutputThatCannotBeWrittenIsAFailure) {
  Process program({"sh", "-c", std::string(QUENNELCTL) + " --help >/dev/full"}, environment);
  EXPECT_EQ(program.wait(), 1);
  EXPECT_EQ(program.errorOutput(), "quennelctl: the output cannot be written\n");
}

}  // namespace quennel::test
