// Copyright (c) 2026 the mimora developers.
#include "analysis/write_body.h"

#include <cinttypes>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "codec/base64.h"
#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "codec/quoted_printable.h"
#include "codec/transfer_encoding.h"
#include "diag/checks.h"
#include "diag/limits.h"
#include "diag/log.h"
#include "diag/result.h"
#include "platform/ascii.h"
#include "stream/copy_stream.h"
#include "stream/stream_window.h"
#include "stream/temporary_file.h"

namespace mimora {
namespace {

constexpr int64_t kReadBackBuffer = 4096;

constexpr int32_t kBase64LineLength = 72;

// ---- Steps --------------------------------------------------------------------------------------

int32_t Encode(Minstream& in, Moutstream& out, std::string_view encoding) {
  switch (FindTransferEncoding(encoding)) {
    case TransferEncoding::kBase64:
      return EncodeBase64(in, out, kBase64LineLength);
    case TransferEncoding::kQuotedPrintable:
      return EncodeQuotedPrintable(in, out);
    default:
      return CopyStream(in, out, kWholeStream);
  }
}

// Runs a step whose output goes into a temporary file; the trace knows it by its number.
template <typename Step>
int32_t FillTemporary(TemporaryFile& file, int number, Step step) {
  return file.Fill([&](Moutstream& out) {
    LogTrace("Temp file .%d %s", number, file.Name().c_str());
    return step(out);
  });
}

// Runs a step whose input is a temporary file.
template <typename Step>
int32_t ReadTemporary(const TemporaryFile& file, int64_t buffer_size, Step step) {
  Minstream in(file.Source(), buffer_size);
  return in.GetError() == 0 ? step(in) : kTempNotOpened;
}

// Whether a stream that was read holds less than it should.
bool EndsBefore(Minstream& in, int64_t end) {
  in.Skip();
  return in.Position() < end;
}

// ---- Writing ------------------------------------------------------------------------------------

class BodyWriter {
 public:
  BodyWriter(Bodypart& part, Moutstream& out, const BodyRequest& request)
      : part_(part), out_(out), request_(request), translates_(NeedsTranslation()) {
    if (!translates_) return;
    from_page_ = PageOfCharset(part_.Charset);
    to_page_ = PageOfCharset(request_.target_charset);
  }

  int32_t Write(Minstream& body) {
    if (translates_ && !CanTranslate()) return kUnknownCharset;
    const bool whole = request_.embedded_index == kWholeBody;
    if (!whole && !part_.TnefAttachments.empty()) return ExtractFromTnef(body);
    if (part_.UuencodedBlocks.empty() || (whole && request_.keep_embedded)) return WritePlain(body);
    return WriteWithoutBlocks(body);
  }

  // One of the uuencoded files is all that is read, where it is.
  bool ReadsWholeBody() const {
    return request_.embedded_index == kWholeBody || !part_.TnefAttachments.empty() ||
           HidesItsBlocks();
  }

 private:
  // Whether the uuencoded blocks are only there when the body is decoded.
  bool HidesItsBlocks() const {
    const TransferEncoding encoding = FindTransferEncoding(part_.ContentTransferEncoding);
    return encoding == TransferEncoding::kBase64 || encoding == TransferEncoding::kQuotedPrintable;
  }

  bool NeedsTranslation() const {
    return !request_.target_charset.empty() && !part_.Charset.empty() &&
           !EqualIgnoringCase(request_.target_charset, part_.Charset) &&
           !SameCodePage(request_.target_charset, part_.Charset) && part_.Is("text");
  }

  bool CanTranslate() const {
    // Quoted-printable would tear the units of UTF-16 apart at what look like line ends.
    const bool by_lines =
        FindTransferEncoding(request_.target_encoding) == TransferEncoding::kQuotedPrintable;
    return from_page_ != 0 && to_page_ != 0 && !(by_lines && IsUtf16Page(to_page_));
  }

  // The encoding as the header has it.
  std::string DeclaredEncoding() const { return part_.Field("Content-Transfer-Encoding").Main(); }

  int32_t Decode(Minstream& in, Moutstream& out) const {
    return TransferEncodingDecode(in, out, part_.ContentTransferEncoding);
  }

  int32_t ExtractFromTnef(Minstream& body) {
    if (request_.embedded_index >= part_.TnefAttachments.size()) return kNoSuchAttachment;
    const EmbeddedAttachment& wanted = part_.TnefAttachments[request_.embedded_index];
    TemporaryFile stream;
    const int32_t result = stream.Fill(
        [&](Moutstream& out) { return TransferEncodingDecode(body, out, DeclaredEncoding()); });
    if (result != kOk) return result;
    return ReadTemporary(stream, kDefaultBufferSize, [&](Minstream& in) {
      return CopyRange(in, out_, wanted.Offset, wanted.DecodedSize);
    });
  }

  int32_t WritePlain(Minstream& body) {
    const std::string& encoding = part_.ContentTransferEncoding;
    if (translates_) return DecodeAndEncode(body);
    if (EqualIgnoringCase(encoding, request_.target_encoding)) return CopyUnchanged(body);
    if (request_.target_encoding.empty()) return DecodeOnly(body);
    if (encoding.empty()) return EncodeOnly(body);
    return DecodeAndEncode(body);
  }

