#include "ModelOptions.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace gsl_tools;

struct Parsed {
  ModelOptions options;
  std::string text;  ///< to be printed
  std::string error; ///< of the UsageError
};

Parsed Parse(std::vector<const char*> arguments) {
  arguments.insert(arguments.begin(), "gsl-model");
  Parsed parsed;
  try {
    parsed.text =
        ParseModelOptions(static_cast<int>(arguments.size()), arguments.data(), parsed.options);
  } catch (const UsageError& error) {
    parsed.error = error.what();
  }
  return parsed;
}

std::string ErrorOf(const std::vector<const char*>& arguments) {
  return Parse(arguments).error;
}

const std::string seeHelp = " (see gsl-model --help)";

} // namespace

TEST(ModelOptions, EachCommandHasItsArgument) {
  const Parsed list = Parse({"a.gslr", "list"});
  EXPECT_EQ(list.error, "");
  EXPECT_EQ(list.text, "");
  EXPECT_EQ(list.options.file, "a.gslr");
  EXPECT_EQ(list.options.command, ModelCommand::List);
  EXPECT_FALSE(list.options.quiet);
  EXPECT_FALSE(list.options.force);
  EXPECT_EQ(list.options.jsonFile, "");
  const Parsed named = Parse({"--json", "-", "a", "show", "axis", "--quiet"});
  EXPECT_EQ(named.error, "");
  EXPECT_EQ(named.options.command, ModelCommand::Show);
  EXPECT_EQ(named.options.root, "axis");
  EXPECT_TRUE(named.options.JsonToStdout());
  EXPECT_TRUE(named.options.quiet);
  EXPECT_EQ(Parse({"a", "check"}).options.command, ModelCommand::Check);
  const Parsed convert = Parse({"a", "convert", "b", "--force"});
  EXPECT_EQ(convert.options.command, ModelCommand::Convert);
  EXPECT_EQ(convert.options.output, "b");
  EXPECT_TRUE(convert.options.force);
  const Parsed diff = Parse({"a", "diff", "-"});
  EXPECT_EQ(diff.options.command, ModelCommand::Diff);
  EXPECT_EQ(diff.options.other, "-");
}

TEST(ModelOptions, NamesAfterTwoDashesMayBeginWithADash) {
  const Parsed parsed = Parse({"a", "show", "--", "--json"});
  EXPECT_EQ(parsed.error, "");
  EXPECT_EQ(parsed.options.root, "--json");
}

TEST(ModelOptions, HelpAndVersionArePrinted) {
  EXPECT_EQ(Parse({"--version"}).text, "gsl-model " GSL_VERSION "\n");
  const std::string help = Parse({"--help"}).text;
  for (const char* word : {"list", "show NAME", "check", "convert OUT", "diff OTHER", "--json",
                           "--quiet", "--force", "Exit status"})
    EXPECT_NE(help.find(word), std::string::npos) << word;
  EXPECT_EQ(help.find("Usage: gsl-model FILE COMMAND"), help.find("Usage: "));
}

TEST(ModelOptions, MissingArgumentsAreNamed) {
  EXPECT_EQ(ErrorOf({}), "FILE and COMMAND are missing; expected gsl-model FILE COMMAND "
                         "[ARGUMENT] [OPTION...]" +
                             seeHelp);
  EXPECT_EQ(ErrorOf({"a"}),
            "COMMAND is missing; expected gsl-model FILE COMMAND [ARGUMENT] [OPTION...]" + seeHelp);
  EXPECT_EQ(ErrorOf({"a", "show"}), "NAME is missing; expected gsl-model FILE show NAME" + seeHelp);
  EXPECT_EQ(ErrorOf({"a", "convert"}),
            "OUT is missing; expected gsl-model FILE convert OUT" + seeHelp);
  EXPECT_EQ(ErrorOf({"a", "diff"}),
            "OTHER is missing; expected gsl-model FILE diff OTHER" + seeHelp);
  EXPECT_EQ(ErrorOf({"a", "list", "--json"}), "--json must be followed by a value" + seeHelp);
}

TEST(ModelOptions, UnknownWordsSuggestTheNearestName) {
  EXPECT_EQ(ErrorOf({"a", "lsit"}), "unknown command lsit; did you mean list?");
  EXPECT_EQ(ErrorOf({"a", "conv"}), "unknown command conv; did you mean convert?");
  EXPECT_EQ(ErrorOf({"a", "print"}),
            "unknown command print; expected list, show, check, convert or diff" + seeHelp);
  EXPECT_EQ(ErrorOf({"a", "list", "--jsn", "-"}), "unknown option --jsn; did you mean --json?");
  EXPECT_EQ(ErrorOf({"a", "list", "--xyz"}), "unknown option --xyz" + seeHelp);
}

TEST(ModelOptions, ArgumentsTooManyAreRefused) {
  EXPECT_EQ(ErrorOf({"a", "list", "b"}), "unexpected argument b" + seeHelp);
  EXPECT_EQ(ErrorOf({"a", "show", "b", "c d"}), "unexpected argument 'c d'" + seeHelp);
  EXPECT_EQ(ErrorOf({"a", "list", "--json", "b", "--json", "c"}),
            "--json was given 2 times; expected once");
  EXPECT_EQ(ErrorOf({"a", "list", "--quiet=1"}), "--quiet takes no value (got --quiet=1)");
}

TEST(ModelOptions, WrongValuesAreRefused) {
  EXPECT_EQ(ErrorOf({"", "list"}), "FILE must be a file name or - (got an empty value)");
  EXPECT_EQ(ErrorOf({"a", "show", ""}), "NAME must be a name or a number (got an empty value)");
  EXPECT_EQ(ErrorOf({"a", "convert", ""}), "OUT must be a file name (got an empty value)");
  EXPECT_EQ(ErrorOf({"a", "convert", "-"}), "OUT must be a file name (got -)");
  EXPECT_EQ(ErrorOf({"-", "diff", "-"}),
            "FILE and OTHER are both -; expected standard input once at most");
  EXPECT_EQ(ErrorOf({"a", "check", "--json", "-"}),
            "--json cannot be used with check; expected list or show");
  EXPECT_EQ(ErrorOf({"a", "list", "--json", "--quiet"}),
            "--json must be a file name or - (got --quiet; a file of that name is ./--quiet)");
}
