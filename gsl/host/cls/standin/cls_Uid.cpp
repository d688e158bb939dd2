#include "cls_Uid.h"

#include <atomic>
#include <pthread.h>
#include <random>
#include <sys/random.h>

namespace {

constexpr std::uint64_t kBlockSize = std::uint64_t{1} << 20;

std::atomic<std::uint64_t> processPrefix{0};
std::atomic<std::uint64_t> nextBlock{0};

std::uint64_t RandomPrefix() {
  std::uint64_t bits = 0;
  while (bits == 0) {
    if (getrandom(&bits, sizeof bits, 0) != static_cast<ssize_t>(sizeof bits)) {
      std::random_device device;
      bits = (std::uint64_t{device()} << 32) ^ device();
    }
  }
  return bits;
}

} // namespace

__thread cls_Uid::Block cls_Uid::threadBlock __attribute__((tls_model("initial-exec"))) = {0, 0, 0};

// This runs in the child, on the only thread that survives the fork.
void cls_Uid::DrawAfterFork() noexcept {
  processPrefix.store(RandomPrefix(), std::memory_order_relaxed);
  nextBlock.store(0, std::memory_order_relaxed);
  threadBlock = {0, 0, 0};
}

// The handler is registered at load, while there is one thread. Later, a fork could come between
// the first prefix and the registration.
const bool cls_Uid::kWatchesForks = pthread_atfork(nullptr, nullptr, DrawAfterFork) == 0;

__attribute__((cold)) void cls_Uid::TakeBlock() noexcept {
  std::uint64_t prefixOfAll = processPrefix.load(std::memory_order_relaxed);
  if (prefixOfAll == 0) {
    // The first thread decides. A lock could stay held in a forked child.
    const std::uint64_t drawn = RandomPrefix();
    if (processPrefix.compare_exchange_strong(prefixOfAll, drawn)) prefixOfAll = drawn;
  }
  const std::uint64_t begin = nextBlock.fetch_add(1, std::memory_order_relaxed) * kBlockSize;
  threadBlock = {prefixOfAll, begin, begin + kBlockSize};
}
