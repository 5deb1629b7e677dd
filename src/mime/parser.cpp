// Copyright (c) 2026 the mimora developers.
#include "mime/parser.h"

#include <algorithm>
#include <string>
#include <utility>

#include "codec/transfer_encoding.h"
#include "codec/uuencode.h"
#include "diag/limits.h"
#include "diag/log.h"
#include "mime/header_builder.h"
#include "mime/tnef.h"
#include "platform/ascii.h"
#include "stream/moutstream.h"
#include "stream/scan.h"
#include "stream/temporary_file.h"

namespace mimora {
namespace {

// Whether the load goes on: the mail is at fault, not the stream.
bool IsTolerated(Result result) {
  return result == kOk || result == kHeaderCut || result == kHeaderOdd || result == kNoBoundary;
}

// A delimiter that is in force as long as the object lives.
class BoundaryScope {
 public:
  BoundaryScope(Minstream& in, std::string_view delimiter) : in_(in) {
    in_.EnterBoundary(delimiter);
  }
  ~BoundaryScope() { in_.LeaveBoundary(); }
  BoundaryScope(const BoundaryScope&) = delete;
  BoundaryScope& operator=(const BoundaryScope&) = delete;

 private:
  Minstream& in_;
};

// The text of the delimiter lines, in SCRATCH; empty when none is declared. It is part of a line,
// whatever an encoded parameter says, and cannot end in white space (RFC 2046 5.1.1): on the way
// that would be lost.
std::string_view Delimiter(const FieldValue& type, std::string& scratch) {
  std::string decoded;
  const auto declared = type.FindParameter("boundary", decoded);
  if (!declared) return {};
  const std::string_view text = declared->text;
  const std::string_view line(text.begin(), FindLineEnd(text.begin(), text.end()));
  const std::string_view boundary = TrimRight(line, IsBlank);
  if (boundary.empty()) return {};
  return scratch.assign("--").append(boundary);
}

class Parser {
 public:
  Parser(Minstream& in, Bodypart& root) : in_(in), root_(root) {}

  // Tells the log of what lies beyond the limits.
  void Log() const {
    if (unseen_ > 0) LogError("<E> %d parts at the limits, their structure is not seen", unseen_);
  }

  Result LoadPart(Bodypart& part, int level) {
    const Result header = ParseHeader(part);
    const FieldValue type = part.Field("Content-Type");
    part.ContentTransferEncoding = part.Field("Content-Transfer-Encoding").Main(scratch_);
    if (!IsTolerated(header)) {
      EndBody(part);
      return header;
    }
    const Result body = ParseBody(part, type, level);
    return body == kOk ? header : body;
  }

 private:
  Result ParseHeader(Bodypart& part);
  Result ParseBody(Bodypart& part, const FieldValue& declared, int level);
  Result ParseMultipart(Bodypart& part, const FieldValue& declared, bool digest, int level);
  Result ParseChildren(Bodypart& part, bool digest, int level);
  Result ParseMessage(Bodypart& part, int level);
  Result ParseUnseen(Bodypart& part);
  Result ParseLeaf(Bodypart& part, const ContentType& type);
  Result ParseText(Bodypart& part);
  Result ParseTnef(Bodypart& part);
  Result CountDecoded(Bodypart& part);
  void ParseRest(Bodypart& part);
  void EndBody(Bodypart& part);

  // Where a header or body may begin: here, or at the delimiter that ended what was read. The line
  // end in front of that may also be the one of the empty line behind a header; it counts for both.
  int64_t PartPosition() {
    return in_.BoundaryHit() ? in_.BoundaryPosition() + in_.BoundaryLineEndSize() : in_.Position();
  }
  bool MayHaveSubparts(int level) const { return level <= kDeepestLevel; }
  size_t MoreEmbeddedFiles() const { return kMostEmbeddedFiles - embedded_files_; }
  bool TooManyParts() const { return parts_ >= kMostParts; }
  Result ReadResult() const { return in_.GetError() == 0 ? kOk : kReadFailed; }

