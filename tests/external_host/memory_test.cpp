// The recording allocator: it counts what every library of the process requests, and refuses on
// demand.

#include "xh_Memory.h"
#include "xh_Pages.h"

#include <cstdio>
#include <memory>
#include <new>
#include <string>

namespace {

int failures = 0;

void Check(bool holds, const char* what) {
  if (holds) return;
  std::fprintf(stderr, "does not hold: %s\n", what);
  ++failures;
}

void CountsRequests() {
  const long live = xh_Memory::LiveBlocks();
  const unsigned long requests = xh_Memory::Requests();
  {
    const auto number = std::make_unique<int>(7);
    const std::unique_ptr<double[]> numbers(new double[3]);
    Check(xh_Memory::Requests() == requests + 2, "two requests are counted");
    Check(xh_Memory::LiveBlocks() == live + 2, "two blocks live");
    // The code of another library requests from the same recorder.
    const std::string text(1000, 'x');
    Check(xh_Memory::LiveBlocks() == live + 3, "a text of the standard library is a block");
  }
  Check(xh_Memory::LiveBlocks() == live, "every block is released");
}

void RefusesOnDemand() {
  xh_Memory::FailAfter(1);
  const std::unique_ptr<int> granted(new (std::nothrow) int(1));
  const std::unique_ptr<int> refused(new (std::nothrow) int(2));
  bool threw = false;
  try {
    const auto third = std::make_unique<int>(3);
  } catch (const std::bad_alloc&) {
    threw = true;
  }
  xh_Memory::StopFailing();
  Check(granted != nullptr && refused == nullptr && threw,
        "the second request fails, and the third");
  Check(std::make_unique<int>(4) != nullptr, "requests succeed again");
}

void PagesStayAsTheyWere() {
  const long live = xh_Memory::LiveBlocks();
  {
    xh_Pages pages;
    for (int i = 0; i < 32; ++i)
      pages.Push(&failures);
    xh_Memory::FailAfter(0);
    bool threw = false;
    try {
      pages.Push(nullptr);
    } catch (const std::bad_alloc&) {
      threw = true;
    }
    xh_Memory::StopFailing();
    Check(threw && pages.Count() == 32 && pages.At(31) == &failures,
          "a full array stays as it was");
    pages.Push(nullptr);
    Check(pages.Count() == 33 && pages.At(32) == nullptr, "the array grows after that");
  }
  Check(xh_Memory::LiveBlocks() == live, "the pages are released");
}

} // namespace

int main() {
  CountsRequests();
  RefusesOnDemand();
  PagesStayAsTheyWere();
  return failures == 0 ? 0 : 1;
}
