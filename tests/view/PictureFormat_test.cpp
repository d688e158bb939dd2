#include "PictureFormat.h"

#include <gtest/gtest.h>

using namespace gsl_view;

TEST(PictureFormat, IsThatOfTheExtension) {
  EXPECT_EQ(PictureFormatOf("a.svg"), PictureFormat::Svg);
  EXPECT_EQ(PictureFormatOf("folder.d/a.PNG"), PictureFormat::Png);
  EXPECT_EQ(PictureFormatOf("a.b.Pdf"), PictureFormat::Pdf);
}

TEST(PictureFormat, OtherNamesHaveNone) {
  for (const char* name : {"", "svg", "a.jpg", "a.svg.gz", "a.svg/b", "-", "a.", "a.pdf "})
    EXPECT_FALSE(PictureFormatOf(name)) << name;
}

TEST(PictureFormat, BuildOfTheTestsDraws) {
  EXPECT_TRUE(CanDrawPictures());
}
