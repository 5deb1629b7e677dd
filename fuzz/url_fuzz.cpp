// Copyright (c) 2026 the mimora developers.
//
// URL escaping in both directions, also in place.
#include "fuzz.h"
#include "mimora/mimora.h"
#include "util/url_escape.h"

namespace mimora::fuzz {
namespace {

using Export = void (*)(const char*, char*, uint32_t*);

// The text of the export, into just the room that it asks for and over its own input.
void CheckExport(Export work, const std::string& input, const std::string& wanted) {
  uint32_t size = 0;
  work(input.c_str(), nullptr, &size);
  FUZZ_CHECK(size == wanted.size() + 1);
  const size_t room = std::max<size_t>(size, input.size() + 1);
  const std::unique_ptr<char[]> text(new char[room]);
  std::copy_n(input.c_str(), input.size() + 1, text.get());
  work(text.get(), text.get(), &size);
  FUZZ_CHECK(std::equal(wanted.c_str(), wanted.c_str() + size, text.get()));
}

}  // namespace

void CheckInput(Input input) {
  std::string text(input.Rest());
  const std::string escaped = EscapeUrl(text);
  FUZZ_CHECK(escaped.find_first_of(": ?+&=") == std::string::npos);
  FUZZ_CHECK(UnEscapeUrl(escaped) == text);
  FUZZ_CHECK(UnEscapeUrl(text).size() <= text.size());
  text.resize(std::min(text.find('\0'), text.size()));
  CheckExport(P_EscapeURL, text, EscapeUrl(text));
  CheckExport(P_UnEscapeURL, text, UnEscapeUrl(text));
}

}  // namespace mimora::fuzz
