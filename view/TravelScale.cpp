#include "TravelScale.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace gsl_view {

namespace {

constexpr double kMostTicks = 8.0;
// Numbers of six digits differ when they are further apart than this part of their size.
constexpr double kLeastPart = 2e-5;
constexpr double kLeastPartOfGreatest = 1e-4;

/// Returns the least of 1, 2, 5, 10, 20, 50 and so on that is at least `least`; 0 where it leaves
/// the range of double.
double RoundStep(double least) {
  const double power = std::pow(10.0, std::floor(std::log10(least)));
  for (const double factor : {1.0, 2.0, 5.0, 10.0}) {
    const double step = factor * power;
    if (step >= least && std::isfinite(step)) return step;
  }
  return 0.0;
}

std::vector<double> LinearTicks(double low, double high) {
  const double step = RoundStep((high - low) / kMostTicks);
  std::vector<double> ticks;
  if (!(step > 0.0)) return ticks;
  for (double k = std::ceil(low / step); k * step <= high; k += 1.0)
    ticks.push_back(k * step);
  return ticks;
}

/// Returns 1, 2 and 5 of each power of ten.
std::vector<double> LogarithmicTicks(double low, double high) {
  std::vector<double> ticks;
  const int first = static_cast<int>(std::floor(std::log10(low)));
  for (int power = first; power <= first + 5; ++power) {
    for (const double factor : {1.0, 2.0, 5.0}) {
      const double tick = factor * std::pow(10.0, power);
      if (tick >= low && tick <= high) ticks.push_back(tick);
    }
  }
  return ticks;
}

} // namespace

TravelScale TravelScale::Of(std::vector<double> travels) {
  TravelScale scale;
  if (travels.empty()) return scale;
  // Travels that are noise beside the greatest would take all colours.
  const double floor = kLeastPartOfGreatest * *std::max_element(travels.begin(), travels.end());
  const auto kept =
      std::remove_if(travels.begin(), travels.end(), [&](double t) { return t < floor; });
  scale.isCut = kept != travels.end();
  travels.erase(kept, travels.end());
  const auto middle = travels.begin() + static_cast<std::ptrdiff_t>(travels.size() / 2);
  std::nth_element(travels.begin(), middle, travels.end());
  scale.low = *std::min_element(travels.begin(), middle + 1);
  scale.high = *std::max_element(middle, travels.end());
  scale.isLogarithmic = scale.high / 8.0 > *middle;
  return scale;
}

double TravelScale::PartOf(double travel) const {
  if (!(high > low)) return 0.5;
  const double part = isLogarithmic ? std::log(std::max(travel, low) / low) / std::log(high / low)
                                    : (travel - low) / (high - low);
  return std::clamp(part, 0.0, 1.0);
}

Colour TravelScale::ColourAt(double part) {
  constexpr std::size_t kLast = std::size(kTravelColours) - 1;
  const double place = part * static_cast<double>(kLast);
  const std::size_t below = std::min(static_cast<std::size_t>(place), kLast - 1);
  const double rest = place - static_cast<double>(below);
  const Colour &a = kTravelColours[below], &b = kTravelColours[below + 1];
  return {a.red + rest * (b.red - a.red), a.green + rest * (b.green - a.green),
          a.blue + rest * (b.blue - a.blue)};
}

std::vector<double> TravelScale::Ticks() const {
  if (!(high - low > kLeastPart * high)) return {};
  return isLogarithmic ? LogarithmicTicks(low, high) : LinearTicks(low, high);
}

} // namespace gsl_view
