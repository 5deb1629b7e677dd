// Copyright (c) 2026 the mimora developers.
#include "codec/file_coders.h"

#include "codec/base64.h"
#include "codec/transfer_encoding.h"

namespace mimora {
namespace {

constexpr int64_t kBufferSize = 10240;

Result ResultOf(int32_t coder_result) {
  switch (coder_result) {
    case 0:
      return kOk;
    case -1:
      return kReadFailed;
    case -2:
      return kWriteFailed;
    default:
      return kUnclassified;
  }
}

template <typename Coder>
Result RunOnFiles(const char* input, const char* output, Coder coder) {
  Minstream in(FileSource{.name = input}, kBufferSize);
  if (!in.IsOpen()) return kInputNotOpened;
  // Without a name it would be a temporary file.
  if (output == nullptr) return kOutputNotOpened;
  Moutstream out(FileSink{.name = output}, kBufferSize);
  if (!out.IsOpen()) return kOutputNotOpened;
  return ResultOf(coder(in, out));
}

}  // namespace

Result EncodeBase64File(const char* input, const char* output, int32_t line_length) {
  return RunOnFiles(input, output, [line_length](Minstream& in, Moutstream& out) {
    return EncodeBase64(in, out, line_length);
  });
}

Result DecodeBase64File(const char* input, const char* output) {
  return RunOnFiles(input, output, [](Minstream& in, Moutstream& out) {
    return TransferEncodingDecode(in, out, "BASE64");
  });
}

}  // namespace mimora
