#ifndef JSON_DOCUMENTS_H
#define JSON_DOCUMENTS_H

#include <string>
#include <vector>

/// The JSON documents of a test program. An independent validator compares them with their schema.
namespace json_documents {

/// The schemas in docs/.
enum class Schema { Sweep, Mesh, Model };

/// Keeps a document until the end of the program, which fails when one of them is not valid. All of
/// them are validated together because the validator takes long to start.
void Keep(const std::string& document, Schema schema = Schema::Sweep);

/// Returns the verdict of the validator on each document. It is empty for a valid document.
std::vector<std::string> ErrorsOf(const std::vector<std::string>& documents,
                                  Schema schema = Schema::Sweep);

} // namespace json_documents

#endif
