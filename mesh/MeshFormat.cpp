#include "MeshFormat.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace gsl_mesh {

namespace {

struct NamedFormat {
  std::string_view name;
  MeshFormat format;
};

constexpr NamedFormat kNamedFormats[] = {{"stl", MeshFormat::Stl},
                                         {"ply", MeshFormat::Ply},
                                         {"obj", MeshFormat::Obj},
                                         {"off", MeshFormat::Off}};

std::string LowerCase(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return lower;
}

} // namespace

MeshFormat MeshFormatNamed(std::string_view name) {
  const std::string lower = LowerCase(name);
  for (const NamedFormat& named : kNamedFormats) {
    if (named.name == lower) return named.format;
  }
  return MeshFormat::Unknown;
}

std::string_view NameOf(MeshFormat format) {
  for (const NamedFormat& named : kNamedFormats) {
    if (named.format == format) return named.name;
  }
  return {};
}

std::string MeshFormatNames(std::string_view prefix) {
  constexpr std::size_t kCount = std::size(kNamedFormats);
  std::string names;
  for (std::size_t k = 0; k < kCount; ++k) {
    if (k > 0) names += k + 1 == kCount ? " or " : ", ";
    names.append(prefix).append(kNamedFormats[k].name);
  }
  return names;
}

std::string ExtensionOf(const std::string& path) {
  const std::size_t dot = path.find_last_of("./");
  if (dot == std::string::npos || path[dot] == '/') return {};
  return LowerCase(std::string_view(path).substr(dot + 1));
}

} // namespace gsl_mesh
