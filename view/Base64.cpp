#include "Base64.h"

#include <algorithm>

namespace gsl_view {

namespace {

constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t kLineBytes = Base64Writer::kLine / 4 * 3;

/// Appends four characters for up to three bytes.
void AppendGroup(std::string_view bytes, std::string& text) {
  const auto byteAt = [&](std::size_t k) {
    return k < bytes.size() ? static_cast<unsigned>(static_cast<unsigned char>(bytes[k])) : 0u;
  };
  const unsigned bits = byteAt(0) << 16 | byteAt(1) << 8 | byteAt(2);
  const char group[] = {kDigits[bits >> 18], kDigits[bits >> 12 & 63u],
                        bytes.size() > 1 ? kDigits[bits >> 6 & 63u] : '=',
                        bytes.size() > 2 ? kDigits[bits & 63u] : '='};
  text.append(group, sizeof group);
}

void Append(std::string_view bytes, std::string& text) {
  for (std::size_t k = 0; k < bytes.size(); k += 3)
    AppendGroup(bytes.substr(k, 3), text);
}

} // namespace

void Base64Writer::WriteLine(std::string_view bytes) {
  m_line.clear();
  Append(bytes, m_line);
  m_line += '\n';
  m_sink(m_line);
}

void Base64Writer::Write(const void* data, std::size_t size) {
  std::string_view bytes(static_cast<const char*>(data), size);
  if (!m_kept.empty()) {
    const std::size_t taken = std::min(kLineBytes - m_kept.size(), bytes.size());
    m_kept += bytes.substr(0, taken);
    bytes.remove_prefix(taken);
    if (m_kept.size() < kLineBytes) return;
    WriteLine(m_kept);
    m_kept.clear();
  }
  for (; bytes.size() >= kLineBytes; bytes.remove_prefix(kLineBytes))
    WriteLine(bytes.substr(0, kLineBytes));
  m_kept = bytes;
}

void Base64Writer::Finish() {
  if (!m_kept.empty()) WriteLine(m_kept);
  m_kept.clear();
}

std::string Base64Of(std::string_view bytes) {
  std::string text;
  Append(bytes, text);
  return text;
}

} // namespace gsl_view
