#include "atr_String.h"

#include <map>
#include <mutex>
#include <regex>

namespace {

std::mutex mutex;

std::map<std::string, std::string>& Language() {
  static std::map<std::string, std::string>& language = *new std::map<std::string, std::string>;
  return language;
}

} // namespace

atr_String::atr_String() = default;

atr_String::atr_String(const char* text) : m_joined(text != nullptr ? text : "") {
  m_pieces.push_back({0, 's', m_joined});
}

atr_String::~atr_String() = default;

atr_String::atr_String(const atr_String&) = default;

atr_String& atr_String::operator=(const atr_String&) = default;

const char* atr_String::CStr() const {
  return m_joined.c_str();
}

std::size_t atr_String::Length() const {
  return m_joined.size();
}

atr_String atr_String::xh_Parse(const char* format) {
  static const std::regex& argument = *new std::regex("%(%|(?:([0-9]+)\\$)?([ds]))");
  const std::string text = format;
  atr_String message;
  int next = 1;
  std::size_t done = 0;
  for (std::sregex_iterator i(text.begin(), text.end(), argument), end; i != end; ++i) {
    const auto at = static_cast<std::size_t>(i->position());
    message.m_pieces.push_back({0, 's', text.substr(done, at - done)});
    done = at + static_cast<std::size_t>(i->length());
    if ((*i)[1] == "%") {
      message.m_pieces.push_back({0, 's', "%"});
    } else {
      const int position = (*i)[2].matched ? std::stoi((*i)[2]) : next++;
      message.m_pieces.push_back({position, *(*i)[3].first, i->str()});
    }
  }
  message.m_pieces.push_back({0, 's', text.substr(done)});
  message.Join();
  return message;
}

bool atr_String::xh_Fill(int position, char kind, const std::string& value) {
  bool found = false;
  for (Piece& piece : m_pieces) {
    if (piece.position != position || piece.kind != kind) continue;
    piece = {0, 's', value};
    found = true;
  }
  Join();
  return found;
}

void atr_String::Join() {
  m_joined.clear();
  for (const Piece& piece : m_pieces)
    m_joined += piece.text;
}

atr_String atr_translate(const char* format) {
  const std::lock_guard<std::mutex> lock(mutex);
  const auto found = Language().find(format);
  return atr_String::xh_Parse(found != Language().end() ? found->second.c_str() : format);
}

bool atr_SubstituteFormat(atr_String& message, int position, const char* value) {
  return message.xh_Fill(position, 's', value != nullptr ? value : "");
}

bool atr_SubstituteFormat(atr_String& message, int position, int value) {
  return message.xh_Fill(position, 'd', std::to_string(value));
}

void xh_Translate(const char* format, const char* text) {
  const std::lock_guard<std::mutex> lock(mutex);
  Language()[format] = text;
}
