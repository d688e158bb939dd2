#ifndef BENCH_RECORD_PEERS_H
#define BENCH_RECORD_PEERS_H

#include "RecordModels.h"

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

/// Other libraries that turn objects into bytes.
namespace record_peers {

/// Bytes, which begin at a multiple of eight, and what keeps them.
struct Written {
  std::shared_ptr<const void> owner;
  const unsigned char* begin = nullptr;
  std::size_t count = 0;
};

struct Peer {
  const char* name;
  std::string version;
  Written (*write)(const record_models::Model& model);
  /// Checks the bytes and restores the contents as plain objects.
  record_models::PlainModel (*read)(const Written& written);
};

/// Returns the peers that were there when this was compiled.
std::vector<Peer> AllPeers();

} // namespace record_peers

#endif
