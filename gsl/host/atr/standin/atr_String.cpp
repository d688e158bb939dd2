#include "atr_String.h"

#include <algorithm>
#include <map>
#include <mutex>

namespace {

struct Catalogue {
  std::mutex mutex;
  std::map<std::string, std::string> translations;
};

Catalogue& TheCatalogue() {
  static Catalogue catalogue;
  return catalogue;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

} // namespace

atr_String::atr_String(const char* plain) : m_text(plain != nullptr ? plain : "") {}

atr_String::atr_String(const std::string& plain) : m_text(plain) {}

void atr_String::FindArguments() {
  int next = 1;
  for (std::size_t i = 0; i + 1 < m_text.size(); ++i) {
    if (m_text[i] != '%') continue;
    if (m_text[i + 1] == '%') {
      m_text.erase(i, 1);
      continue;
    }
    std::size_t end = i + 1;
    int position = 0;
    while (end < m_text.size() && IsDigit(m_text[end]) && position < 1000) {
      position = 10 * position + (m_text[end++] - '0');
    }
    const bool named = end > i + 1 && end < m_text.size() && m_text[end] == '$';
    if (named) ++end;
    if (!named && end > i + 1) continue;
    if (end >= m_text.size() || (m_text[end] != 'd' && m_text[end] != 's')) continue;
    m_open.push_back({named ? position : next++, m_text[end], i, end + 1 - i});
    i = end;
  }
}

bool atr_String::Substitute(int position, char kind, const std::string& value) {
  const auto isMeant = [position, kind](const OpenArgument& argument) {
    return argument.position == position && argument.kind == kind;
  };
  const auto places = std::count_if(m_open.begin(), m_open.end(), isMeant);
  if (places == 0) return false;
  // Once there is room for every place, nothing below can fail halfway.
  m_text.reserve(m_text.size() + static_cast<std::size_t>(places) * value.size());
  for (std::size_t i = 0; i < m_open.size();) {
    if (!isMeant(m_open[i])) {
      ++i;
      continue;
    }
    const OpenArgument argument = m_open[i];
    m_text.replace(argument.offset, argument.length, value);
    m_open.erase(m_open.begin() + static_cast<std::ptrdiff_t>(i));
    for (std::size_t later = i; later < m_open.size(); ++later) {
      m_open[later].offset = m_open[later].offset - argument.length + value.size();
    }
  }
  return true;
}

atr_String atr_translate(const char* format) {
  atr_String message(format);
  {
    Catalogue& catalogue = TheCatalogue();
    const std::lock_guard<std::mutex> lock(catalogue.mutex);
    const auto found = catalogue.translations.find(message.m_text);
    if (found != catalogue.translations.end()) message.m_text = found->second;
  }
  message.FindArguments();
  return message;
}

bool atr_SubstituteFormat(atr_String& message, int position, const char* value) {
  return message.Substitute(position, 's', value != nullptr ? value : "");
}

bool atr_SubstituteFormat(atr_String& message, int position, int value) {
  return message.Substitute(position, 'd', std::to_string(value));
}

void atr_SetTranslation(const char* format, const char* translated) {
  if (format == nullptr) return;
  Catalogue& catalogue = TheCatalogue();
  const std::lock_guard<std::mutex> lock(catalogue.mutex);
  if (translated != nullptr) {
    catalogue.translations[format] = translated;
  } else {
    catalogue.translations.erase(format);
  }
}