  int32_t CopyUnchanged(Minstream& body) {
    LogTrace("WriteBodypartBodyToStream 5");
    const int64_t before = body.Position();
    const int32_t result = CopyStream(body, out_, kWholeStream);
    if (part_.ContentTransferEncoding.empty()) part_.DecodedSize = body.Position() - before;
    LogTrace("WriteBodypartBodyToStream 6");
    return result;
  }

  int32_t DecodeOnly(Minstream& body) {
    const std::string& encoding = part_.ContentTransferEncoding;
    LogTrace("WriteBodypartBodyToStream 7");
    LogTrace("Body.BodyData.ContentTransferEncoding = %s",
             encoding.empty() ? "empty" : OneLine(encoding).c_str());
    const int64_t before = out_.WritePos();
    const int32_t result = Decode(body, out_);
    part_.DecodedSize = out_.WritePos() - before;
    LogTrace("WriteBodypartBodyToStream 8");
    return result;
  }

  int32_t EncodeOnly(Minstream& body) {
    LogTrace("WriteBodypartBodyToStream 9");
    const int64_t before = body.Position();
    const int32_t result = Encode(body, out_, request_.target_encoding);
    part_.DecodedSize = body.Position() - before;
    LogTrace("WriteBodypartBodyToStream 10");
    return result;
  }

  int32_t DecodeAndEncode(Minstream& body) {
    LogTrace("WriteBodypartBodyToStream 11");
    std::optional<TemporaryFile> decoded(std::in_place);
    const int32_t result = FillTemporary(*decoded, 3, [&](Moutstream& out) {
      const int32_t answer = Decode(body, out);
      part_.DecodedSize = out.WritePos();
      return answer;
    });
    if (result != kOk) return result;
    LogTrace("WriteBodypartBodyToStream 12");
    return translates_ ? TranslateAndEncode(decoded) : EncodeTemporary(*decoded);
  }

  int32_t EncodeTemporary(const TemporaryFile& file) {
    return ReadTemporary(file, kDefaultBufferSize,
                         [&](Minstream& in) { return Encode(in, out_, request_.target_encoding); });
  }

  // Only one of the two files is there while the result is written.
  int32_t TranslateAndEncode(std::optional<TemporaryFile>& text) {
    TemporaryFile translated;
    const int32_t result = FillTemporary(translated, 4, [&](Moutstream& out) {
      return ReadTemporary(*text, kDefaultBufferSize,
                           [&](Minstream& in) { return Translate(in, out); });
    });
    text.reset();
    return result == kOk ? EncodeTemporary(translated) : result;
  }

  int32_t Translate(Minstream& in, Moutstream& out) {
    const std::string target(request_.target_charset);
    LogTrace("::::1");
    LogTrace("::::2 %s", OneLine(part_.Charset).c_str());
    LogTrace("::::3 %s", OneLine(target).c_str());
    const int64_t before = out.WritePos();
    const int32_t result = TranslateStream(in, out, from_page_, to_page_);
    part_.DecodedSize = out.WritePos() - before;
    return result;
  }

  // The positions of the blocks count in the decoded body.
  int32_t WriteWithoutBlocks(Minstream& body) {
    if (!HidesItsBlocks()) return WriteFromDecoded(body);
    TemporaryFile decoded;
    const int32_t result =
        FillTemporary(decoded, 1, [&](Moutstream& out) { return Decode(body, out); });
    if (result != kOk) return result;
    return ReadTemporary(decoded, kReadBackBuffer,
                         [&](Minstream& in) { return WriteFromDecoded(in); });
  }

  int32_t WriteFromDecoded(Minstream& in) {
    if (!translates_ && request_.target_encoding.empty()) return CutOrExtract(in, out_);
    std::optional<TemporaryFile> wanted(std::in_place);
    const int32_t result =
        FillTemporary(*wanted, 2, [&](Moutstream& out) { return CutOrExtract(in, out); });
    if (result != kOk) return result;
    if (!translates_) return EncodeTemporary(*wanted);
    if (!request_.target_encoding.empty()) return TranslateAndEncode(wanted);
    return ReadTemporary(*wanted, kReadBackBuffer,
                         [&](Minstream& text) { return Translate(text, out_); });
  }

  int32_t CutOrExtract(Minstream& in, Moutstream& out) const {
    const int64_t base = in.Position();
    if (request_.embedded_index == kWholeBody) return CopyAroundBlocks(in, out, base);
    if (request_.embedded_index >= part_.UuencodedBlocks.size()) return kNoSuchAttachment;
    const EmbeddedAttachment& block = part_.UuencodedBlocks[request_.embedded_index];
    StreamWindow window(in, base + block.Offset, block.BlockLength);
    const int64_t end = window.Stream().Position() + block.BlockLength;
    const int32_t result = TransferEncodingDecode(window.Stream(), out, "X-UUENCODE");
    return result == kOk && EndsBefore(window.Stream(), end) ? kReadFailed : result;
  }

