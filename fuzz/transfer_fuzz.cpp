// Copyright (c) 2026 the mimora developers.
//
// Transfer encodings: neither vectors nor pieces show, and what was encoded comes back.
#include <optional>

#include "codec/base64.h"
#include "codec/quoted_printable.h"
#include "codec/transfer_encoding.h"
#include "codec/uuencode.h"
#include "fuzz.h"

namespace mimora::fuzz {
namespace {

constexpr std::string_view kEncodings[] = {"base64", "quoted-printable", "x-uuencode"};

std::string Decoded(std::string_view text, std::string_view encoding) {
  return WrittenBy([&](Moutstream& out) {
    Minstream in(SourceOf(text));
    FUZZ_CHECK(TransferEncodingDecode(in, out, encoding) == 0);
  });
}

int64_t DecodedSize(std::string_view text, std::string_view encoding) {
  Minstream in(SourceOf(text));
  Moutstream counting(CountingSink{});
  FUZZ_CHECK(TransferEncodingDecode(in, counting, encoding) == 0);
  return counting.WritePos();
}

template <typename Decoder>
std::string DecodedInPieces(std::string_view text, const Cuts& cuts) {
  return WrittenBy([&](Moutstream& out) {
    Decoder decoder(out);
    InPieces(text, cuts, [&decoder](std::string_view piece) { decoder.Feed(piece); });
    decoder.Finish();
  });
}

std::string DecodedInPieces(std::string_view text, std::string_view encoding, const Cuts& cuts) {
  if (encoding == "base64") return DecodedInPieces<Base64Decoder>(text, cuts);
  if (encoding == "x-uuencode") return DecodedInPieces<UuDecoder>(text, cuts);
  return DecodedInPieces<QuotedPrintableDecoder>(text, cuts);
}

void CheckDecoding(std::string_view text, std::string_view encoding, const Cuts& cuts) {
  std::optional<std::string> wanted;
  ForEveryCpuLevel([&](platform::CpuLevel) {
    const std::string decoded = Decoded(text, encoding);
    if (!wanted) wanted = decoded;
    FUZZ_CHECK(decoded == *wanted);
    FUZZ_CHECK(DecodedInPieces(text, encoding, cuts) == *wanted);
    FUZZ_CHECK(DecodedSize(text, encoding) == std::ssize(*wanted));
  });
}

// The blocks in a text, as one text.
std::string Blocks(std::string_view text, const Cuts& cuts) {
  UuScanner scanner(100);
  InPieces(text, cuts, [&scanner](std::string_view piece) { scanner.Feed(piece); });
  scanner.Finish();
  std::string list = std::to_string(scanner.TextSize());
  int64_t inside = 0;
  for (const UuBlock& block : scanner.Blocks()) {
    list += " " + block.name + " " + std::to_string(block.offset) + " " +
            std::to_string(block.length) + " " + std::to_string(block.decoded_size);
    inside += block.length;
    const std::string_view body =
        text.substr(static_cast<size_t>(block.offset), static_cast<size_t>(block.length));
    FUZZ_CHECK(std::ssize(Decoded(body, "x-uuencode")) == block.decoded_size);
  }
  FUZZ_CHECK(inside + scanner.TextSize() == std::ssize(text));
  return list;
}

void CheckBlocks(std::string_view text, const Cuts& cuts) {
  std::optional<std::string> wanted;
  ForEveryCpuLevel([&](platform::CpuLevel) {
    if (!wanted) wanted = Blocks(text, Cuts(1, text.size() + 1));
    FUZZ_CHECK(Blocks(text, cuts) == *wanted);
  });
}

template <typename Encode>
std::string Encoded(std::string_view bytes, Encode encode) {
  std::optional<std::string> wanted;
  ForEveryCpuLevel([&](platform::CpuLevel) {
    const std::string encoded = WrittenBy([&](Moutstream& out) {
      Minstream in(SourceOf(bytes));
      FUZZ_CHECK(encode(in, out) == 0);
    });
    if (!wanted) wanted = encoded;
    FUZZ_CHECK(encoded == *wanted);
  });
  return *wanted;
}

void CheckLines(std::string_view text, size_t longest) {
  while (!text.empty()) {
    const size_t end = std::min(text.find("\r\n"), text.size());
    FUZZ_CHECK(end <= longest);
    text.remove_prefix(std::min(end + 2, text.size()));
  }
}

void CheckBase64(std::string_view bytes, int32_t line_length) {
  const std::string encoded = Encoded(bytes, [line_length](Minstream& in, Moutstream& out) {
    return EncodeBase64(in, out, line_length);
  });
  if (line_length > 0) CheckLines(encoded, static_cast<size_t>(std::min(line_length, 80)));
  FUZZ_CHECK(Decoded(encoded, "base64") == bytes);
}

// LF becomes CR LF, as the encoder has it.
std::string Canonical(std::string_view text) {
  std::string canonical;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\n' && (i == 0 || text[i - 1] != '\r')) canonical += '\r';
    canonical += text[i];
  }
  return canonical;
}

// Blanks at the very end are not kept, so there are none.
void CheckQuotedPrintable(std::string bytes) {
  bytes += '!';
  const std::string encoded = Encoded(bytes, EncodeQuotedPrintable);
  CheckLines(encoded, 76);
  FUZZ_CHECK(Decoded(encoded, "quoted-printable") == Canonical(bytes));
}

}  // namespace

void CheckInput(Input input) {
  const std::string_view encoding = input.Choose(kEncodings);
  const size_t longest = input.Flag() ? 8 : 300;
  const Cuts cuts(input.Byte(), longest);
  const int line_length = input.Byte() % 100 - 5;
  const std::string_view text = input.Rest();
  CheckDecoding(text, encoding, cuts);
  if (encoding == "x-uuencode") CheckBlocks(text, cuts);
  if (encoding == "base64") CheckBase64(text, line_length);
  if (encoding == "quoted-printable") CheckQuotedPrintable(std::string(text));
}

}  // namespace mimora::fuzz
