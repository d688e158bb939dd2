#include "MeshImporter.h"

#include "MeshImportProtocol.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include <sys/wait.h>
#include <unistd.h>

namespace {

struct Outcome {
  int status;
  std::string answer, err;
};

/// Runs the probe by hand.
Outcome Probe(const std::string& arguments) {
  const TemporaryFolder folder;
  const std::string line = "'" GSL_IMPORT_PROBE "' " + arguments + " 3>'" + folder.Path("answer") +
                           "' 2>'" + folder.Path("err") + "'; exit $?";
  const int status = std::system(line.c_str());
  return {WEXITSTATUS(status), BytesOf(folder.Path("answer")), BytesOf(folder.Path("err"))};
}

} // namespace

TEST(MeshImporter, StartedByHandItSaysWhoStartsIt) {
  const std::string greeting = gsl_mesh::import_protocol::kGreeting;
  for (const std::string& arguments :
       {std::string(), std::string("part.3mf"), std::string("--help"),
        std::string("gslmesh0 0 $$ mesh"), greeting + " x $$ mesh", greeting + " 0 x mesh",
        greeting + " 0 $$ mesh more"}) {
    const Outcome outcome = Probe(arguments);
    EXPECT_EQ(outcome.status, 2) << arguments;
    EXPECT_EQ(outcome.answer, "") << arguments;
    EXPECT_THAT(outcome.err, testing::StartsWith("gsl-mesh-import: ")) << arguments;
    EXPECT_EQ(outcome.err.find('\n'), outcome.err.size() - 1) << arguments;
  }
}

TEST(MeshImporter, EndsWhenItsCallerHasEnded) {
  const std::string greeting = gsl_mesh::import_protocol::kGreeting;
  const Outcome orphan = Probe(greeting + " 0 1 mesh");
  EXPECT_EQ(orphan.status, 1);
  EXPECT_EQ(orphan.answer, "");
}

TEST(MeshImporter, ResultIsTheGreetingAndTheMesh) {
  const std::string greeting = gsl_mesh::import_protocol::kGreeting;
  // The shell waits, so that it is the caller of the program.
  const Outcome outcome = Probe(greeting + " 0 $$ surroundings");
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.answer.substr(0, 9), greeting + std::string(1, '\0'));
  EXPECT_EQ(outcome.answer.substr(9, 8), std::string(8, '\0')); // no error
  EXPECT_EQ(outcome.answer.substr(17, 8), std::string("\6\0\0\0\0\0\0\0", 8));
  const std::size_t corners = 3 * 3 * sizeof(double);
  EXPECT_EQ(outcome.answer.substr(outcome.answer.size() - corners - 8, 8),
            std::string("\3\0\0\0\0\0\0\0", 8));
}
