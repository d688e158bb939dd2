#ifndef REFERENCE_SWEEP_SCENES_H
#define REFERENCE_SWEEP_SCENES_H

#include "SweepQuestion.h"

#include <cstddef>
#include <cstdint>
#include <string>

/// Scenes in which two bodies are about to touch, made to mislead an engine that sweeps them.
namespace reference {

/// How far the moving body may travel, relative to its first contact.
enum class Limit { None, Zero, BelowTravel, AtTravel, AboveTravel, HalfTravel };

struct Scene {
  std::string name; ///< family and seed, enough to make the scene again
  Question question;
  Limit limit = Limit::None;
};

std::size_t FamilyCount();
const char* FamilyName(std::size_t family);
/// Returns true for a family whose bodies touch before anything moves.
bool IsMated(std::size_t family);

/// Makes a scene, which is the same on every machine.
Scene MakeScene(std::size_t family, std::uint64_t seed);

/// Returns all numbers of a scene as hexadecimal floats, for a report.
std::string Describe(const Scene& scene);

} // namespace reference

#endif
