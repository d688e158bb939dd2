#include "JsonDocuments.h"

#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <map>
#include <set>
#include <sstream>

#include <sys/wait.h>

namespace json_documents {

namespace {

class Kept : public testing::Environment {
public:
  void Add(const std::string& document, Schema schema) { m_documents[schema].insert(document); }

  void TearDown() override {
    for (const auto& [schema, texts] : m_documents) {
      const std::vector<std::string> documents(texts.begin(), texts.end());
      const std::vector<std::string> errors = ErrorsOf(documents, schema);
      for (std::size_t k = 0; k < documents.size(); ++k)
        EXPECT_EQ(errors[k], "") << documents[k];
    }
    m_documents.clear();
  }

private:
  std::map<Schema, std::set<std::string>> m_documents;
};

const char* PathOf(Schema schema) {
  switch (schema) {
  case Schema::Mesh:
    return GSL_MESH_SCHEMA;
  case Schema::Model:
    return GSL_MODEL_SCHEMA;
  case Schema::Sweep:
    break;
  }
  return GSL_SWEEP_SCHEMA;
}

// The framework owns the environment.
Kept& kept = static_cast<Kept&>(*testing::AddGlobalTestEnvironment(new Kept));

} // namespace

void Keep(const std::string& document, Schema schema) {
  kept.Add(document, schema);
}

std::vector<std::string> ErrorsOf(const std::vector<std::string>& documents, Schema schema) {
  const TemporaryFolder folder;
  std::string command =
      std::string("'" GSL_PYTHON "' -B '" GSL_VALIDATE_JSON "' '") + PathOf(schema) + "'";
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
