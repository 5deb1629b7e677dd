// Copyright (c) 2026 the mimora developers.
//
// Dates as mail headers write them (RFC 822 5.1).
#ifndef MIMORA_UTIL_RFC822_DATE_H_
#define MIMORA_UTIL_RFC822_DATE_H_

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mimora {

// Seconds since 1970 began, UTC, modulo 2^32; 0 for a text that is no date and for a time before.
// A year before 1970 stands for the second before 1970 began, from which a zone in the west still
// leads into 1970. What stands in front of the first digit is passed over, and so is what follows
// the zone. A zone that is not known counts as UTC. Day, minutes and seconds may be any number:
// they carry over.
uint32_t ParseRfc822Date(std::string_view text);

// Room for every date that is written, its zero included.
constexpr size_t kRfc822DateSize = 40;

// Writes a time as local date and time. Behind it stands the local zone of now, as what has to be
// added to the local time to get UTC: "-0100" east of Greenwich. ParseRfc822Date, as mail does,
// takes the sign for the opposite.
void WriteRfc822Date(uint32_t time, char* text);

}  // namespace mimora

#endif  // MIMORA_UTIL_RFC822_DATE_H_
