#include "support/CommandLine.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace gsl_tools;

/// A program with two options and an argument.
struct Program {
  Program() : app("Does nothing.", "gsl-test") {
    DeclareProgram(app, "FILE [OPTION...]", "The end.");
    app.add_option("FILE")->description("A file");
    app.add_option("-n,--number")
        ->description("A number")
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_flag("--flag", flag, "A flag");
  }

  /// Returns the text that is printed, or the error.
  std::string Parse(std::vector<const char*> arguments, const MeantBy& meant = nullptr) {
    arguments.insert(arguments.begin(), "gsl-test");
    try {
      const std::string text =
          ParseArguments(app, static_cast<int>(arguments.size()), arguments.data(), meant);
      RefuseUnexpectedArguments(app);
      return text;
    } catch (const UsageError& error) {
      return error.what();
    }
  }

  CLI::App app;
  bool flag = false;
};

template <class Work>
std::string ErrorOf(const Work& work) {
  try {
    work();
  } catch (const UsageError& error) {
    return error.what();
  }
  return {};
}

} // namespace

TEST(CommandLine, ValuesAreThoseThatWereGiven) {
  Program program;
  EXPECT_EQ(program.Parse({"a", "--number", "3", "--flag"}), "");
  EXPECT_TRUE(program.flag);
  EXPECT_TRUE(IsGiven(program.app, "FILE"));
  EXPECT_EQ(ValueOf(program.app, "FILE"), "a");
  EXPECT_EQ(ValueOf(program.app, "--number"), "3");
  Program empty;
  EXPECT_EQ(empty.Parse({}), "");
  EXPECT_FALSE(IsGiven(empty.app, "FILE"));
  EXPECT_EQ(ValueOf(empty.app, "--number"), std::nullopt);
  Program twice;
  EXPECT_EQ(twice.Parse({"-n", "1", "-n", "2"}), "");
  EXPECT_EQ(ErrorOf([&] { ValueOf(twice.app, "--number"); }),
            "--number was given 2 times; expected once");
}

TEST(CommandLine, HelpAndVersionTakeThePlaceOfEverythingElse) {
  EXPECT_EQ(Program().Parse({"--version"}), "gsl-test " GSL_VERSION "\n");
  const std::string help = Program().Parse({"a", "--help"});
  EXPECT_EQ(help.substr(0, 13), "Does nothing.");
  EXPECT_NE(help.find("Usage: gsl-test FILE [OPTION...]"), std::string::npos);
  EXPECT_NE(help.find("The end."), std::string::npos);
}

TEST(CommandLine, WhatDoesNotExistIsRefused) {
  const std::string seeHelp = " (see gsl-test --help)";
  EXPECT_EQ(Program().Parse({"--nmuber", "1"}), "unknown option --nmuber; did you mean --number?");
  EXPECT_EQ(Program().Parse({"--xyz"}), "unknown option --xyz" + seeHelp);
  EXPECT_EQ(Program().Parse({"-flag"}), "unknown option -flag; did you mean --flag?");
  EXPECT_EQ(Program().Parse({"a", "b", "c d"}), "unexpected arguments b 'c d'" + seeHelp);
  EXPECT_EQ(Program().Parse({"--", "--xyz", "--abc"}), "unexpected argument --abc" + seeHelp);
  EXPECT_EQ(Program().Parse({"--number"}), "--number must be followed by a value" + seeHelp);
  EXPECT_EQ(Program().Parse({"--number="}), "--number must be followed by a value" + seeHelp);
  EXPECT_EQ(Program().Parse({"--flag=1"}), "--flag takes no value (got --flag=1)");
  const auto meant = [](const std::string& argument) { return "--number " + argument; };
  EXPECT_EQ(Program().Parse({"-q"}, meant), "unknown option -q; did you mean --number -q?");
}

TEST(CommandLine, MissingArgumentsAreListed) {
  const Program program;
  const auto error = [&](const std::vector<std::string>& missing) {
    return ErrorOf([&] { RefuseMissingArguments(program.app, missing, "A B"); });
  };
  const std::string rest = " missing; expected gsl-test A B (see gsl-test --help)";
  EXPECT_EQ(error({}), "");
  EXPECT_EQ(error({"A"}), "A is" + rest);
  EXPECT_EQ(error({"A", "B"}), "A and B are" + rest);
  EXPECT_EQ(error({"A", "B", "C"}), "A, B and C are" + rest);
}

TEST(CommandLine, FileNamesDoNotLookLikeOptions) {
  EXPECT_EQ(FileNameOf("--json", "a", "be a file name"), "a");
  EXPECT_EQ(FileNameOf("--json", "-", "be a file name or -"), "-");
  EXPECT_EQ(ErrorOf([] { FileNameOf("--json", "", "be a file name"); }),
            "--json must be a file name (got an empty value)");
  EXPECT_EQ(ErrorOf([] { FileNameOf("--json", "-q", "be a file name"); }),
            "--json must be a file name (got -q; a file of that name is ./-q)");
}

TEST(CommandLine, ArgumentsAreShownAsTyped) {
  EXPECT_EQ(AsTyped("a"), "a");
  EXPECT_EQ(AsTyped(""), "''");
  EXPECT_EQ(AsTyped("a b"), "'a b'");
}
