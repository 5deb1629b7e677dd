// Copyright (c) 2026 the mimora developers.
#include "util/rfc822_date.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <optional>

#include "platform/ascii.h"
#include "platform/platform.h"

namespace mimora {
namespace {

constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::array<const char*, 7> kWeekdays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};

// ---- Zones --------------------------------------------------------------------------------------

struct Zone {
  std::string_view name;
  int hours;  // east of Greenwich
};

// Stored times depend on these values, also where others are usual today (BST, EAST, SST).
constexpr Zone kZones[] = {
    {"NZDT", 13},  {"IDLE", 12}, {"NZST", 12}, {"NZT", 12},   {"EADT", 11}, {"GST", 10},
    {"JST", 9},    {"CCT", 8},   {"WADT", 8},  {"WAST", 7},   {"ZP6", 6},   {"ZP5", 5},
    {"ZP4", 4},    {"BT", 3},    {"EET", 2},   {"MEST", 2},   {"MESZ", 2},  {"FST", 2},
    {"SST", 2},    {"CEST", 2},  {"CET", 1},   {"FWT", 1},    {"MET", 1},   {"MEWT", 1},
    {"SWT", 1},    {"UT", 0},    {"UTC", 0},   {"GMT", 0},    {"WET", 0},   {"WAT", -1},
    {"BST", -1},   {"AT", -2},   {"ADT", -3},  {"AST", -4},   {"EDT", -4},  {"EST", -5},
    {"CDT", -5},   {"CST", -6},  {"MDT", -6},  {"MST", -7},   {"PDT", -7},  {"PST", -8},
    {"YDT", -8},   {"YST", -9},  {"HDT", -9},  {"AHST", -10}, {"CAT", -10}, {"HST", -10},
    {"EAST", -10}, {"NT", -11},  {"IDLW", -12}};
static_assert(std::size(kZones) == 51);

// As atoi: white space, a sign, digits. Large numbers stay at the limit.
int32_t NumberAtStart(std::string_view text) {
  text = TrimLeft(text, [](char c) { return IsSpace(c) || c == '\v' || c == '\f'; });
  const bool negative = text.starts_with('-');
  if (negative || text.starts_with('+')) text.remove_prefix(1);
  int64_t number = 0;
  for (const char c : text) {
    if (!IsDigit(c)) break;
    number = std::min<int64_t>(number * 10 + (c - '0'), INT32_MAX);
  }
  return static_cast<int32_t>(negative ? -number : number);
}

// Minutes east of Greenwich. What is not known counts as 0.
int32_t ZoneMinutes(std::string_view token) {
  if (token.starts_with('+') || token.starts_with('-')) {
    if (token.size() < 5) return 0;
    const int32_t minutes =
        NumberAtStart(token.substr(1, 2)) * 60 + NumberAtStart(token.substr(3, 2));
    return token.front() == '-' ? -minutes : minutes;
  }
  const auto* const zone = std::find_if(std::begin(kZones), std::end(kZones),
                                        [token](const Zone& z) { return z.name == token; });
  return zone != std::end(kZones) ? zone->hours * 60 : 0;
}

// ---- Reading ------------------------------------------------------------------------------------

// Goes through the text from left to right.
class Reader {
 public:
  explicit Reader(std::string_view text) : rest_(text) {}

  bool AtEnd() const { return rest_.empty(); }

  void SkipToDigit() {
    rest_ = TrimLeft(rest_, [](char c) { return !IsDigit(c); });
  }

  // False at the end of the text.
  bool SkipSpace() {
    rest_ = TrimLeft(rest_, IsSpace);
    return !AtEnd();
  }

  bool Skip(char c) {
    if (!rest_.starts_with(c)) return false;
    rest_.remove_prefix(1);
    return true;
  }

  std::string_view Digits() { return TakeWhile(IsDigit); }
  std::string_view Word() {
    return TakeWhile([](char c) { return !IsSpace(c); });
  }

 private:
  template <typename IsOfKind>
  std::string_view TakeWhile(IsOfKind is_of_kind) {
    const std::string_view behind = TrimLeft(rest_, is_of_kind);
    const std::string_view taken = rest_.substr(0, rest_.size() - behind.size());
    rest_ = behind;
    return taken;
  }

  std::string_view rest_;
};

struct Date {
  int64_t year = 0, month = 0, day = 0;  // the month is counted from 0
  int64_t hour = 0, minute = 0, second = 0;
};

bool ReadMonth(Reader& reader, Date& date) {
  if (!reader.SkipSpace()) return false;
  const std::string_view name = reader.Word();
  const auto* const month = std::find_if(kMonths.begin(), kMonths.end(),
                                         [name](auto m) { return EqualIgnoringCase(m, name); });
  date.month = month - kMonths.begin();
  return month != kMonths.end() && !reader.AtEnd();
}

// Years of two digits are those from 1950 to 2049, and those up to 1900 count from there.
bool ReadYear(Reader& reader, Date& date) {
  if (!reader.SkipSpace()) return false;
  const std::string_view digits = reader.Digits();
  const int64_t year = NumberAtStart(digits);
  date.year = year < 50 ? year + 2000 : year <= 1900 ? year + 1900 : year;
  return !digits.empty();
}

bool ReadTime(Reader& reader, Date& date) {
  if (!reader.SkipSpace()) return false;
  date.hour = NumberAtStart(reader.Digits());
  if (date.hour > 24 || !reader.Skip(':')) return false;
  const std::string_view minute = reader.Digits();
  date.minute = NumberAtStart(minute);
  if (minute.empty()) return false;
  if (!reader.Skip(':')) return true;
  const std::string_view second = reader.Digits();
  date.second = NumberAtStart(second);
  return !second.empty();
}

constexpr bool IsLeapYear(int64_t year) {
  return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

// Since 1970 began, as if it were UTC. All earlier years are one moment, the second before.
constexpr int64_t Seconds(const Date& date) {
  if (date.year < 1970) return -1;
  constexpr int64_t kDaysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};
  constexpr int64_t kDaysTo1970 = 719528;
  const int64_t last = date.year - 1;
  const int64_t leap_day = IsLeapYear(date.year) && date.month > 1 ? 1 : 0;
  const int64_t days = 365 * date.year + last / 4 - last / 100 + last / 400 - kDaysTo1970 +
                       kDaysBefore[date.month] + leap_day + date.day;
  return ((days * 24 + date.hour) * 60 + date.minute) * 60 + date.second;
}
static_assert(Seconds({.year = 1970, .day = 1}) == 0);

}  // namespace

uint32_t ParseRfc822Date(std::string_view text) {
  Reader reader(text);
  Date date;
  reader.SkipToDigit();
  date.day = NumberAtStart(reader.Digits());
  if (!ReadMonth(reader, date) || !ReadYear(reader, date) || !ReadTime(reader, date)) return 0;
  reader.SkipSpace();
  const int64_t seconds = Seconds(date) - int64_t{60} * ZoneMinutes(reader.Word());
  return seconds < 0 ? 0 : static_cast<uint32_t>(seconds);
}

void WriteRfc822Date(uint32_t time, char* text) {
  const int32_t bias = platform::TimeZoneBias();
  const platform::LocalTime t = platform::LocalTimeOf(time);
  std::snprintf(text, kRfc822DateSize, "%s, %d %s %d %d:%.2d:%.2d %+.2d%.2d",
                kWeekdays[static_cast<size_t>(t.weekday)], t.day,
                kMonths[static_cast<size_t>(t.month - 1)], t.year, t.hour, t.minute, t.second,
                bias / 60, std::abs(bias) % 60);
}

}  // namespace mimora
