#ifndef BENCH_AGREEMENT_H
#define BENCH_AGREEMENT_H

#include "gsl_Matrix.h"
#include "gsl_Point.h"
#include "gsl_Vector.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <map>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

/// Comparison of what the rows of one work return for the same inputs. A row that returns something
/// else does other work, so it is not timed.
namespace agreement {

/// The results for every input, one after the other; `width` numbers for each.
struct Results {
  std::vector<double> numbers;
  std::size_t width = 0;
};

/// Appends the numbers of a result. Numbers beyond those of another row are not compared: a length
/// beside three components, for instance. The types of other libraries specialise this.
template <class T, class = void>
struct NumbersOf;

template <class T>
struct NumbersOf<T, std::enable_if_t<std::is_arithmetic_v<T>>> {
  static void Append(std::vector<double>& out, T value) {
    out.push_back(static_cast<double>(value));
  }
};

template <>
struct NumbersOf<gsl_Point> {
  static void Append(std::vector<double>& out, const gsl_Point& p) {
    out.insert(out.end(), {p.x, p.y, p.z});
  }
};

template <>
struct NumbersOf<gsl_Vector> {
  static void Append(std::vector<double>& out, const gsl_Vector& v) {
    out.insert(out.end(), {v.x, v.y, v.z, v.magnitude});
  }
};

/// Three rows: the last row of a transform is constant.
template <>
struct NumbersOf<gsl_Matrix> {
  static void Append(std::vector<double>& out, const gsl_Matrix& m) {
    for (int r = 0; r < 3; ++r)
      out.insert(out.end(), m.m[r], m.m[r] + 4);
  }
};

/// Other formulas round elsewhere, by much less than this.
constexpr double kTolerance = 1e-9;

inline bool AreEqual(double a, double b) {
  if (a == b || (std::isnan(a) && std::isnan(b))) return true;
  return std::fabs(a - b) <= kTolerance * std::max({1.0, std::fabs(a), std::fabs(b)});
}

/// Returns the first input for which the results differ, or -1.
inline std::ptrdiff_t FirstDifference(const Results& a, const Results& b) {
  const std::size_t count = a.numbers.size() / a.width;
  if (count != b.numbers.size() / b.width) return 0;
  const std::size_t common = std::min(a.width, b.width);
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t k = 0; k < common; ++k) {
      if (!AreEqual(a.numbers[i * a.width + k], b.numbers[i * b.width + k])) {
        return static_cast<std::ptrdiff_t>(i);
      }
    }
  }
  return -1;
}

/// The row that runs: its work and who does it.
struct Row {
  std::string work, who;
};

inline Row& Current() {
  static Row row;
  return row;
}

/// The name is Work/who, without further parts.
inline void Begin(const std::string& name) {
  const std::size_t slash = name.find('/');
  const bool hasWho = slash != std::string::npos;
  Current() = {name.substr(0, slash), hasWho ? name.substr(slash + 1) : "ours"};
}

/// Whether the row that runs was compared before.
inline std::map<std::string, std::map<std::string, Results>>& Known() {
  static std::map<std::string, std::map<std::string, Results>> known;
  return known;
}

/// Compares the results of the row that runs with those of every row of its work that ran before.
/// Reports a difference as the error of the row, which then must not be timed.
[[nodiscard]] inline bool IsAgreed(benchmark::State& state, Results results) {
  std::map<std::string, Results>& rows = Known()[Current().work];
  for (const auto& [who, other] : rows) {
    const std::ptrdiff_t where = FirstDifference(results, other);
    if (where < 0) continue;
    state.SkipWithError(
        ("the result differs from " + who + " at input " + std::to_string(where)).c_str());
    return false;
  }
  rows.emplace(Current().who, std::move(results));
  return true;
}

[[nodiscard]] inline bool IsKnown() {
  return Known()[Current().work].count(Current().who) != 0;
}

/// Appends one result, which has the width of all.
template <class Result>
void Append(Results& results, const Result& result) {
  NumbersOf<Result>::Append(results.numbers, result);
  if (results.width == 0) results.width = results.numbers.size();
}

/// Compares one result.
template <class Result>
[[nodiscard]] bool IsAgreed(benchmark::State& state, const Result& result) {
  if (IsKnown()) return true;
  Results results;
  Append(results, result);
  return IsAgreed(state, std::move(results));
}

/// Compares what `work` returns for each value.
template <class Values, class Work>
[[nodiscard]] bool IsAgreedOnEach(benchmark::State& state, const Values& values, Work& work) {
  if (IsKnown()) return true;
  Results results;
  for (const auto& value : values)
    Append(results, work(value));
  return IsAgreed(state, std::move(results));
}

/// Compares what `work` returns for each value and its successor.
template <class Values, class Work>
[[nodiscard]] bool IsAgreedOnPairs(benchmark::State& state, const Values& values, Work& work) {
  if (IsKnown()) return true;
  Results results;
  for (std::size_t i = 0; i < values.size(); ++i)
    Append(results, work(values[i], values[(i + 1) % values.size()]));
  return IsAgreed(state, std::move(results));
}

} // namespace agreement

#endif
