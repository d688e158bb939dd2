#ifndef JSON_DOCUMENTS_H
#define JSON_DOCUMENTS_H

#include <string>
#include <vector>

/// The JSON documents that a test program makes, held against the schema in docs/ by an independent
/// validator.
namespace json_documents {

/// Keeps a document until the end of the program, which fails when one of them is not valid. All of
/// them are validated together because the validator takes long to start.
void Keep(const std::string& document);

/// What the validator says about each of the documents, now; empty for those that are valid.
std::vector<std::string> ErrorsOf(const std::vector<std::string>& documents);

} // namespace json_documents

#endif
