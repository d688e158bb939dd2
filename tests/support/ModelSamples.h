#ifndef MODEL_SAMPLES_H
#define MODEL_SAMPLES_H

#include "gsl_RecordStore.h"

#include <cmath>
#include <cstdint>
#include <limits>
#include <string_view>

/// Stores of records for the tests of what works without the classes.
namespace model_samples {

inline constexpr std::uint64_t kPrefix = 0x0123456789abcdefu;
inline constexpr std::uint32_t kPart = 0x00500001u;
inline constexpr std::uint32_t kUnknown = 0x0050FFFFu;

/// A root "part" that has every kind of field, and a root without a name. `x` is one of its values.
inline gsl_RecordStore EveryKind(double x = 1.5) {
  gsl_RecordStore store;
  store.NameClass(kPart, "my_Part");
  const gsl_RecordIndex part = store.AddRoot(kPart, {kPrefix, 9});
  store.NameRoot("part");
  store.AddInteger(part, {"count", 0}, -7);
  store.AddDouble(part, {"x", 1}, x);
  store.AddDouble(part, {"zero", -1}, -0.0);
  store.AddDouble(part, {"far", -1}, -std::numeric_limits<double>::infinity());
  store.AddDouble(part, {"none", -1}, std::nan(""));
  store.AddBoolean(part, {"on", -1}, true);
  store.AddString(part, {"text", -1}, std::string_view("a \"b\"\n\xff", 7));
  store.AddNull(part, {"end", -1}, kPart);
  const gsl_RecordIndex shared = store.AddRecord(part, {"shared", -1}, true, kUnknown, {});
  store.AddInteger(shared, {"n", -1}, 1);
  store.AddReference(part, {"again", -1}, shared);
  const gsl_RecordIndex ids = store.AddRecord(part, {"ids", -1}, false, kUnknown, {});
  const std::uint32_t numbers[] = {0, 4294967295u};
  store.SetUnsigneds(ids, numbers, 2);
  const gsl_RecordIndex matrix = store.AddRecord(part, {"matrix", -1}, false, kUnknown, {});
  const double entries[] = {0.1, -0.0, 1e300, 2, 3, 4};
  store.SetDoubles(matrix, entries, 2, 3);
  const gsl_RecordIndex list = store.AddRecord(part, {"list", -1}, false, kUnknown, {});
  store.SetCollection(list, gsl_RecordCollection::Objects);
  store.AddInteger(store.AddRecord(list, {}, false, kPart, {kPrefix, 10}), {"n", -1}, 2);
  store.AddNull(list, {}, kPart);
  store.AddRoot(kUnknown, {});
  store.Finish();
  return store;
}

/// A root that holds `levels` records, each in a field of the one before.
inline gsl_RecordStore Nested(unsigned int levels) {
  gsl_RecordStore store;
  gsl_RecordIndex record = store.AddRoot(kPart, {});
  for (unsigned int level = 0; level < levels; ++level)
    record = store.AddRecord(record, {"inner", -1}, false, kPart, {});
  store.Finish();
  return store;
}

/// An object that refers to itself through another one.
inline gsl_RecordStore Circular() {
  gsl_RecordStore store;
  store.NameClass(kPart, "my_Part");
  const gsl_RecordIndex root = store.AddRoot(kUnknown, {});
  store.NameRoot("ring");
  const gsl_RecordIndex first = store.AddRecord(root, {"first", -1}, true, kPart, {});
  const gsl_RecordIndex second = store.AddRecord(first, {"next", -1}, true, kPart, {kPrefix, 1});
  store.AddReference(second, {"next", -1}, first);
  store.Finish();
  return store;
}

} // namespace model_samples

#endif
