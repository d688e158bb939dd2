#ifndef GSL_VIEW_BASE64_H
#define GSL_VIEW_BASE64_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace gsl_view {

/// Receives a document part after part.
using PageSink = std::function<void(std::string_view)>;

/// Writes bytes as base64 (RFC 4648, with padding), in lines of at most kLine characters that each
/// end with a newline. It keeps less than one line of the bytes.
class Base64Writer {
public:
  static constexpr std::size_t kLine = 4096;

  /// The sink must outlive the writer.
  explicit Base64Writer(const PageSink& sink) : m_sink(sink) {}

  void Write(const void* data, std::size_t size);

  /// Writes the last line and the padding. Nothing may be written afterwards.
  void Finish();

private:
  void WriteLine(std::string_view bytes);

  const PageSink& m_sink;
  std::string m_kept;
  std::string m_line;
};

/// Returns bytes as base64 in one line, without a newline.
std::string Base64Of(std::string_view bytes);

} // namespace gsl_view

#endif
