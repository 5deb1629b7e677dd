// Copyright (c) 2026 the mimora developers.
#include "util/rfc822_date.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <ctime>
#include <random>
#include <string>

#include "platform/platform.h"

namespace mimora::testing {
namespace {

constexpr const char* kZones[] = {"UTC",          "Europe/Prague",       "America/New_York",
                                  "Asia/Kolkata", "Australia/Lord_Howe", "No/Such_Zone",
                                  "XYZ-12:59",    "America/St_Johns",    "AAA+0:30"};

// For as long as it lives.
class LocalZone {
 public:
  explicit LocalZone(const char* name) {
    if (const char* zone = std::getenv("TZ")) before_ = zone;
    ::setenv("TZ", name, 1);
  }
  ~LocalZone() {
    before_ ? ::setenv("TZ", before_->c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
  }
  LocalZone(const LocalZone&) = delete;
  LocalZone& operator=(const LocalZone&) = delete;

 private:
  std::optional<std::string> before_;
};

std::string Formatted(const char* format, time_t time) {
  tm local{};
  ::localtime_r(&time, &local);
  char text[100];
  std::strftime(text, sizeof text, format, &local);
  return text;
}

std::string Written(uint32_t time) {
  char text[kRfc822DateSize + 1];
  text[kRfc822DateSize] = '#';
  WriteRfc822Date(time, text);
  EXPECT_EQ(text[kRfc822DateSize], '#');
  return text;
}

TEST(ParseRfc822Date, ReadsTheseTexts) {
  constexpr uint32_t kMorning = 1258194030;  // 14 Nov 2009 10:20:30
  const struct {
    std::string_view text;
    uint32_t want;
  } cases[] = {
      {"Sat, 14 Nov 2009 10:20:30 +0100", kMorning - 3600},
      {"14 nov 2009 10:20:30 GMT", kMorning},
      {"14 NOV 2009 10:20:30 gmt", kMorning},
      {"14 Nov 2009 10:20 EST", kMorning - 30 + 5 * 3600},
      {"14 November 2009 10:20:30", 0},
      {"14 Nov 2009 25:00:00", 0},
      {"14 Nov 2009 24:00:00", 1258243200},
      {"15 Nov 2009 00:00:00", 1258243200},
      {"1 Jan 1970 00:00:00 +0100", 0},
      {"1 Jan 1970 00:00:01", 1},
      // Passed over: what is in front, white space, what is behind.
      {"\xC3\xA9+-x,\t14\r\n Nov\t2009 \n10:20:30 \r\n GMT (comment)", kMorning},
      {"14Nov 2009 10:20:30", kMorning},
      {"14 Nov 200910:20:30", 3020205774},
      {"14 Nov 2009 10:20:30+0000", kMorning},
      // Years.
      {"14 Nov 09 10:20:30", kMorning},
      {"14 Nov 49 10:20:30", 2520498030},
      {"14 Nov 99 10:20:30", 942574830},
      {"1 Jan 100 00:00:00", 946684800},
      {"1 Jan 1901 00:00:00", 0},
      {"31 Dec 1969 23:59:59 -0001", 59},
      {"29 Feb 2000 00:00:00", 951782400},
      {"7 Feb 2106 06:28:15", UINT32_MAX},
      {"7 Feb 2106 06:28:17", 1},
      // Numbers that carry over, or are too large for anything.
      {"0 Dec 2009 10:20:30", 1259576430},
      {"14 Nov 2009 09:79:90", kMorning},
      {"14 Nov 2009 99999999999999999999:20:30", 0},
      {"99999999999999999999 Nov 99999999999999999999 24:99999999999999999999 ?", 2251964484},
      // Zones.
      {"14 Nov 2009 10:20:30 -0000", kMorning},
      {"14 Nov 2009 10:20:30 +01", kMorning},
      {"14 Nov 2009 10:20:30 +0530x", kMorning - 19800},
      {"14 Nov 2009 10:20:30 -0930", kMorning + 34200},
      {"14 Nov 2009 10:20:30 +1x0y", kMorning - 3600},
      {"14 Nov 2009 10:20:30 +-1-1", kMorning + 3660},
      {"14 Nov 2009 10:20:30 NZDT", kMorning - 13 * 3600},
      {"14 Nov 2009 10:20:30 BST", kMorning + 3600},
      {"14 Nov 2009 10:20:30 EAST", kMorning + 36000},
      {"14 Nov 2009 10:20:30 IDLW", kMorning + 12 * 3600},
      {"14 Nov 2009 10:20:30 ESTX", kMorning},
      // Cut off, or out of order.
      {"", 0},
      {"Sat, ", 0},
      {"14", 0},
      {"14 Nov", 0},
      {"14 Nov ", 0},
      {"14 Nov 2009", 0},
      {"14 Nov 2009 10", 0},
      {"14 Nov 2009 10:", 0},
      {"14 Nov 2009 10:20:", 0},
      {"14 Nov 2009 10 :20", 0},
      {"14 Nov 2009 :20:30", kMorning - 36000},
      {"14 Nov x2009 10:20:30", 0},
      {"14 11 2009 10:20:30", 0},
      {"14 No 2009 10:20:30", 0},
      {"Nov 14 2009 10:20:30", 0},
  };
  for (const auto& c : cases) EXPECT_EQ(ParseRfc822Date(c.text), c.want) << c.text;
}

TEST(ParseRfc822Date, ReadsWhatTheCLibraryWritesInAnyZone) {
  std::mt19937 random(1);
  for (const char* zone : kZones) {
    const LocalZone local(zone);
    ::tzset();
    for (int i = 0; i < 2000; ++i) {
      const auto time = static_cast<uint32_t>(86400 + random() % (UINT32_MAX - 2 * 86400));
      const std::string text = Formatted("%a, %d %b %Y %H:%M:%S %z", time);
      ASSERT_EQ(ParseRfc822Date(text), time) << zone << ": " << text;
    }
  }
}

TEST(WriteRfc822Date, WritesWhatTheCLibraryWouldAndTheZoneOfNowTheOtherWayRound) {
  std::mt19937 random(2);
  for (const char* zone : kZones) {
    const LocalZone local(zone);
    for (int i = 0; i < 2000; ++i) {
      const auto time = static_cast<uint32_t>(random());
      const std::string text = Written(time);  // looks at TZ
      const std::string now = Formatted("%z", std::time(nullptr));
      const bool is_zero = now.substr(1, 2) == "00";  // a sign is only that of whole hours
      const std::string sign = now[0] == '-' || is_zero ? "+" : "-";
      std::string want = Formatted("%a, %e %b %Y %k:%M:%S ", time) + sign + now.substr(1);
      for (size_t at = 0; (at = want.find("  ", at)) != std::string::npos;) want.erase(at, 1);
      ASSERT_EQ(text, want) << zone;
    }
  }
}

TEST(WriteRfc822Date, FollowsChangesOfTheZone) {
  const std::pair<const char*, const char*> cases[] = {
      {"UTC", "Thu, 1 Jan 1970 0:00:00 +0000"},
      {"AAA-1", "Thu, 1 Jan 1970 1:00:00 -0100"},
      {"BBB+5", "Wed, 31 Dec 1969 19:00:00 +0500"},
      {"CCC-5:30", "Thu, 1 Jan 1970 5:30:00 -0530"},
      {"Nowhere", "Thu, 1 Jan 1970 0:00:00 +0000"}};
  for (const auto& [zone, want] : cases) {
    const LocalZone local(zone);
    EXPECT_EQ(Written(0), want);
  }
}

}  // namespace
}  // namespace mimora::testing
