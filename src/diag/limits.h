// Copyright (c) 2026 the mimora developers.
//
// What a sender may not choose without bound. Every limit is soft: the mail beyond it is kept,
// only less of its structure is seen.
#ifndef MIMORA_DIAG_LIMITS_H_
#define MIMORA_DIAG_LIMITS_H_

#include <cstddef>
#include <cstdint>

namespace mimora {

// The buffer of a stream whose maker asks for none.
constexpr int64_t kDefaultBufferSize = 16384;

// A part more than this many levels below the root is a leaf, whatever its type says: parsing,
// writing and destroying a tree go down level by level.
constexpr int kDeepestLevel = 100;

// Once a message has this many parts (the message itself not counted), the rest of each multipart
// is one last leaf.
constexpr int kMostParts = 10'000;

// Files listed from the bodies of one message. Uuencoded blocks beyond them stay text, further TNEF
// attachments stay inside their stream.
constexpr size_t kMostEmbeddedFiles = 10'000;

// Header fields listed of one message, all parts together: one takes two bytes in the mail and many
// times as much in memory. Of what comes behind them, each header lists only those fields that tell
// what its body is.
constexpr size_t kMostHeaderFields = 100'000;

// Pieces of one parameter that are joined (RFC 2231 3): one takes a few bytes in the mail, too.
constexpr size_t kMostParameterPieces = 10'000;

// The name of a file embedded in a TNEF stream is cut here.
constexpr int64_t kLongestTnefName = 4096;

// White space behind a closing delimiter is looked through up to this many bytes, the longest line
// that mail may have; with more of it the line closes as well.
constexpr int64_t kLongestDelimiterPadding = 998;

// A longer line is neither the first line of a uuencoded block nor one of its data lines.
constexpr size_t kLongestUuLine = 1000;

// Blanks in front of a line end are dropped from quoted-printable text; of a longer run of them,
// every full piece of this size is text.
constexpr size_t kLongestHeldBlanks = 4096;

// Elements of an HTML text that are nested deeper are only counted: their text is shown, but not in
// columns.
constexpr size_t kDeepestElement = 512;

// A larger file in a certificate store is passed over.
constexpr size_t kLargestKeyFile = 4 << 20;

}  // namespace mimora

#endif  // MIMORA_DIAG_LIMITS_H_
