#include "support/HelpFormatter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

using gsl_tools::HelpFormatter;
using gsl_tools::WrappedLines;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(HelpFormatter, LinesBreakBetweenWordsAtTheWidth) {
  EXPECT_THAT(WrappedLines("one two three", 7), ElementsAre("one two", "three"));
  EXPECT_THAT(WrappedLines("one two three", 6), ElementsAre("one", "two", "three"));
  EXPECT_THAT(WrappedLines("  one\n two  ", 20), ElementsAre("one two"));
  EXPECT_THAT(WrappedLines("a extraordinary b", 5), ElementsAre("a", "extraordinary", "b"));
  EXPECT_THAT(WrappedLines("", 5), IsEmpty());
}

TEST(HelpFormatter, OptionsAreInColumns) {
  CLI::App app("What it does, in so many words that one line of eighty columns cannot hold them.",
               "tool");
  app.formatter(std::make_shared<HelpFormatter>("FILE [OPTION...]"));
  app.set_help_flag("-h,--help", "Prints this help and exits");
  app.add_option("FILE")->description("The file");
  app.add_option("--with-value")->type_name("X,Y")->description("Text beside it");
  app.add_option("--longer-with-value")->type_name("X,Y")->description("Text below");
  app.add_flag("--flag", "A text that is too long for one line, since the column of the names "
                         "takes a good part of it");
  app.footer("The end.");
  EXPECT_EQ(app.help(),
            "What it does, in so many words that one line of eighty columns cannot hold\n"
            "them.\n"
            "\n"
            "Usage: tool FILE [OPTION...]\n"
            "\n"
            "Positionals:\n"
            "  FILE                    The file\n"
            "\n"
            "Options:\n"
            "  -h, --help              Prints this help and exits\n"
            "      --with-value X,Y    Text beside it\n"
            "      --longer-with-value X,Y\n"
            "                          Text below\n"
            "      --flag              A text that is too long for one line, since the\n"
            "                          column of the names takes a good part of it\n"
            "\n"
            "The end.\n");
}

TEST(HelpFormatter, NameThatLeavesTwoSpacesKeepsItsLine) {
  for (const int letters : {14, 15, 16, 17, 18, 19}) {
    CLI::App app("About", "tool");
    app.formatter(std::make_shared<HelpFormatter>(""));
    app.set_help_flag();
    const std::string name = "--" + std::string(static_cast<std::size_t>(letters), 'n');
    app.add_flag(name, "text");
    const bool fits = 6 + name.size() + 2 <= 26;
    const std::string line = "      " + name;
    const std::string expected = fits ? line + std::string(26 - line.size(), ' ') + "text\n"
                                      : line + "\n" + std::string(26, ' ') + "text\n";
    EXPECT_THAT(app.help(), testing::HasSubstr("Options:\n" + expected)) << letters;
  }
}
