// Identities, texts, streams, messages, exceptions, the clock, memory.

#include "Conformance.h"
#include "HostAdapter.h"

#include <algorithm>
#include <atr_String.h>
#include <cls_RecordException.h>
#include <cls_Uid.h>
#include <cow_String.h>
#include <cstdint>
#include <cstring>
#include <gsl_utils.h>
#include <limits>
#include <mem_Memory.h>
#include <new>
#include <nex_AssertException.h>
#include <omi_gettimecounter.h>
#include <omu_ValueErrorException.h>
#include <pnt_debugPrint.h>
#include <thread>
#include <typ_DebugFlags.h>

namespace {

bool Equal(const cls_Uid& a, const cls_Uid& b) {
  return a == b;
}

void UidNull() {
  REQUIRE(Equal(cls_Uid(), cls_Uid()));
  REQUIRE(!Equal(cls_Uid(), cls_Uid::AllocateUid()));
  const cls_Uid kept = cls_Uid::AllocateUid();
  cls_Uid copy = kept;
  REQUIRE(Equal(copy, kept));
  copy = cls_Uid();
  REQUIRE(Equal(copy, cls_Uid()) && !Equal(copy, kept));
  copy = kept;
  REQUIRE(Equal(copy, kept));
}

void UidUnique() {
  constexpr std::size_t kThreads = 4;
  constexpr std::size_t kEach = 250;
  std::vector<std::vector<cls_Uid>> made(kThreads);
  std::vector<std::thread> threads;
  for (std::vector<cls_Uid>& uids : made) {
    threads.emplace_back([&uids] {
      for (std::size_t i = 0; i < kEach; ++i)
        uids.push_back(cls_Uid::AllocateUid());
    });
  }
  for (std::thread& thread : threads)
    thread.join();
  std::vector<cls_Uid> all = {cls_Uid()};
  for (const std::vector<cls_Uid>& uids : made) {
    REQUIRE(uids.size() == kEach);
    all.insert(all.end(), uids.begin(), uids.end());
  }
  // Only equality is promised, so each pair is compared.
  std::size_t equalPairs = 0;
  for (std::size_t i = 0; i < all.size(); ++i) {
    for (std::size_t k = 0; k < i; ++k)
      equalPairs += Equal(all[i], all[k]) ? 1 : 0;
  }
  REQUIRE(equalPairs == 0);
}

void RequireBytes(const cow_String& text, const std::string& expected) {
  REQUIRE(text.Length() == expected.size());
  REQUIRE(std::memcmp(text.CStr(), expected.data(), expected.size()) == 0);
  REQUIRE(text.CStr()[expected.size()] == '\0');
}

void Strings() {
  REQUIRE(cow_String().CStr() != nullptr);
  RequireBytes(cow_String(), "");
  const std::string shortText = "plane";
  const std::string longText(300, 'x');
  const std::string withZero("a\0b", 3);
  for (const std::string& expected : {shortText, longText, withZero, std::string()}) {
    const cow_String text(expected.data(), expected.size());
    RequireBytes(text, expected);
    cow_String copy(text);
    RequireBytes(copy, expected);
    copy = cow_String("another");
    RequireBytes(copy, "another");
    RequireBytes(text, expected);
    copy = text;
    RequireBytes(copy, expected);
    const cow_String& same = copy;
    copy = same;
    RequireBytes(copy, expected);
  }
  RequireBytes(cow_String("up to the zero\0and no further"), "up to the zero");
}

void StringsCompare() {
  REQUIRE(cow_String("plane") == cow_String("plane", 5));
  REQUIRE(cow_String() == cow_String(""));
  REQUIRE(!(cow_String("plane") == cow_String("Plane")));
  REQUIRE(!(cow_String("plane") == cow_String("plane 2")));
  REQUIRE(!(cow_String("a\0b", 3) == cow_String("a\0c", 3)));
  REQUIRE(!(cow_String("a") == cow_String("a\0", 2)));
}

std::string Written(double value) {
  const std::unique_ptr<host_adapter::Output> output = host_adapter::MakeOutput();
  output->Stream() << aio_FormattedDouble{value, 0, 15};
  output->Stream().flush();
  return output->Delivered();
}

void OutputOfNumbers() {
  REQUIRE_TEXT(Written(0.0), "0");
  REQUIRE_TEXT(Written(-0.0), "-0");
  REQUIRE_TEXT(Written(1.0), "1");
  REQUIRE_TEXT(Written(-2.5), "-2.5");
  REQUIRE_TEXT(Written(1.0 / 3.0), "0.333333333333333");
  REQUIRE_TEXT(Written(2.0 / 3.0), "0.666666666666667");
  REQUIRE_TEXT(Written(0.0001), "0.0001");
  REQUIRE_TEXT(Written(0.00001), "1e-05");
  REQUIRE_TEXT(Written(123456789012345.0), "123456789012345");
  REQUIRE_TEXT(Written(1234567890123456.0), "1.23456789012346e+15");
  REQUIRE_TEXT(Written(1e300), "1e+300");
}

void OutputOfText() {
  const std::unique_ptr<host_adapter::Output> output = host_adapter::MakeOutput();
  aio_ostream& out = output->Stream();
  aio_ostream& returned = out << "a:\t" << ' ' << aio_FormattedDouble{0.5, 0, 15} << '\n';
  REQUIRE(&returned == &out);
  out.flush();
  REQUIRE_TEXT(output->Delivered(), "a:\t 0.5\n");
  out << "more" << '%' << "d";
  out.flush();
  REQUIRE_TEXT(output->Delivered(), "a:\t 0.5\nmore%d");
}

void InputOfText() {
  const std::unique_ptr<host_adapter::Input> input = host_adapter::MakeInput("a\n \xE9");
  aio_istream& in = input->Stream();
  REQUIRE(in.get() == 'a');
  REQUIRE(in.get() == '\n');
  REQUIRE(in.get() == ' ');
  REQUIRE(in.get() == 0xE9);
  REQUIRE(in.get() < 0);
  REQUIRE(in.get() < 0);
}

void DebugOutput() {
  REQUIRE(&pnt_debugPrint() == &pnt_debugPrint());
  REQUIRE(typ_DebugFlags::GetDebugFlags(778) == typ_DebugFlags::GetDebugFlags(778));
  REQUIRE(typ_DebugFlags::GetDebugFlags(-31) == 0);
}

std::string TextOf(const atr_String& message) {
  return std::string(message.CStr(), message.Length());
}

void Messages() {
  atr_String message = atr_translate("value %d of %s is 100%%");
  REQUIRE(atr_SubstituteFormat(message, 1, -7));
  // The text holds what looks like arguments.
  REQUIRE(atr_SubstituteFormat(message, 2, "%d %1$s 50%"));
  REQUIRE_TEXT(TextOf(message), "value -7 of %d %1$s 50% is 100%");
  REQUIRE(!atr_SubstituteFormat(message, 1, 8));
  atr_String other = atr_translate("only %s");
  REQUIRE(!atr_SubstituteFormat(other, 1, 8));
  REQUIRE(!atr_SubstituteFormat(other, 2, "text"));
  const atr_String copy = other;
  REQUIRE(atr_SubstituteFormat(other, 1, "text"));
  REQUIRE_TEXT(TextOf(other), "only text");
  REQUIRE(TextOf(copy) != "only text");
}

void MessagesInOtherLanguages() {
  host_adapter::Translate("first %s, then %s", "erst %2$s, dann %1$s");
  atr_String message = atr_translate("first %s, then %s");
  REQUIRE(atr_SubstituteFormat(message, 1, "A") && atr_SubstituteFormat(message, 2, "B"));
  REQUIRE_TEXT(TextOf(message), "erst B, dann A");
}

/// Throws a `Kind` and requires that `Base` catches it in its own class.
template <class Kind, class Base>
void RequireCaught() {
  const cls_Uid uid = cls_Uid::AllocateUid();
  bool caught = false;
  try {
    nex_Exception::Throw(Kind(cow_String("why"), uid), "unit", 12);
  } catch (const Base& error) {
    caught = dynamic_cast<const Kind*>(&error) != nullptr;
    const host_adapter::Thrown thrown = host_adapter::Describe(error);
    REQUIRE_TEXT(thrown.message, "why");
    REQUIRE_TEXT(thrown.sourceUnit, "unit");
    REQUIRE(thrown.line == 12);
    REQUIRE(Equal(thrown.uid, uid));
  }
  REQUIRE(caught);
}

void Exceptions() {
  RequireCaught<nex_AssertException, nex_AssertException>();
  RequireCaught<nex_AssertException, nex_Exception>();
  RequireCaught<cls_RecordException, nex_Exception>();
  RequireCaught<cls_RecordException, nex_CommandException>();
  RequireCaught<omu_ValueErrorException, omu_ValueErrorException>();
  RequireCaught<omu_ValueErrorException, nex_CommandException>();
  RequireCaught<omu_ValueErrorException, nex_Exception>();
}

void ExceptionsOfTheLibrary() {
  bool caught = false;
  try {
    gsl_Truncate(1.0, 0);
  } catch (const nex_AssertException& error) {
    caught = true;
    const host_adapter::Thrown thrown = host_adapter::Describe(error);
    REQUIRE_TEXT(thrown.message, "places > 0");
    REQUIRE_TEXT(thrown.sourceUnit, "generated/module/gsl/impl/gsl_utils");
    REQUIRE(thrown.line == 1005);
    REQUIRE(Equal(thrown.uid, cls_Uid()));
  }
  REQUIRE(caught);
}

void Clock() {
  double last = omi_gettimecounter();
  const double first = last;
  for (int i = 0; i < 1000; ++i) {
    const double now = omi_gettimecounter();
    REQUIRE(now >= last);
    last = now;
  }
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  REQUIRE(omi_gettimecounter() > first);
}

bool IsAligned(const void* block, std::size_t alignment) {
  return reinterpret_cast<std::uintptr_t>(block) % alignment == 0;
}

void Memory() {
  for (std::size_t size = 1; size <= 5000; size += 7) {
    void* const block = ::operator new(size);
    const bool aligned = IsAligned(
        block, std::min<std::size_t>(__STDCPP_DEFAULT_NEW_ALIGNMENT__, alignof(std::max_align_t)));
    std::memset(block, 0xA5, size);
    ::operator delete(block);
    REQUIRE(aligned);
    void* const scratch = mem_Malloc(size);
    REQUIRE(scratch != nullptr);
    const bool isScratchAligned = IsAligned(scratch, alignof(std::max_align_t));
    std::memset(scratch, 0x5A, size);
    mem_Free(scratch);
    REQUIRE(isScratchAligned);
  }
  REQUIRE(mem_Malloc(0) == nullptr);
  mem_Free(nullptr);
}

// AddressSanitizer ends a program that asks for too much.
#if defined(__SANITIZE_ADDRESS__)
constexpr bool kCanAskForTooMuch = false;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
constexpr bool kCanAskForTooMuch = false;
#else
constexpr bool kCanAskForTooMuch = true;
#endif
#else
constexpr bool kCanAskForTooMuch = true;
#endif

void MemoryRefused() {
  if (!kCanAskForTooMuch) return;
  // It is read at run time, so that no compiler judges the size.
  const volatile std::size_t tooMuch = std::numeric_limits<std::size_t>::max() / 4;
  REQUIRE(::operator new(tooMuch, std::nothrow) == nullptr);
  REQUIRE(mem_Malloc(tooMuch) == nullptr);
  bool refused = false;
  try {
    ::operator delete(::operator new(tooMuch));
  } catch (const std::bad_alloc&) {
    refused = true;
  }
  REQUIRE(refused);
}

} // namespace

