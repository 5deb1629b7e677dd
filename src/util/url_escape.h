// Copyright (c) 2026 the mimora developers.
//
// Percent signs in place of the few characters that have a meaning in the values of a URL.
#ifndef MIMORA_UTIL_URL_ESCAPE_H_
#define MIMORA_UTIL_URL_ESCAPE_H_

#include <string>
#include <string_view>

namespace mimora {

// Each of ":% ?+&=" becomes a percent sign and two lower-case hexadecimal digits. All other bytes
// stay.
std::string EscapeUrl(std::string_view text);

// A percent sign and the two characters behind it become a byte: what is no hexadecimal digit, or
// missing, counts as 0. One at the very end stays. A plus sign becomes a space.
std::string UnEscapeUrl(std::string_view text);

}  // namespace mimora

#endif  // MIMORA_UTIL_URL_ESCAPE_H_
