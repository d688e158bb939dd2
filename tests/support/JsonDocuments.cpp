#include "JsonDocuments.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <set>
#include <sstream>

#include <sys/wait.h>

namespace json_documents {

namespace {

class Kept : public testing::Environment {
public:
  void Add(const std::string& document) { m_documents.insert(document); }

  void TearDown() override {
    if (m_documents.empty()) return;
    const std::vector<std::string> documents(m_documents.begin(), m_documents.end());
    const std::vector<std::string> errors = ErrorsOf(documents);
    for (std::size_t k = 0; k < documents.size(); ++k)
      EXPECT_EQ(errors[k], "") << documents[k];
    m_documents.clear();
  }

private:
  std::set<std::string> m_documents;
};

// The framework owns the environment.
Kept& kept = static_cast<Kept&>(*testing::AddGlobalTestEnvironment(new Kept));

} // namespace

void Keep(const std::string& document) {
  kept.Add(document);
}

std::vector<std::string> ErrorsOf(const std::vector<std::string>& documents) {
  const TemporaryFolder folder;
  std::string command = "'" GSL_PYTHON "' -B '" GSL_VALIDATE_JSON "' '" GSL_SWEEP_SCHEMA "'";
  for (std::size_t k = 0; k < documents.size(); ++k)
    command += " '" + folder.Write(std::to_string(k), documents[k]) + "'";
  const std::string said = folder.Path("said");
  const int status = std::system((command + " >'" + said + "' 2>&1").c_str());
  const bool ran = WIFEXITED(status) && WEXITSTATUS(status) <= 1;
  std::vector<std::string> errors(documents.size(), ran ? "" : "the validator failed");
  // Each error is one line: the number of the document, a colon and the error.
  std::istringstream lines(BytesOf(said));
  for (std::string line; std::getline(lines, line);) {
    const std::size_t document = std::strtoul(line.c_str(), nullptr, 10);
    errors.at(document < errors.size() ? document : 0) += line + "\n";
  }
  return errors;
}

} // namespace json_documents
