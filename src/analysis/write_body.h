// Copyright (c) 2026 the mimora developers.
//
// Writing the body of a part: decoded, in another transfer encoding, in another character set,
// without the files embedded in it, or one of those files. Everything that writes a body asks here.
#ifndef MIMORA_ANALYSIS_WRITE_BODY_H_
#define MIMORA_ANALYSIS_WRITE_BODY_H_

#include <cstdint>
#include <string_view>

#include "mime/bodypart.h"
#include "stream/minstream.h"
#include "stream/moutstream.h"

namespace mimora {

constexpr uint32_t kWholeBody = 0xFFFFFFFF;

struct BodyRequest {
  std::string_view target_encoding = {};  // empty: decoded
  std::string_view target_charset = {};   // empty: as it is; only text is ever translated
  bool keep_embedded = true;              // whether uuencoded files stay in the text
  uint32_t embedded_index = kWholeBody;   // or the file that is wanted instead of the body
};

// Reads from the part's own source, or from IN4 when that is gone or still to be named; the stream
// is locked meanwhile. Memory does not grow with the body: between the steps stand temporary files,
// which are gone afterwards. DecodedSize is noted. Answers a result code, or what a coder answered:
// -1 when reading failed, -2 when writing did.
int32_t WriteBodypartBodyToStream(Bodypart& part, Moutstream& out, Minstream* in4,
                                  const BodyRequest& request);

// Writes the body of a part without embedded files (number 0), or the n-th of those files.
int32_t SaveAttachment(Bodypart& part, Moutstream& out, Minstream* in4, int32_t number);

}  // namespace mimora

#endif  // MIMORA_ANALYSIS_WRITE_BODY_H_
