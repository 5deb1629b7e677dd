// Copyright (c) 2026 the mimora developers.
#include "codec/charset/translate.h"

#include <algorithm>

#include "codec/charset_table.h"
#include "codec/run_coder.h"

namespace mimora {
namespace {

// Small enough for both buffers to stay in the processor's nearest cache, as text seldom grows.
constexpr size_t kPiece = 4096;

// Writes what a translator makes of the pieces of a stream.
class StreamTranslator {
 public:
  StreamTranslator(Moutstream& out, uint32_t from, uint32_t to)
      : out_(out), translator_(from, to, kPiece) {}

  void Feed(std::string_view text) {
    for (; !text.empty(); text.remove_prefix(std::min(kPiece, text.size()))) {
      out_.WriteText(translator_.Translate(text.substr(0, kPiece)));
    }
  }

  void Finish() { out_.WriteText(translator_.Finish()); }

 private:
  Moutstream& out_;
  Translator translator_;
};

}  // namespace

Translator::Translator(uint32_t from, uint32_t to, size_t longest_piece)
    : decoder_(MakeDecoder(from)),
      encoder_(MakeEncoder(to)),
      wide_(new char16_t[DecodedRoom(longest_piece)]),
      bytes_(new char[EncodedRoom(DecodedRoom(longest_piece)) + EncodedRoom(0)]),
      mark_may_follow_(from == kUtf8Page || from == kUtf7Page) {}

std::string_view Translator::Translate(std::string_view piece) {
  const char* end = Encode(decoder_->Decode(piece, wide_.get()));
  return {bytes_.get(), static_cast<size_t>(end - bytes_.get())};
}

std::string_view Translator::Finish() {
  const char* end = encoder_->Finish(Encode(decoder_->Finish(wide_.get())));
  return {bytes_.get(), static_cast<size_t>(end - bytes_.get())};
}

char* Translator::Encode(const char16_t* end) {
  const char16_t* begin = wide_.get();
  if (mark_may_follow_ && begin != end) {
    mark_may_follow_ = false;
    if (*begin == kByteOrderMark) ++begin;
  }
  return encoder_->Encode({begin, static_cast<size_t>(end - begin)}, bytes_.get());
}

int32_t TranslateStream(Minstream& in, Moutstream& out, uint32_t from, uint32_t to) {
  StreamTranslator translator(out, from, to);
  return RunCoder(in, out, translator);
}

std::string TranslateText(std::string_view text, uint32_t from, uint32_t to) {
  Translator translator(from, to, std::min(text.size(), kPiece));
  std::string translated;
  for (; !text.empty(); text.remove_prefix(std::min(kPiece, text.size()))) {
    translated += translator.Translate(text.substr(0, kPiece));
  }
  return translated.append(translator.Finish());
}

}  // namespace mimora
