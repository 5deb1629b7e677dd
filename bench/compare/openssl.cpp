// Copyright (c) 2026 the mimora developers.
#include <openssl/evp.h>

#include <memory>

#include "program.h"

namespace mimora::bench {
namespace {

struct FreeContext {
  void operator()(EVP_ENCODE_CTX* context) const { EVP_ENCODE_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_ENCODE_CTX, FreeContext>;

const unsigned char* Bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

template <typename Update, typename Final>
int64_t Run(std::string_view input, EVP_ENCODE_CTX* context, Update update, Final end) {
  const auto out = std::make_unique<unsigned char[]>(2 * kPiece);
  int size = 0;
  int64_t bytes = 0;
  ForEachPiece(input, [&](std::string_view piece, bool) {
    update(context, out.get(), &size, Bytes(piece), static_cast<int>(piece.size()));
    bytes += size;
  });
  end(context, out.get(), &size);
  return bytes + size;
}

RunCoder PrepareEncoder(std::string_view input) {
  return [input] {
    const Context context(EVP_ENCODE_CTX_new());
    EVP_EncodeInit(context.get());
    return Run(input, context.get(), EVP_EncodeUpdate, EVP_EncodeFinal);
  };
}

RunCoder PrepareDecoder(std::string_view input) {
  return [input] {
    const Context context(EVP_ENCODE_CTX_new());
    EVP_DecodeInit(context.get());
    return Run(input, context.get(), EVP_DecodeUpdate, EVP_DecodeFinal);
  };
}

}  // namespace

Program MakeProgram() {
  return {"openssl", {}, {{"base64-decode", PrepareDecoder}, {"base64-encode", PrepareEncoder}}};
}

}  // namespace mimora::bench
