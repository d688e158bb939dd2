#include "support/InputText.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using gsl_tools::InputError;
using gsl_tools::InputText;
using gsl_tools::NameOfInput;

std::string AllOf(InputText& input) {
  std::string text;
  for (std::string_view part; !(part = input.Next()).empty();)
    text += part;
  return text;
}

/// Puts a file in the place of standard input while it lives.
class StandardInput {
public:
  explicit StandardInput(int descriptor) : m_kept(dup(STDIN_FILENO)) {
    dup2(descriptor, STDIN_FILENO);
  }
  StandardInput(const StandardInput&) = delete;
  StandardInput& operator=(const StandardInput&) = delete;
  ~StandardInput() {
    dup2(m_kept, STDIN_FILENO);
    close(m_kept);
  }

private:
  int m_kept;
};

TEST(InputText, ReadsAFileToItsEnd) {
  const TemporaryFolder folder;
  std::string text(200000, 'a');
  text += '\0';
  text += "end";
  InputText input(folder.Write("long", text));
  EXPECT_EQ(input.Size(), 200004u);
  EXPECT_EQ(AllOf(input), text);
  EXPECT_EQ(input.Next(), "");
  InputText nothing(folder.Write("empty", ""));
  EXPECT_EQ(nothing.Size(), 0u);
  EXPECT_EQ(nothing.Next(), "");
}

TEST(InputText, NamesStandardInput) {
  EXPECT_EQ(NameOfInput("-"), "standard input");
  EXPECT_EQ(NameOfInput("./-"), "./-");
  EXPECT_EQ(InputText("-").Name(), "standard input");
}

TEST(InputText, ReturnsWhatAPipeHoldsWithoutWaitingForMore) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  const StandardInput replaced(ends[0]);
  InputText input("-");
  EXPECT_EQ(input.Size(), 0u);
  ASSERT_EQ(write(ends[1], "one\n", 4), 4);
  EXPECT_EQ(input.Next(), "one\n");
  ASSERT_EQ(write(ends[1], "two", 3), 3);
  EXPECT_EQ(input.Next(), "two");
  close(ends[1]);
  EXPECT_EQ(input.Next(), "");
  close(ends[0]);
}

TEST(InputText, WaitsForAPipeThatDoesNotBlock) {
  int ends[2];
  ASSERT_EQ(pipe2(ends, O_NONBLOCK), 0);
  const StandardInput replaced(ends[0]);
  const pid_t child = fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    usleep(20000);
    _exit(write(ends[1], "late", 4) == 4 ? 0 : 1);
  }
  EXPECT_EQ(InputText("-").Next(), "late");
  int status = 1;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  close(ends[0]);
  close(ends[1]);
}

TEST(InputText, WhatCannotBeReadIsNamed) {
  const TemporaryFolder folder;
  const auto errorOf = [](const std::string& file) {
    try {
      InputText(file).Next();
    } catch (const InputError& error) {
      return std::string(error.what());
    }
    return std::string("no error");
  };
  const std::string missing = folder.Path("missing\n");
  EXPECT_EQ(errorOf(missing),
            folder.Path("missing?") + ": cannot be opened: No such file or directory");
  EXPECT_EQ(errorOf(folder.Path("")), folder.Path("") + ": cannot be read: Is a directory");
  EXPECT_EQ(errorOf(""), ": cannot be opened: No such file or directory");
}

} // namespace
