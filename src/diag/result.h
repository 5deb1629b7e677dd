// Copyright (c) 2026 the mimora developers.
//
// The result codes that operations answer with: 0, or 0x20000000 plus a number.
#ifndef MIMORA_DIAG_RESULT_H_
#define MIMORA_DIAG_RESULT_H_

#include <cstdint>

namespace mimora {

enum Result : int32_t {
  kOk = 0,
  kReadFailed = 0x20000001,
  kWriteFailed = 0x20000002,
  kInputNotOpened = 0x20000003,
  kOutputNotOpened = 0x20000004,
  kTempNotWritten = 0x20000007,
  kNotOpen = 0x20000259,       // the stream is missing or not open
  kHeaderFailed = 0x2000025A,  // the stream failed inside a header
  kHeaderCut = 0x2000025B,     // the data ended inside a header, which is kept
  kHeaderOdd = 0x2000025C,     // reserved for further header faults that are tolerated
  kNoBoundary = 0x2000025D,    // a multipart without a boundary is one opaque body
  kUnclassified = 0x200003E7,
};

}  // namespace mimora

#endif  // MIMORA_DIAG_RESULT_H_
