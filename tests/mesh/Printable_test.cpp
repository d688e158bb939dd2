#include "Printable.h"

#include <gtest/gtest.h>

using gsl_mesh::Printable;

TEST(Printable, EveryControlCharacterBecomesAQuestionMark) {
  for (int c = 0; c < 256; ++c) {
    const std::string text(1, static_cast<char>(c));
    const bool isControl = c < 0x20 || c == 0x7f;
    EXPECT_EQ(Printable(text), isControl ? "?" : text) << c;
  }
}

TEST(Printable, SecondCallChangesNothing) {
  const std::string text = "a\n\x1b[2J\t\xc3\xa9?";
  EXPECT_EQ(Printable(text), "a??[2J?\xc3\xa9?");
  EXPECT_EQ(Printable(Printable(text)), Printable(text));
}