  int32_t CopyAroundBlocks(Minstream& in, Moutstream& out, int64_t base) const {
    int64_t at = base;
    for (const EmbeddedAttachment& block : part_.UuencodedBlocks) {
      const int64_t begin = base + block.Offset;
      const int32_t result = CopyRange(in, out, at, begin - at);
      if (result != kOk) return result;
      at = begin + block.BlockLength;
    }
    StreamWindow rest(in, at, kWholeStream);
    return CopyStream(rest.Stream(), out, kWholeStream);
  }

  Bodypart& part_;
  Moutstream& out_;
  const BodyRequest& request_;
  const bool translates_;
  uint32_t from_page_ = 0;
  uint32_t to_page_ = 0;
};

// ---- Source -------------------------------------------------------------------------------------

// Where a body is read from.
struct BodySource {
  int32_t result = kOk;
  Minstream* stream = nullptr;
  std::unique_ptr<Minstream> own = nullptr;  // a stream made for the occasion
};

BodySource OwnSource(std::unique_ptr<Minstream> stream) {
  Minstream* const address = stream.get();
  return {.stream = address, .own = std::move(stream)};
}

BodySource FindStream(Minstream* stream) {
  return {.result = stream != nullptr ? kOk : kNotOpen, .stream = stream};
}

BodySource OpenSource(const Bodypart& part, Minstream* in4) {
  switch (part.DataDefinitionType) {
    case kNoBody:
      break;
    case kBodyInStream:
      if (checkinstream(part.BodyStream, "")) return FindStream(part.BodyStream);
      LogTrace("WriteBodypartBodyToStream - BAD STREAM for Body.BodyData.DataDefinitionType = 1");
      return FindStream(in4);
    case kBodyInFile: {
      if (part.BodyFileName.empty()) return {.result = kNoBodyFileName};
      BodySource source = OwnSource(std::make_unique<Minstream>(
          FileSource{.name = part.BodyFileName.c_str()}, kDefaultBufferSize));
      if (source.own->GetError() != 0) source.result = kBodyFileNotOpened;
      return source;
    }
    case kBodyInMemory:
      if (part.BodyMemory == nullptr) return {.result = kNoBodyMemory};
      return OwnSource(std::make_unique<Minstream>(MemorySource{part.BodyMemory, part.BodyLength}));
    case kBodyDetached:
      return FindStream(in4);
    case kBodyInPart:
      return OwnSource(std::make_unique<Minstream>(
          MemorySource{part.BodyFileName.data(), std::ssize(part.BodyFileName)}));
  }
  return {.result = kNoBodyData};
}

class StreamLock {
 public:
  explicit StreamLock(Minstream& stream) : stream_(stream) { stream_.Lock(); }
  ~StreamLock() { stream_.Unlock(); }
  StreamLock(const StreamLock&) = delete;
  StreamLock& operator=(const StreamLock&) = delete;

 private:
  Minstream& stream_;
};

}  // namespace

int32_t WriteBodypartBodyToStream(Bodypart& part, Moutstream& out, Minstream* in4,
                                  const BodyRequest& request) {
  LogTrace("WriteBodypartBodyToStream in");
  if (!out.IsOpen()) {
    LogTrace("WriteBodypartBodyToStream out");
    return kNotOpen;
  }
  const BodySource source = OpenSource(part, in4);
  if (source.result != kOk) return source.result;
  LogTrace("WriteBodypartBodyToStream 1");
  const StreamLock lock(*source.stream);
  // A source of its own holds nothing but the body.
  const bool own = source.own != nullptr;
  const int64_t start = own || part.BodyStart == -1 ? source.stream->Position() : part.BodyStart;
  StreamWindow window(*source.stream, start,
                      own || part.BodyLength == -1 ? kWholeStream : part.BodyLength);
  LogTrace("WriteBodypartBodyToStream 3");
  const int64_t base = window.Stream().Position();
  BodyWriter writer(part, out, request);
  LogTrace("WriteBodypartBodyToStream 4");
  int32_t result = writer.Write(window.Stream());
  const bool length_is_known = !own && part.BodyLength != -1;
  if (result == kOk && length_is_known && writer.ReadsWholeBody() &&
      EndsBefore(window.Stream(), base + part.BodyLength)) {
    result = kReadFailed;
  }
  if (result == kOk && !out.FlushBuffer()) result = kWriteFailed;
  LogTrace("WriteBodypartBodyToStream out for %8.8" PRIXPTR, reinterpret_cast<uintptr_t>(&part));
  return result;
}

int32_t SaveAttachment(Bodypart& part, Moutstream& out, Minstream* in4, int32_t number) {
  BodyRequest request{.keep_embedded = false};
  if (number != 0) {
    if (part.Embedded(number) == nullptr) return kNoSuchAttachment;
    request.embedded_index = static_cast<uint32_t>(number - 1);
  }
  return WriteBodypartBodyToStream(part, out, in4, request);
}

}  // namespace mimora