std::vector<Case> BasicCases() {
  return {
      {"uid_null", "cls_Uid() is null: equal to itself, and to no uid that is allocated", &UidNull},
      {"uid_unique", "cls_Uid::AllocateUid is safe from any thread and never repeats", &UidUnique},
      {"string", "a cow_String keeps its bytes, and copies are independent", &Strings},
      {"string_equality", "texts are equal when all their bytes are", &StringsCompare},
      {"output_numbers", "aio_FormattedDouble writes 15 digits in the general form",
       &OutputOfNumbers},
      {"output_text", "<< writes at once and in order, and flush delivers", &OutputOfText},
      {"input", "get returns each byte from 0 to 255, then a negative number", &InputOfText},
      {"debug", "there is one debug stream, and a flag that nobody set is 0", &DebugOutput},
      {"message", "arguments are filled in once, by position and kind", &Messages},
      {"message_translated", "atr_translate uses the user's language", &MessagesInOtherLanguages},
      {"exception", "nex_Exception::Throw keeps the class, the message, the uid and the place",
       &Exceptions},
      {"exception_library", "exceptions are caught across the libraries", &ExceptionsOfTheLibrary},
      {"clock", "omi_gettimecounter never goes back, and goes on", &Clock},
      {"memory", "operator new and mem_Malloc align blocks for every type", &Memory},
      {"memory_refused",
       "without memory operator new throws std::bad_alloc or returns null, and mem_Malloc null",
       &MemoryRefused},
  };
}