  Minstream& in_;
  Bodypart& root_;
  std::string scratch_;
  int parts_ = 0;   // the message itself not counted
  int unseen_ = 0;  // whose structure is beyond the limits
  size_t header_fields_ = 0;
  size_t embedded_files_ = 0;
};

// ---- Header -------------------------------------------------------------------------------

Result Parser::ParseHeader(Bodypart& part) {
  part.PartStart = PartPosition();
  // As the header of a message is, with the traces of its way.
  if (part.Parent == nullptr) part.Header.Reserve(32, 4096);
  Result result = kHeaderCut;
  HeaderBuilder header(part.Header,
                       kMostHeaderFields - std::min(kMostHeaderFields, header_fields_));
  for (std::string_view line; in_.ReadLine(line);) {
    if (line.empty()) {
      result = kOk;
      break;
    }
    if (in_.GetError() != 0) break;
    header.Take(line);
  }
  header.Log();
  header_fields_ += part.Header.Count();
  if (in_.GetError() != 0) result = kHeaderFailed;
  const int64_t end = PartPosition();
  part.HeaderSize = end - part.PartStart;
  part.BodyStart = end;
  return result;
}

// ---- Body ---------------------------------------------------------------------------------

Result Parser::ParseBody(Bodypart& part, const FieldValue& declared, int level) {
  Result result = kOk;
  std::string type_scratch;
  const ContentType type = part.Type(declared, type_scratch);
  const bool multipart = type.Is("multipart");
  const bool message = type.Is("message");
  if (!multipart) {
    const auto charset = declared.FindParameter("charset", scratch_);
    part.Charset = charset ? charset->text : std::string_view();
  }
  if (multipart) {
    result = ParseMultipart(part, declared, EqualIgnoringCase(type.sub, "digest"), level);
  } else if (message) {
    result = ParseMessage(part, level);
  } else {
    result = ParseLeaf(part, type);
  }
  EndBody(part);
  // A composite body has no transfer encoding of its own (RFC 2045 6.4).
  if ((multipart || message) && !part.Opaque) part.DecodedSize = part.BodyLength;
  return result;
}

void Parser::EndBody(Bodypart& part) {
  const int64_t end = in_.BoundaryHit() ? in_.BoundaryPosition() : in_.Position();
  part.BodyLength = std::max<int64_t>(end - part.BodyStart, 0);
  part.DataDefinitionType = kBodyInStream;
  part.BodyStream = &in_;
}

Result Parser::ParseMultipart(Bodypart& part, const FieldValue& declared, bool digest, int level) {
  const std::string_view delimiter = Delimiter(declared, scratch_);
  if (delimiter.empty()) {
    part.Opaque = true;
    const Result result = CountDecoded(part);
    return result == kOk ? kNoBoundary : result;
  }
  if (!MayHaveSubparts(level)) return ParseUnseen(part);
  Result result = kOk;
  {
    const BoundaryScope scope(in_, delimiter);
    in_.Skip();  // the preamble, which belongs to no part
    result = ParseChildren(part, digest, level);
  }
  // The epilogue belongs to no part.
  if (IsTolerated(result) && in_.BoundaryCount() > 0) in_.Skip();
  return IsTolerated(result) ? ReadResult() : result;
}

Result Parser::ParseChildren(Bodypart& part, bool digest, int level) {
  while (in_.InnermostHit() && !in_.ClosingHit()) {
    in_.ClearBoundaryHit();
    Bodypart& child = *part.AppendChild(root_.MakeSubpart(&part));
    child.InDigest = digest;
    if (TooManyParts()) {
      ParseRest(child);
      break;
    }
    ++parts_;
    const Result result = LoadPart(child, level + 1);
    if (!IsTolerated(result)) return result;
  }
  return kOk;
}

// Makes one leaf of everything up to the end of the multipart.
void Parser::ParseRest(Bodypart& part) {
  part.Opaque = true;
  ++unseen_;
  part.PartStart = part.BodyStart = in_.Position();
  in_.Skip();
  while (in_.InnermostHit() && !in_.ClosingHit()) {
    in_.ClearBoundaryHit();
    in_.Skip();
  }
  EndBody(part);
  part.DecodedSize = part.BodyLength;
}

// A part that has subparts beyond the limits.
Result Parser::ParseUnseen(Bodypart& part) {
  part.Opaque = true;
  ++unseen_;
  return CountDecoded(part);
}

Result Parser::ParseMessage(Bodypart& part, int level) {
  if (!MayHaveSubparts(level) || TooManyParts()) return ParseUnseen(part);
  ++parts_;
  part.EnclosedMessage = root_.MakeSubpart(&part);
  const Result result = LoadPart(*part.EnclosedMessage, level + 1);
  return IsTolerated(result) ? kOk : result;
}

// ---- Leaves -------------------------------------------------------------------------------

Result Parser::ParseLeaf(Bodypart& part, const ContentType& type) {
  if (type.Is("application", "ms-tnef")) return ParseTnef(part);
  const TransferEncoding encoding = FindTransferEncoding(part.ContentTransferEncoding);
  const bool encoded =
      encoding == TransferEncoding::kBase64 || encoding == TransferEncoding::kQuotedPrintable;
  if (type.Is("text", "plain") && !encoded) return ParseText(part);
  return CountDecoded(part);
}

Result Parser::CountDecoded(Bodypart& part) {
  Moutstream counter{CountingSink{}};
  TransferEncodingDecode(in_, counter, part.ContentTransferEncoding);
  part.DecodedSize = counter.WritePos();
  // A decoder may have seen enough before the end of the body.
  in_.Skip();
  return ReadResult();
}

Result Parser::ParseText(Bodypart& part) {
  UuScanner scanner(MoreEmbeddedFiles());
  for (std::string_view run; !(run = in_.NextRun()).empty();) {
    scanner.Feed(run);
    in_.Take(run.size());
  }
  scanner.Finish();
  part.DecodedSize = scanner.TextSize();
  embedded_files_ += scanner.Blocks().size();
  for (UuBlock& block : scanner.Blocks()) {
    part.UuencodedBlocks.push_back({.Name = std::move(block.name),
                                    .DecodedSize = block.decoded_size,
                                    .Offset = block.offset,
                                    .BlockLength = block.length});
  }
  return ReadResult();
}

Result Parser::ParseTnef(Bodypart& part) {
  TemporaryFile file;
  const int32_t decoded = file.Fill([&](Moutstream& out) {
    const int32_t result = TransferEncodingDecode(in_, out, part.ContentTransferEncoding);
    part.DecodedSize = out.WritePos();
    return result;
  });
  if (decoded == kTempNotCreated || decoded == kTempNotWritten) return kTempNotWritten;
  Minstream table(file.Source(), kDefaultBufferSize);
  ReadTnefAttachments(table, part.DecodedSize, MoreEmbeddedFiles(), part.TnefAttachments);
  embedded_files_ += part.TnefAttachments.size();
  in_.Skip();
  return table.GetError() == 0 ? ReadResult() : kTempNotWritten;
}

}  // namespace

// ---- Entry --------------------------------------------------------------------------------

namespace {

Result Parse(Bodypart& part, Minstream& in) {
  in.SetBoundary({});
  Parser parser(in, part);
  const Result result = parser.LoadPart(part, part.Depth());
  parser.Log();
  return result;
}

}  // namespace

Result Load(Bodypart& part, Minstream& in) {
  if (!in.IsOpen()) return kNotOpen;
  part.Clean();
  return Parse(part, in);
}

// The part owns what it is parsed from before the parsing begins: an exception in the middle leaves
// parts that refer to it.
Result LoadFromMemory(Bodypart& part, std::string_view data) {
  auto stream = std::make_unique<Minstream>(
      MemorySource{.data = data.data(), .length = static_cast<int64_t>(data.size())});
  part.Clean();
  part.OwnStream = std::move(stream);
  return Parse(part, *part.OwnStream);
}

Result LoadFromCopy(Bodypart& part, std::string_view text) {
  // On the heap of its own: the bytes of a short string would move with the string.
  auto copy = std::make_unique<std::string>(text);
  auto stream = std::make_unique<Minstream>(
      MemorySource{.data = copy->data(), .length = static_cast<int64_t>(copy->size())});
  part.Clean();
  part.OwnText = std::move(copy);
  part.OwnStream = std::move(stream);
  return Parse(part, *part.OwnStream);
}

}  // namespace mimora
