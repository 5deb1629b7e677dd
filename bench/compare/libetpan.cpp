// Copyright (c) 2026 the mimora developers.
#include <libetpan/libetpan.h>

#include "program.h"

namespace mimora::bench {
namespace {

// The library decodes into memory only. -1 when it fails.
int64_t DecodedSize(std::string_view text, int encoding) {
  size_t at = 0;
  size_t size = 0;
  char* decoded = nullptr;
  const int result = mailmime_part_parse(text.data(), text.size(), &at, encoding, &decoded, &size);
  if (result != MAILIMF_NO_ERROR) return -1;
  mailmime_decoded_part_free(decoded);
  return static_cast<int64_t>(size);
}

Contents CountLeaf(const mailmime_data& data) {
  const auto& text = data.dt_data.dt_text;
  const bool coded = data.dt_encoding == MAILMIME_MECHANISM_BASE64 ||
                     data.dt_encoding == MAILMIME_MECHANISM_QUOTED_PRINTABLE;
  if (!coded) return {1, static_cast<int64_t>(text.dt_length)};
  return {1, DecodedSize({text.dt_data, text.dt_length}, data.dt_encoding)};
}

Contents Count(const mailmime& part) {
  if (part.mm_type == MAILMIME_SINGLE) return CountLeaf(*part.mm_data.mm_single);
  if (part.mm_type == MAILMIME_MESSAGE) return Count(*part.mm_data.mm_message.mm_msg_mime);
  Contents contents;
  const clist* children = part.mm_data.mm_multipart.mm_mp_list;
  for (const clistiter* i = children->first; i; i = i->next) {
    contents += Count(*static_cast<const mailmime*>(i->data));
  }
  return contents;
}

Contents Load(const Message& message) {
  size_t at = 0;
  mailmime* parsed = nullptr;
  const int result = mailmime_parse(message.text.data(), message.text.size(), &at, &parsed);
  if (result != MAILIMF_NO_ERROR) return {};
  const Contents contents = Count(*parsed);
  mailmime_free(parsed);
  return contents;
}

template <int encoding>
RunCoder PrepareDecoder(std::string_view input) {
  return [input] { return DecodedSize(input, encoding); };
}

// Writes everything in pieces, and counts.
template <typename Write>
int64_t Encode(std::string_view input, size_t piece, Write write) {
  MMAPString* out = mmap_string_sized_new(4 * kPiece);
  int64_t bytes = 0;
  int column = 0;
  for (; !input.empty(); input.remove_prefix(std::min(piece, input.size()))) {
    mmap_string_truncate(out, 0);
    write(out, &column, input.data(), std::min(piece, input.size()));
    bytes += static_cast<int64_t>(out->len);
  }
  mmap_string_free(out);
  return bytes;
}

RunCoder PrepareBase64Encoder(std::string_view input) {
  // Each call ends with padding: pieces are whole lines.
  constexpr size_t kBytesOfLine = 54;
  return [input] {
    return Encode(input, kPiece / kBytesOfLine * kBytesOfLine, mailmime_base64_write_mem);
  };
}

RunCoder PrepareQuotedPrintableEncoder(std::string_view input) {
  constexpr int kText = 1;
  return [input] {
    return Encode(input, kPiece, [](MMAPString* out, int* column, const char* text, size_t size) {
      mailmime_quoted_printable_write_mem(out, column, kText, text, size);
    });
  };
}

}  // namespace

Program MakeProgram() {
  return {"libetpan",
          {{"memory", Load}},
          {{"base64-decode", PrepareDecoder<MAILMIME_MECHANISM_BASE64>},
           {"base64-encode", PrepareBase64Encoder},
           {"quoted-printable-decode", PrepareDecoder<MAILMIME_MECHANISM_QUOTED_PRINTABLE>},
           {"quoted-printable-encode", PrepareQuotedPrintableEncoder}}};
}

}  // namespace mimora::bench
