#ifndef CONFORMANCE_H
#define CONFORMANCE_H

#include <string>
#include <vector>

/// A requirement on the host, and the function that tests it.
struct Case {
  const char* name;
  const char* requirement;
  void (*run)();
};

/// Ends the case as failed, with a line that names the condition.
void Require(bool holds, const char* condition, const char* file, int line);
#define REQUIRE(condition) Require((condition), #condition, __FILE__, __LINE__)

/// Ends the case as failed unless both texts are equal; prints both.
void RequireText(const std::string& is, const std::string& expected, const char* file, int line);
#define REQUIRE_TEXT(is, expected) RequireText((is), (expected), __FILE__, __LINE__)

std::vector<Case> BasicCases();
std::vector<Case> TemplateCases();
std::vector<Case> ModuleCases();
std::vector<Case> RecordCases();
std::vector<Case> LibraryCases();

/// Starts the library while it lives.
class Started {
public:
  Started();
  ~Started();
  Started(const Started&) = delete;
  Started& operator=(const Started&) = delete;

private:
  int m_count;
};

#endif
