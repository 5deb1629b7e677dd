// Copyright (c) 2026 the mimora developers.
#include <mimetic/mimetic.h>

#include <memory>

#include "program.h"

namespace mimora::bench {
namespace {

// An output iterator that only counts.
class Counter {
 public:
  using iterator_category = std::output_iterator_tag;
  using value_type = void;
  using difference_type = void;
  using pointer = void;
  using reference = void;

  explicit Counter(int64_t& bytes) : bytes_(&bytes) {}
  Counter& operator*() { return *this; }
  Counter& operator++() { return *this; }
  Counter& operator++(int) { return *this; }
  template <typename Byte>
  Counter& operator=(const Byte&) {
    ++*bytes_;
    return *this;
  }
  Counter(const Counter&) = default;
  Counter& operator=(const Counter&) = default;

 private:
  int64_t* bytes_;
};

template <typename Decoder>
int64_t DecodedSize(const mimetic::Body& body) {
  Decoder decoder;
  int64_t bytes = 0;
  mimetic::decode(body.begin(), body.end(), decoder, Counter(bytes));
  return bytes;
}

int64_t DecodedSize(mimetic::MimeEntity& entity) {
  const mimetic::istring encoding = entity.header().contentTransferEncoding().mechanism();
  const mimetic::Body& body = entity.body();
  if (encoding == "base64") return DecodedSize<mimetic::Base64::Decoder>(body);
  if (encoding == "quoted-printable") return DecodedSize<mimetic::QP::Decoder>(body);
  return static_cast<int64_t>(body.size());
}

Contents Count(mimetic::MimeEntity& entity) {
  if (entity.body().parts().empty()) return {1, DecodedSize(entity)};
  Contents contents;
  for (mimetic::MimeEntity* part : entity.body().parts()) contents += Count(*part);
  return contents;
}

Contents Load(const Message& message) {
  mimetic::MimeEntity entity(message.text.begin(), message.text.end());
  return Count(entity);
}

// An output iterator over a buffer that is used again for every piece.
class Writer {
 public:
  explicit Writer(char*& place) : place_(&place) {}
  Writer& operator*() { return *this; }
  Writer& operator++() { return *this; }
  Writer& operator++(int) { return *this; }
  template <typename Byte>
  Writer& operator=(const Byte& byte) {
    *(*place_)++ = static_cast<char>(byte);
    return *this;
  }
  Writer(const Writer&) = default;
  Writer& operator=(const Writer&) = default;

 private:
  char** place_;
};

template <typename Codec>
int64_t Run(std::string_view input) {
  // An escaped line break is nine times as long as a line feed, the longest that any coder makes.
  const auto buffer = std::make_unique<char[]>(10 * kPiece);
  Codec codec;
  int64_t bytes = 0;
  ForEachPiece(input, [&](std::string_view piece, bool last) {
    char* place = buffer.get();
    Writer writer(place);
    for (const char c : piece) codec.process(static_cast<unsigned char>(c), writer);
    if constexpr (requires { codec.flush(writer); }) {
      if (last) codec.flush(writer);
    }
    bytes += place - buffer.get();
  });
  return bytes;
}

template <typename Codec>
RunCoder Prepare(std::string_view input) {
  return [input] { return Run<Codec>(input); };
}

}  // namespace

Program MakeProgram() {
  return {"mimetic",
          {{"memory", Load}},
          {{"base64-decode", Prepare<mimetic::Base64::Decoder>},
           {"base64-encode", Prepare<mimetic::Base64::Encoder>},
           {"quoted-printable-decode", Prepare<mimetic::QP::Decoder>},
           {"quoted-printable-encode", Prepare<mimetic::QP::Encoder>}}};
}

}  // namespace mimora::bench
