// Copyright (c) 2026 the mimora developers.
//
// Any bytes as a message: where they come from must not show, and the tree has to make sense.
#include <cstdio>

#include "diag/limits.h"
#include "fuzz.h"
#include "mime/dump.h"
#include "mime/parser.h"
#include "mime/tree_text.h"
#include "support/drip_source.h"

namespace mimora::fuzz {
namespace {

// What the tree text leaves out.
std::string Details(const Bodypart& message) {
  std::string text;
  WalkBodyparts(message, [&text](const Bodypart& part) {
    text += "|" + part.ContentTransferEncoding + "|" + part.Charset;
    for (size_t i = 0; i < part.Header.Count(); ++i) {
      const HeaderField field = part.Header.At(i);
      text.append("\n").append(field.name).append(":").append(field.value);
    }
  });
  return text;
}

void CheckFiles(const Bodypart& part) {
  int64_t at = 0;
  for (const EmbeddedAttachment& file : part.UuencodedBlocks) {
    FUZZ_CHECK(file.Offset >= at && file.BlockLength > 0);
    // A line may lack nearly all the characters of its bytes.
    FUZZ_CHECK(file.DecodedSize >= 0 && file.DecodedSize < 32 * file.BlockLength);
    at = file.Offset + file.BlockLength;
  }
  for (const EmbeddedAttachment& file : part.TnefAttachments)
    FUZZ_CHECK(file.Offset >= 0 && file.DecodedSize >= 0);
}

void CheckTree(const Bodypart& message, int64_t size) {
  int parts = 0;
  WalkBodyparts(message, [&](const Bodypart& part) {
    ++parts;
    FUZZ_CHECK(part.PartStart >= 0 && part.HeaderSize >= 0 && part.BodyLength >= 0);
    FUZZ_CHECK(part.BodyStart >= part.PartStart + part.HeaderSize);
    FUZZ_CHECK(part.BodyStart + part.BodyLength <= size);
    FUZZ_CHECK(part.DecodedSize >= -1 && part.Depth() <= kDeepestLevel + 1);
    if (const Bodypart* const parent = part.Parent) {
      FUZZ_CHECK(part.PartStart >= parent->BodyStart);
      // An empty body may begin behind the line end that belongs to the delimiter.
      const int64_t end = parent->BodyStart + parent->BodyLength;
      FUZZ_CHECK(part.BodyStart + part.BodyLength <= end || part.BodyLength == 0);
    }
    CheckFiles(part);
  });
  FUZZ_CHECK(parts <= kMostParts + kDeepestLevel + 1);
}

void CheckSame(Minstream& in, const Bodypart& wanted, Result result) {
  Bodypart message;
  FUZZ_CHECK(Load(message, in) == result);
  FUZZ_CHECK(testing::TreeText(message) == testing::TreeText(wanted));
  FUZZ_CHECK(Details(message) == Details(wanted));
}

}  // namespace

void CheckInput(Input input) {
  const std::string_view text = input.Rest();
  Bodypart message;
  const Result result = LoadFromMemory(message, text);
  FUZZ_CHECK(result == kOk || result == kHeaderCut || result == kNoBoundary);
  CheckTree(message, std::ssize(text));
  static std::FILE* const nowhere = std::fopen("/dev/null", "w");
  DumpBodypart(&message, nowhere);

  constexpr int64_t kSteps[] = {1, 5, testing::DripSource::kNever};
  size_t turn = text.size();
  for (const int64_t buffer : {1, 2, 3, 7, 64, 4096}) {
    testing::DripSource source(text, kSteps[turn++ % 3]);
    Minstream in(turn % 2 == 0 ? source.Reading() : source.Pointing(), buffer);
    CheckSame(in, message, result);
  }
  Bodypart copy;
  FUZZ_CHECK(LoadFromCopy(copy, text) == result);
  FUZZ_CHECK(Details(copy) == Details(message));
}

}  // namespace mimora::fuzz
