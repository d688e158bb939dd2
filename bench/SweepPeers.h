#ifndef BENCH_SWEEP_PEERS_H
#define BENCH_SWEEP_PEERS_H

#include "SweepFamilies.h"

#include <string>
#include <vector>

/// Other libraries that look for a first contact.
namespace sweep_peers {

struct Found {
  bool isContact = false;
  double travel = 0.0;
};

struct Peer {
  const char* name;
  std::string version;
  std::size_t mostTriangles; ///< of each body, to keep within the time
  /// Prepares what the library needs, on one thread, and looks once.
  Found (*find)(const sweep_families::Scene& scene);
};

/// Returns the peers that were there when this was compiled.
std::vector<Peer> AllPeers();

} // namespace sweep_peers

#endif
