// Copyright (c) 2026 the mimora developers.
//
// Any text as a date, and any time as a text, in several zones.
#include <cstring>

#include "fuzz.h"
#include "platform/platform.h"
#include "util/rfc822_date.h"

namespace mimora::fuzz {
namespace {

// Without summer time: the zone that is written is the one of now.
constexpr const char* kZones[] = {"UTC", "AAA-1", "BBB+5", "CCC-5:45", "DDD+9:30", "EEE-14"};
constexpr uint32_t kDay = 86400;

void CheckWritten(uint32_t time) {
  char text[kRfc822DateSize];
  std::memset(text, 'x', sizeof text);
  WriteRfc822Date(time, text);
  const auto* const zero = static_cast<const char*>(std::memchr(text, '\0', sizeof text));
  FUZZ_CHECK(zero != nullptr);
  if (time < kDay || time > UINT32_MAX - kDay) return;
  // The zone is read as mail means it, which is the opposite of how it is written.
  const auto off = static_cast<uint32_t>(-120 * platform::TimeZoneBias());
  FUZZ_CHECK(ParseRfc822Date({text, zero}) == time + off);
}

}  // namespace

void CheckInput(Input input) {
  ::setenv("TZ", input.Choose(kZones), 1);
  const std::string text(input.Rest());
  const uint32_t time = ParseRfc822Date(text);
  FUZZ_CHECK(ParseRfc822Date("Sat, " + text) == time);
  CheckWritten(time);
  CheckWritten(input.Number());
}

}  // namespace mimora::fuzz
