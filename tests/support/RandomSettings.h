#ifndef RANDOM_SETTINGS_H
#define RANDOM_SETTINGS_H

#include "RandomNumbers.h"
#include "ScopedSettings.h"
#include "gsl_Vector.h"

#include <cmath>
#include <cstdio>
#include <limits>
#include <string>

/// The library's settings, drawn again for every case of a test against a second implementation.
/// They are the defaults, or each is 0, 1 (the length of a unit vector), a neighbour of 1, or a
/// number up to 10.
class RandomSettings {
public:
  explicit RandomSettings(std::uint64_t seed) : m_random(seed) {}

  void Draw() {
    const bool usual = m_random.Chance(0.4);
    m_settings->linearTolerance = usual ? 1e-6 : Tolerance(1e-6);
    m_settings->zeroTolerance = usual ? 1e-12 : Tolerance(1e-12);
    m_settings->cosineTolerance = usual ? 1e-10 : Tolerance(1e-10);
  }

  /// Sometimes changes a component or the magnitude, so that the two do not agree.
  void MakeStale(gsl_Vector& v) {
    if (!m_random.Chance(0.25)) return;
    if (m_random.Chance(0.6)) {
      const auto component = static_cast<unsigned int>(m_random.Below(3));
      v[component] = v[component] * Factor();
    } else {
      const double odd[] = {0.0,
                            -1.0,
                            1e-7,
                            1e300,
                            std::numeric_limits<double>::infinity(),
                            std::numeric_limits<double>::quiet_NaN()};
      v.magnitude = m_random.Chance(0.2) ? odd[m_random.Below(6)] : v.magnitude * Factor();
    }
  }

  const gsl_Util& Get() const { return omi_Singleton<gsl_Util>::Instance(); }

  std::string Describe() const {
    char text[120];
    std::snprintf(text, sizeof text, "linear %a zero %a cosine %a\n", m_settings->linearTolerance,
                  m_settings->zeroTolerance, m_settings->cosineTolerance);
    return text;
  }

private:
  ScopedSettings m_settings;
  RandomNumbers m_random;

  double Factor() { return std::pow(10.0, m_random.In(-3.0, 3.0)); }

  double Tolerance(double usual) {
    const double special[] = {0.0, 1.0, numbers::Below(1.0), numbers::Above(1.0)};
    const double kind = m_random.Unit();
    if (kind < 0.3) return usual;
    if (kind < 0.6) return special[m_random.Below(4)];
    return kind < 0.8 ? std::pow(10.0, m_random.In(-16.0, 1.0)) : m_random.In(0.0, 10.0);
  }
};

#endif
