#ifndef POWER_LOSS_H
#define POWER_LOSS_H

#include "FileEvents.h"
#include "RandomNumbers.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// What a disk has after the power was lost.
namespace power_loss {

/// The contents of the files by their names.
using Files = std::map<std::string, std::string>;

/// Returns a disk after the first `count` events. What was synced is there. Of each other write,
/// sectors may be missing or torn; writes, sizes and names that were not synced arrive in part, in
/// any order, or not at all.
///
/// Syncing a file does not make its name lasting; syncing the folder does that. A rename happens
/// whole or not at all.
Files DiskAfter(const std::vector<FileEvent>& events, std::size_t count, RandomNumbers& random);

/// Returns the last state that was promised in the first `count` events, or `none`.
std::uint64_t PromisedBefore(const std::vector<FileEvent>& events, std::size_t count,
                             std::uint64_t none);

} // namespace power_loss

#endif
