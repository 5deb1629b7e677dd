// Copyright (c) 2026 the mimora developers.
#include "mimora/mimora.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

using namespace std::string_literals;

TEST(FileCoders, TellWhichFileFailedAndHow) {
  constexpr const char* kNowhere = "/nonexistent/file";
  // Read errors come from the memory of the process, which has nothing at position 0.
  constexpr struct {
    const char* name;
    const char *input, *output;  // null stands for a good file
    int32_t want;
  } kCases[] = {
      {"both good", nullptr, nullptr, MIMORA_OK},
      {"no input", kNowhere, nullptr, MIMORA_E_OPEN_INPUT},
      {"input without a name", "", nullptr, MIMORA_E_OPEN_INPUT},
      {"input is a folder", "/", nullptr, MIMORA_E_OPEN_INPUT},
      {"output is a folder", nullptr, "/", MIMORA_E_OPEN_OUTPUT},
      {"both missing", kNowhere, kNowhere, MIMORA_E_OPEN_INPUT},
      {"input cannot be read", "/proc/self/mem", nullptr, MIMORA_E_READ},
      {"output is full", nullptr, "/dev/full", MIMORA_E_WRITE},
  };
  // Shorter and longer than what is read and written at once.
  for (const size_t size : {size_t{4}, size_t{40000}}) {
    const TextFile good(std::string(size, 'A'));
    const TextFile result("");
    for (const auto& c : kCases) {
      SCOPED_TRACE(::testing::Message() << c.name << ", " << size << " bytes");
      const char* input = c.input != nullptr ? c.input : good.Name();
      const char* output = c.output != nullptr ? c.output : result.Name();
      EXPECT_EQ(P_EncodeBASE64(input, output, 76), c.want);
      EXPECT_EQ(P_DecodeBASE64(input, output), c.want);
    }
  }
}

TEST(FileCoders, ReplaceWhatTheOutputHeldAndGiveBackWhatTheyEncoded) {
  // Longer than what is read and written at once.
  std::string bytes;
  for (uint32_t i = 0; i < 50000; ++i) bytes += static_cast<char>(i * i >> 3);
  for (const auto& [original, line_length, start] : {std::tuple{"Man, M"s, 4, "TWFu\r\nLCBN\r\n"s},
                                                     {"Man, M"s, 0, "TWFuLCBN"s},
                                                     {bytes, 76, ""s}}) {
    const TextFile input(original);
    const TextFile text("a longer text that was there before");
    const TextFile decoded("a longer text that was there before");
    EXPECT_EQ(P_EncodeBASE64(input.Name(), text.Name(), line_length), MIMORA_OK);
    EXPECT_TRUE(start.empty() || ReadFile(text.Name()) == start) << ReadFile(text.Name());
    EXPECT_EQ(P_DecodeBASE64(text.Name(), decoded.Name()), MIMORA_OK);
    EXPECT_EQ(ReadFile(decoded.Name()), original);
  }
}

}  // namespace
}  // namespace mimora::testing
