#include "PowerLoss.h"

#include <algorithm>

namespace power_loss {

namespace {

using Kind = FileEvent::Kind;

constexpr std::uint64_t kSector = 512;

/// How much of what was not synced arrives.
enum class Arriving {
  Nothing,
  Everything,
  Beginning, ///< in order, up to some event, which arrives in part
  Anything   ///< any sectors of any writes
};

Arriving AnyArriving(RandomNumbers& random) {
  return static_cast<Arriving>(random.Below(4));
}

void Put(const char* bytes, std::uint64_t count, std::uint64_t at, std::string& file) {
  if (file.size() < at + count) file.resize(at + count, '\0');
  std::copy(bytes, bytes + count, file.begin() + static_cast<std::ptrdiff_t>(at));
}

void Apply(const FileEvent& event, std::string& file) {
  if (event.kind == Kind::Resize) {
    file.resize(event.at, '\0');
  } else {
    Put(event.bytes.data(), event.bytes.size(), event.at, file);
  }
}

/// Some sectors of the write arrive, some in part. Where none of the last ones does, the file may
/// have its new size all the same.
void ApplyInPart(const FileEvent& event, RandomNumbers& random, std::string& file) {
  if (event.kind == Kind::Resize) {
    if (random.Chance(0.5)) Apply(event, file);
    return;
  }
  const double share = random.Unit();
  const std::uint64_t end = event.at + event.bytes.size();
  for (std::uint64_t at = event.at; at < end;) {
    const std::uint64_t next = std::min(end, (at / kSector + 1) * kSector);
    std::uint64_t count = next - at;
    if (random.Chance(0.1)) count = random.Next() % count;
    if (random.Chance(share)) Put(event.bytes.data() + (at - event.at), count, at, file);
    at = next;
  }
  if (random.Chance(0.5) && file.size() < end) file.resize(end, '\0');
}

/// The file with some of what was not synced.
void ApplySome(const std::vector<const FileEvent*>& waiting, RandomNumbers& random,
               std::string& file) {
  const Arriving arriving = AnyArriving(random);
  if (arriving == Arriving::Nothing || waiting.empty()) return;
  const std::size_t last = random.Next() % waiting.size();
  for (std::size_t i = 0; i < waiting.size(); ++i) {
    if (arriving == Arriving::Beginning && i > last) return;
    if (arriving == Arriving::Anything || (arriving == Arriving::Beginning && i == last)) {
      ApplyInPart(*waiting[i], random, file);
    } else {
      Apply(*waiting[i], file);
    }
  }
}

using Names = std::map<std::string, int>;

void Apply(const FileEvent& event, Names& names) {
  if (event.kind == Kind::Name) {
    names[event.name] = event.file;
    return;
  }
  names.erase(event.name);
  if (event.kind == Kind::Rename) names[event.to] = event.file;
}

void ApplySome(const std::vector<const FileEvent*>& waiting, RandomNumbers& random, Names& names) {
  const Arriving arriving = AnyArriving(random);
  if (arriving == Arriving::Nothing || waiting.empty()) return;
  const std::size_t last = random.Next() % waiting.size();
  for (std::size_t i = 0; i < waiting.size(); ++i) {
    if (arriving == Arriving::Beginning && i > last) return;
    if (arriving != Arriving::Anything || random.Chance(0.5)) Apply(*waiting[i], names);
  }
}

struct File {
  std::string synced;
  std::vector<const FileEvent*> waiting;
};

} // namespace

Files DiskAfter(const std::vector<FileEvent>& events, std::size_t count, RandomNumbers& random) {
  std::map<int, File> files;
  Names names;
  std::vector<const FileEvent*> waiting;
  for (std::size_t i = 0; i < count; ++i) {
    const FileEvent& event = events[i];
    switch (event.kind) {
    case Kind::Name:
    case Kind::Unname:
    case Kind::Rename:
      waiting.push_back(&event);
      break;
    case Kind::Write:
    case Kind::Resize:
      files[event.file].waiting.push_back(&event);
      break;
    case Kind::Sync:
      for (const FileEvent* const write : files[event.file].waiting)
        Apply(*write, files[event.file].synced);
      files[event.file].waiting.clear();
      break;
    case Kind::SyncFolder:
      for (const FileEvent* const change : waiting)
        Apply(*change, names);
      waiting.clear();
      break;
    case Kind::Mark:
      break;
    }
  }
  ApplySome(waiting, random, names);
  Files disk;
  for (const auto& [name, file] : names) {
    ApplySome(files[file].waiting, random, files[file].synced);
    files[file].waiting.clear();
    disk[name] = files[file].synced;
  }
  return disk;
}

std::uint64_t PromisedBefore(const std::vector<FileEvent>& events, std::size_t count,
                             std::uint64_t none) {
  while (count-- > 0) {
    if (events[count].kind == Kind::Mark) return events[count].at;
  }
  return none;
}

} // namespace power_loss
