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
  kTempNotCreated = 0x20000008,
  kTempNotOpened = 0x20000009,
  kBadBodypart = 0x2000000B,
  kBadOutstream = 0x2000000C,
  kNoBodyData = 0x200001F4,
  kNoBodyFileName = 0x200001F5,
  kBodyFileNotOpened = 0x200001F6,
  kNoBodyMemory = 0x200001F7,
  kNoSuchAttachment = 0x200001F8,
  kUnknownCharset = 0x200001F9,
  kNotOpen = 0x20000259,       // the stream is missing or not open
  kHeaderFailed = 0x2000025A,  // the stream failed inside a header
  kHeaderCut = 0x2000025B,     // the data ended inside a header, which is kept
  kHeaderOdd = 0x2000025C,     // reserved for further header faults that are tolerated
  kNoBoundary = 0x2000025D,    // a multipart without a boundary is one opaque body
  kStoreUnreadable = 0x200002BC,
  kCertificateNotFound = 0x200002BD,
  kNoPrivateKey = 0x200002BE,
  kWrongPassword = 0x200002BF,
  kCertificateOutsideTime = 0x200002C0,
  kAlgorithmRefused = 0x200002C1,
  kEngineFailed = 0x200002C2,
  kCertificatePurpose = 0x200002C3,
  kUnclassified = 0x200003E7,
};

}  // namespace mimora

#endif  // MIMORA_DIAG_RESULT_H_
