#include "atr_String.h"

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

atr_String::atr_String(const char* plain) : text(plain != nullptr ? plain : "") {}

atr_String::atr_String(const std::string& plain) : text(plain) {}

void atr_String::FindArguments() {
  int next = 1;
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != '%') continue;
    if (text[i + 1] == '%') {
      text.erase(i, 1);
      continue;
    }
    std::size_t end = i + 1;
    int position = 0;
    while (end < text.size() && IsDigit(text[end]) && position < 1000) {
      position = 10 * position + (text[end++] - '0');
    }
    const bool named = end > i + 1 && end < text.size() && text[end] == '$';
    if (named) ++end;
    if (!named && end > i + 1) continue;
    if (end >= text.size() || (text[end] != 'd' && text[end] != 's')) continue;
    open.push_back({named ? position : next++, text[end], i, end + 1 - i});
    i = end;
  }
}

bool atr_String::Substitute(int position, char kind, const std::string& value) {
  bool filled = false;
  for (std::size_t i = 0; i < open.size();) {
    if (open[i].position != position || open[i].kind != kind) {
      ++i;
      continue;
    }
    const OpenArgument argument = open[i];
    text.replace(argument.offset, argument.length, value);
    open.erase(open.begin() + static_cast<std::ptrdiff_t>(i));
    for (std::size_t later = i; later < open.size(); ++later) {
      open[later].offset = open[later].offset - argument.length + value.size();
    }
    filled = true;
  }
  return filled;
}

atr_String atr_translate(const char* format) {
  atr_String message(format);
  {
    Catalogue& catalogue = TheCatalogue();
    const std::lock_guard<std::mutex> lock(catalogue.mutex);
    const auto found = catalogue.translations.find(message.text);
    if (found != catalogue.translations.end()) message.text = found->second;
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
