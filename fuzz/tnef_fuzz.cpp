// Copyright (c) 2026 the mimora developers.
//
// Any bytes as the body of a winmail.dat, by itself and inside a message.
#include <vector>

#include "analysis/write_body.h"
#include "codec/base64.h"
#include "diag/limits.h"
#include "diag/result.h"
#include "fuzz.h"
#include "mime/parser.h"
#include "mime/tnef.h"
#include "support/drip_source.h"

namespace mimora::fuzz {
namespace {

using Files = std::vector<EmbeddedAttachment>;

bool operator==(const Files& a, const Files& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
    return x.Name == y.Name && x.Offset == y.Offset && x.DecodedSize == y.DecodedSize;
  });
}

Files FilesIn(Minstream& in, size_t size, size_t most) {
  Files files;
  const bool is_tnef = ReadTnefAttachments(in, static_cast<int64_t>(size), most, files);
  FUZZ_CHECK(is_tnef || files.empty());
  FUZZ_CHECK(files.size() <= most);
  return files;
}

void CheckInMessage(std::string_view stream, const Files& files, int64_t buffer_size) {
  std::string text = "Content-Type: application/ms-tnef\nContent-Transfer-Encoding: base64\n\n";
  text += WrittenBy([stream](Moutstream& out) {
    Minstream in(SourceOf(stream));
    EncodeBase64(in, out, 76);
  });
  testing::DripSource source(text, buffer_size);
  Minstream in(source.Reading(), buffer_size);
  Bodypart message;
  FUZZ_CHECK(Load(message, in) == kOk);
  FUZZ_CHECK(message.TnefAttachments == files);
  for (int32_t number = 1; number <= std::min<int64_t>(std::ssize(files), 8); ++number) {
    const EmbeddedAttachment& file = files[static_cast<size_t>(number - 1)];
    const std::string bytes = WrittenBy(
        [&](Moutstream& out) { FUZZ_CHECK(SaveAttachment(message, out, nullptr, number) == kOk); });
    FUZZ_CHECK(bytes == stream.substr(static_cast<size_t>(file.Offset), bytes.size()));
    FUZZ_CHECK(std::ssize(bytes) == file.DecodedSize);
  }
}

}  // namespace

void CheckInput(Input input) {
  const int64_t buffer_size = 1 + input.Byte() % 64;
  const std::string_view stream = input.Rest();
  Minstream memory(SourceOf(stream));
  const Files files = FilesIn(memory, stream.size(), kMostEmbeddedFiles);
  for (const EmbeddedAttachment& file : files) {
    FUZZ_CHECK(!file.Name.empty() && file.Name.find('\0') == std::string::npos);
    FUZZ_CHECK(std::ssize(file.Name) <= 2 * kLongestTnefName);
    FUZZ_CHECK(file.Offset > 0 && file.DecodedSize > 0);
    FUZZ_CHECK(file.Offset + file.DecodedSize <= std::ssize(stream));
  }
  testing::DripSource source(stream, 5);
  Minstream dripping(source.Pointing(), buffer_size);
  FUZZ_CHECK(FilesIn(dripping, stream.size(), kMostEmbeddedFiles) == files);
  // A stream that is shorter than it was said to be.
  Minstream cut(SourceOf(stream.substr(0, stream.size() / 2)));
  FilesIn(cut, stream.size(), 2);
  CheckInMessage(stream, files, buffer_size);
}

}  // namespace mimora::fuzz
