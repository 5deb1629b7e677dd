// Copyright (c) 2026 the mimora developers.
#include <mimora/mimora.h>

#include <memory>

#include "load_message.h"
#include "program.h"

namespace mimora::bench {
namespace {

int64_t CountBytes(S_Context context, const void*, int64_t size) {
  *reinterpret_cast<int64_t*>(context) += size;
  return size;
}

// A body that names no encoding needs no decoding before it is encoded.
std::string Header(const std::string& encoding) {
  const std::string type = "Content-Type: application/octet-stream\r\n";
  if (encoding.empty()) return type + "\r\n";
  return type + "Content-Transfer-Encoding: " + encoding + "\r\n\r\n";
}

// A message whose body is the input.
class BodyCoder {
 public:
  BodyCoder(const char* encoding, const char* target, std::string_view body)
      : target_(target),
        text_(Header(encoding) + std::string(body)),
        in_(S_CreateInStream(text_.data(), static_cast<int32_t>(text_.size()), 0, nullptr, nullptr,
                             nullptr, 0)) {
    M_LoadMessage(message_, in_);
  }
  ~BodyCoder() {
    M_DestroyMessage(message_);
    S_DestroyInStream(in_);
  }
  BodyCoder(const BodyCoder&) = delete;
  BodyCoder& operator=(const BodyCoder&) = delete;

  int64_t Run() const {
    int64_t bytes = 0;
    S_OutStream* out = S_CreateOutStream(nullptr, reinterpret_cast<S_Context>(&bytes), CountBytes,
                                         nullptr, nullptr, kPiece);
    const int32_t result = M_SaveBodypartBody(message_, target_, "", in_, out);
    S_DestroyOutStream(out);
    return result == MIMORA_OK ? bytes : -1;
  }

 private:
  const char* target_;
  std::string text_;
  S_InStream* in_;
  M_Bodypart* message_ = M_CreateMessage();
};

RunCoder Prepare(const char* encoding, const char* target, std::string_view input) {
  const auto coder = std::make_shared<BodyCoder>(encoding, target, input);
  return [coder] { return coder->Run(); };
}

}  // namespace

Program MakeProgram() {
  const auto decode_base64 = [](std::string_view input) { return Prepare("base64", "", input); };
  const auto encode_base64 = [](std::string_view input) { return Prepare("", "base64", input); };
  const auto decode_qp = [](std::string_view input) {
    return Prepare("quoted-printable", "", input);
  };
  const auto encode_qp = [](std::string_view input) {
    return Prepare("", "quoted-printable", input);
  };
  const auto decode_uu = [](std::string_view input) { return Prepare("x-uuencode", "", input); };
  return {"mimora",
          {{"memory", LoadFromMemory}, {"file", LoadFromFile}, {"callbacks", LoadFromCallbacks}},
          {{"base64-decode", decode_base64},
           {"base64-encode", encode_base64},
           {"quoted-printable-decode", decode_qp},
           {"quoted-printable-encode", encode_qp},
           {"uuencode-decode", decode_uu}}};
}

}  // namespace mimora::bench
