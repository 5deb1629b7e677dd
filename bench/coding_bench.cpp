// Copyright (c) 2026 the mimora developers.
#include "benchmarks.h"
#include "codec/base64.h"
#include "codec/charset/translate.h"
#include "codec/charset_table.h"
#include "codec/quoted_printable.h"
#include "codec/transfer_encoding.h"
#include "codec/uuencode.h"
#include "corpus.h"

namespace mimora::bench {
namespace {

// Enough to be out of the fastest caches.
constexpr size_t kSize = 4 << 20;

std::string ReadStart(const std::string& path) { return ReadFile(path).substr(0, kSize); }

int64_t CountBytes(intptr_t context, const void*, int64_t size) {
  *reinterpret_cast<int64_t*>(context) += size;
  return size;
}

// CODE reads one stream and writes another, which goes nowhere.
template <typename Code>
void RegisterCoder(const std::string& name, const std::string& input, Code code) {
  Register(name, input.size(), [input, code] {
    int64_t bytes = 0;
    Minstream in(MemorySource{input.data(), static_cast<int64_t>(input.size())});
    Moutstream out(CallbackSink{reinterpret_cast<intptr_t>(&bytes), CountBytes}, 65536);
    code(in, out);
    return bytes;
  });
}

void RegisterDecoder(const std::string& name, const std::string& input) {
  RegisterCoder(name + "/decode", input,
                [name](Minstream& in, Moutstream& out) { TransferEncodingDecode(in, out, name); });
  Register(name + "/count", input.size(), [name, input] {
    Minstream in(MemorySource{input.data(), static_cast<int64_t>(input.size())});
    Moutstream out(CountingSink{});
    TransferEncodingDecode(in, out, name);
    return out.WritePos();
  });
}

void RegisterTranslation(const char* from, const char* to, const std::string& input) {
  RegisterCoder(std::string("translate/") + from + "/" + to, input,
                [from, to](Minstream& in, Moutstream& out) {
                  TranslateStream(in, out, PageOfCharset(from), PageOfCharset(to));
                });
}

}  // namespace

void RegisterCoding(const std::string& corpus) {
  RegisterDecoder("base64", ReadStart(corpus + "/base64.txt"));
  RegisterDecoder("quoted-printable", ReadStart(corpus + "/quoted-printable.txt"));
  RegisterDecoder("x-uuencode", ReadStart(corpus + "/uuencode.txt"));

  RegisterCoder("base64/encode", ReadStart(corpus + "/bytes.bin"),
                [](Minstream& in, Moutstream& out) { EncodeBase64(in, out, 76); });
  const std::string text = ReadStart(corpus + "/text.txt");
  RegisterCoder("quoted-printable/encode", text, EncodeQuotedPrintable);

  const uint32_t latin = PageOfCharset("iso-8859-1");
  const std::string utf8 = TranslateText(text, latin, kUtf8Page);
  RegisterTranslation("iso-8859-1", "utf-8", text);
  RegisterTranslation("utf-8", "iso-8859-1", utf8);
  RegisterTranslation("utf-8", "utf-16", utf8);
  RegisterTranslation("gb18030", "utf-8", TranslateText(text, latin, PageOfCharset("gb18030")));
}

}  // namespace mimora::bench
