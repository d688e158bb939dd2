#ifndef GSL_TESTS_PAGE_FILES_H
#define GSL_TESTS_PAGE_FILES_H

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

/// What is in the files of pages.
namespace page_files {

inline std::size_t CountOf(const std::string& text, const std::string& word) {
  std::size_t count = 0;
  for (std::size_t at = text.find(word); at != std::string::npos; at = text.find(word, at + 1))
    ++count;
  return count;
}

/// Returns how often an SVG draws the line between two places, to 0.02 mm.
inline std::size_t CountLines(const std::string& svg, double x, double y, double toX, double toY) {
  std::size_t count = 0;
  for (std::size_t at = svg.find("M "); at != std::string::npos; at = svg.find("M ", at + 1)) {
    double n[4] = {};
    if (std::sscanf(svg.c_str() + at, "M %lf %lf L %lf %lf", n, n + 1, n + 2, n + 3) != 4) continue;
    const double off = std::max(
        {std::fabs(n[0] - x), std::fabs(n[1] - y), std::fabs(n[2] - toX), std::fabs(n[3] - toY)});
    count += off < 0.02 ? 1u : 0u;
  }
  return count;
}

/// Runs a program of poppler on a PDF, and returns the bytes of its output file.
inline std::string FromPdf(const std::string& program, const std::string& pdf,
                           const std::string& extension) {
  const TemporaryFolder folder;
  const std::string file = folder.Write("page.pdf", pdf);
  const std::string command = program + " '" + file + "' '" + folder.Path("out") + extension + "'";
  EXPECT_EQ(std::system(command.c_str()), 0) << command;
  return BytesOf(folder.Path("out") + ".ppm") + BytesOf(folder.Path("out") + ".txt");
}

/// Returns the words of a PDF.
inline std::string TextOf(const std::string& pdf) {
  return FromPdf("pdftotext -layout", pdf, ".txt");
}

/// An image as pixels of three bytes.
struct Image {
  std::size_t width = 0, height = 0;
  std::string bytes;
};

/// Reads the binary PPM that pdftoppm writes.
inline Image ReadPpm(const std::string& ppm) {
  Image image;
  std::istringstream stream(ppm);
  std::string magic;
  std::size_t most = 0;
  stream >> magic >> image.width >> image.height >> most;
  EXPECT_EQ(magic, "P6");
  EXPECT_EQ(most, 255u);
  image.bytes = ppm.substr(static_cast<std::size_t>(stream.tellg()) + 1);
  EXPECT_EQ(image.bytes.size(), 3 * image.width * image.height);
  return image;
}

} // namespace page_files

#endif
