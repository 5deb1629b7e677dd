// Copyright (c) 2026 the mimora developers.
//
// The bodies of any message, written in every way: the source and the sink must not show, and the
// sizes that were told hold.
#include <vector>

#include "analysis/raw_body.h"
#include "analysis/write_body.h"
#include "codec/transfer_encoding.h"
#include "diag/result.h"
#include "fuzz.h"
#include "mime/parser.h"
#include "support/drip_source.h"

namespace mimora::fuzz {
namespace {

constexpr std::string_view kEncodings[] = {"", "base64", "quoted-printable", "7bit", "x-uuencode"};
constexpr std::string_view kCharsets[] = {"",       "utf-8",       "iso-8859-2", "utf-16",
                                          "utf-7",  "iso-2022-jp", "gb2312",     "koi8-r",
                                          "x-what", "ebcdic-cp-us"};
// Of so many parts; the others are of the same kinds.
constexpr size_t kMostWritten = 12;

struct Written {
  int32_t result;
  std::string bytes;
};

Written Write(Bodypart& part, const BodyRequest& request) {
  Moutstream out(MemorySink{});
  const int32_t result = WriteBodypartBodyToStream(part, out, nullptr, request);
  return {result, std::string(out.GetBuffer())};
}

int64_t Append(intptr_t context, const void* data, int64_t length) {
  reinterpret_cast<std::string*>(context)->append(static_cast<const char*>(data),
                                                  static_cast<size_t>(length));
  return length;
}

Written WriteThroughCallback(Bodypart& part, const BodyRequest& request, int64_t buffer_size) {
  Written written;
  Moutstream out({.context = reinterpret_cast<intptr_t>(&written.bytes), .write = Append},
                 buffer_size);
  written.result = WriteBodypartBodyToStream(part, out, nullptr, request);
  return written;
}

std::vector<Bodypart*> PartsOf(Bodypart& message) {
  std::vector<Bodypart*> parts;
  WalkBodyparts(message, [&parts](Bodypart& part) { parts.push_back(&part); });
  return parts;
}

bool IsStated(int32_t result, const BodyRequest& request) {
  if (result == kOk) return true;
  return result == kUnknownCharset && !request.target_charset.empty();
}

void CheckWritten(Bodypart& part, Bodypart& twin, const BodyRequest& request, int64_t buffer_size) {
  const Written written = Write(part, request);
  FUZZ_CHECK(IsStated(written.result, request));
  FUZZ_CHECK(written.result == kOk || written.bytes.empty());
  const Written elsewhere = WriteThroughCallback(twin, request, buffer_size);
  FUZZ_CHECK(elsewhere.result == written.result);
  FUZZ_CHECK(elsewhere.bytes == written.bytes);
  FUZZ_CHECK(part.DecodedSize == twin.DecodedSize);
}

// A composite body counts as it stands in the source.
bool IsComposite(const Bodypart& part) {
  return (part.Is("multipart") || part.Is("message")) && !part.Opaque;
}

// A text that is encoded as if it were a file counts as the text that it is.
bool IsUuencodedText(const Bodypart& part) {
  return part.Is("text", "plain") &&
         FindTransferEncoding(part.ContentTransferEncoding) == TransferEncoding::kUuencode;
}

// Before anything is written: that sets the sizes anew.
void CheckSizes(Bodypart& part) {
  const int64_t told = part.DecodedSize;
  const std::string body =
      WrittenBy([&](Moutstream& out) { FUZZ_CHECK(SaveAttachment(part, out, nullptr, 0) == kOk); });
  const int64_t wanted = IsComposite(part) ? part.BodyLength : std::ssize(body);
  FUZZ_CHECK(told == wanted || IsUuencodedText(part));
  for (int32_t number = 1; part.Embedded(number) != nullptr; ++number) {
    const std::string file = WrittenBy(
        [&](Moutstream& out) { FUZZ_CHECK(SaveAttachment(part, out, nullptr, number) == kOk); });
    FUZZ_CHECK(std::ssize(file) == part.Embedded(number)->DecodedSize);
  }
}

void CheckRaw(const Bodypart& part, std::string_view text) {
  std::string body(static_cast<size_t>(part.BodyLength), '\0');
  auto size = static_cast<uint32_t>(body.size());
  FUZZ_CHECK(ReadBodyText(&part, nullptr, body.data(), 0, &size) == 0);
  FUZZ_CHECK(size == body.size());
  FUZZ_CHECK(body == text.substr(static_cast<size_t>(part.BodyStart), size));
}

}  // namespace

void CheckInput(Input input) {
  const BodyRequest request{.target_encoding = input.Choose(kEncodings),
                            .target_charset = input.Choose(kCharsets),
                            .keep_embedded = input.Flag()};
  const int64_t buffer_size = 1 + input.Byte() % 100;
  const std::string_view text = input.Rest();

  Bodypart message, twin;
  testing::DripSource source(text, buffer_size);
  Minstream in(source.Reading(), buffer_size);
  const Result result = LoadFromMemory(message, text);
  FUZZ_CHECK(Load(twin, in) == result);
  const std::vector<Bodypart*> parts = PartsOf(message), twins = PartsOf(twin);
  FUZZ_CHECK(parts.size() == twins.size());
  for (size_t i = 0; i < std::min(parts.size(), kMostWritten); ++i) {
    CheckRaw(*parts[i], text);
    CheckSizes(*parts[i]);
    CheckSizes(*twins[i]);
    CheckWritten(*parts[i], *twins[i], request, buffer_size);
  }
}

}  // namespace mimora::fuzz
