// Runs the cases, or those that are named:
//   host_conformance [--list | CASE...]
// Ends with 0 when every case holds, 1 when one does not, and 2 for an unknown name.

#include "Conformance.h"
#include "HostAdapter.h"

#include <cstdio>
#include <cstring>
#include <exception>
#include <gsl_Module.h>

namespace {

struct Failed {
  std::string why;
};

std::vector<Case> AllCases() {
  std::vector<Case> all;
  for (const auto& cases :
       {BasicCases(), TemplateCases(), ModuleCases(), RecordCases(), LibraryCases()}) {
    all.insert(all.end(), cases.begin(), cases.end());
  }
  return all;
}

/// Returns why the case does not hold, or nothing.
std::string Run(const Case& named) {
  try {
    named.run();
    return "";
  } catch (const Failed& failed) {
    return failed.why;
  } catch (const nex_Exception& error) {
    return "an exception of the host: " + host_adapter::Describe(error).message;
  } catch (const std::exception& error) {
    return std::string("an exception: ") + error.what();
  } catch (...) {
    return "an exception of an unknown class";
  }
}

int RunAndPrint(const Case& named) {
  const std::string why = Run(named);
  if (why.empty()) {
    std::printf("ok    %s\n", named.name);
    return 0;
  }
  std::printf("FAIL  %s: %s\n      required: %s\n", named.name, why.c_str(), named.requirement);
  return 1;
}

} // namespace

void Require(bool holds, const char* condition, const char* file, int line) {
  if (holds) return;
  const char* const slash = std::strrchr(file, '/');
  throw Failed{std::string(slash != nullptr ? slash + 1 : file) + ":" + std::to_string(line) +
               ": " + condition};
}

void RequireText(const std::string& is, const std::string& expected, const char* file, int line) {
  Require(is == expected, ("\"" + is + "\" is not \"" + expected + "\"").c_str(), file, line);
}

Started::Started() : m_count(0) {
  gsl_initialize(m_count);
}

Started::~Started() {
  gsl_finalize(m_count);
}

int main(int argc, char** argv) {
  const std::vector<Case> all = AllCases();
  if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
    for (const Case& named : all)
      std::printf("%-20s %s\n", named.name, named.requirement);
    return 0;
  }
  int status = 0;
  for (int i = 1; i < argc; ++i) {
    bool known = false;
    for (const Case& named : all) {
      if (std::strcmp(named.name, argv[i]) != 0) continue;
      known = true;
      status |= RunAndPrint(named);
    }
    if (known) continue;
    std::fprintf(stderr, "No case is named %s; --list prints the names.\n", argv[i]);
    return 2;
  }
  for (std::size_t i = 0; argc == 1 && i < all.size(); ++i)
    status |= RunAndPrint(all[i]);
  return status;
}
