// Finds which parts of an assembly hang together.

#include <gsl_DepthFirstSearch.h>

#include <cstdio>

int main() {
  constexpr int kParts = 7;
  const char* const names[kParts] = {"frame", "wheel", "bell", "axle", "clapper", "hub", "lamp"};
  const int joints[][2] = {{0, 3}, {3, 5}, {5, 1}, {2, 4}};

  // adjacency[v * n + u] says that v holds u; a joint holds both ways.
  bool adjacency[kParts * kParts] = {};
  for (const auto& joint : joints) {
    adjacency[joint[0] * kParts + joint[1]] = true;
    adjacency[joint[1] * kParts + joint[0]] = true;
  }

  int labels[kParts];
  int count = 0;
  gsl_DepthFirstSearch(adjacency, kParts, labels, count);

  std::printf("%d assemblies\n", count);
  for (int label = 0; label < count; ++label) {
    std::printf("  %d:", label);
    for (int part = 0; part < kParts; ++part) {
      if (labels[part] == label) std::printf(" %s", names[part]);
    }
    std::printf("\n");
  }
}
