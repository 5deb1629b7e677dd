// Copyright (c) 2026 the mimora developers.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>

#include "mimora/mimora.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

using namespace std::string_view_literals;

constexpr const char* kNowhere = "/nonexistent/file";

struct ResultCase {
  const char* name;
  const char* input;  // null stands for a good file in this column and the next
  const char* output;
  int32_t want;
};

// Read errors come from the memory of the process, which has nothing at position 0.
constexpr ResultCase kCases[] = {
    {"both good", nullptr, nullptr, MIMORA_OK},
    {"no input", kNowhere, nullptr, MIMORA_E_OPEN_INPUT},
    {"input without a name", "", nullptr, MIMORA_E_OPEN_INPUT},
    {"input is a folder", "/", nullptr, MIMORA_E_OPEN_INPUT},
    {"output in a folder that is not there", nullptr, kNowhere, MIMORA_E_OPEN_OUTPUT},
    {"output is a folder", nullptr, "/", MIMORA_E_OPEN_OUTPUT},
    {"both missing", kNowhere, kNowhere, MIMORA_E_OPEN_INPUT},
    {"input cannot be read", "/proc/self/mem", nullptr, MIMORA_E_READ},
    {"output is full", nullptr, "/dev/full", MIMORA_E_WRITE},
};

TEST(FileCoders, TellWhichFileFailedAndHow) {
  // Shorter and longer than what is read and written at once.
  for (const size_t size : {size_t{4}, size_t{40000}}) {
    const TextFile good(std::string(size, 'A'));
    const TextFile result("");
    for (const ResultCase& c : kCases) {
      SCOPED_TRACE(::testing::Message() << c.name << ", " << size << " bytes");
      const char* input = c.input != nullptr ? c.input : good.Name();
      const char* output = c.output != nullptr ? c.output : result.Name();
      EXPECT_EQ(P_EncodeBASE64(input, output, 76), c.want);
      EXPECT_EQ(P_DecodeBASE64(input, output), c.want);
    }
  }
}

TEST(FileCoders, ReplaceWhatTheOutputHeld) {
  const TextFile bytes("Man, M"sv);
  const TextFile text("a longer text that was there before");
  EXPECT_EQ(P_EncodeBASE64(bytes.Name(), text.Name(), 4), MIMORA_OK);
  EXPECT_EQ(ReadFile(text.Name()), "TWFu\r\nLCBN\r\n");
  EXPECT_EQ(P_EncodeBASE64(bytes.Name(), text.Name(), 0), MIMORA_OK);
  EXPECT_EQ(ReadFile(text.Name()), "TWFuLCBN");
  const TextFile decoded("a longer text that was there before");
  EXPECT_EQ(P_DecodeBASE64(text.Name(), decoded.Name()), MIMORA_OK);
  EXPECT_EQ(ReadFile(decoded.Name()), "Man, M");
}

TEST(FileCoders, GiveBackWhatTheyEncoded) {
  std::string bytes;
  for (uint32_t i = 0; i < 50000; ++i) bytes += static_cast<char>(i * i >> 3);
  const TextFile original(bytes);
  const TextFile text("");
  const TextFile decoded("");
  for (const int32_t line_length : {0, 1, 76, 100}) {
    SCOPED_TRACE(line_length);
    EXPECT_EQ(P_EncodeBASE64(original.Name(), text.Name(), line_length), MIMORA_OK);
    EXPECT_EQ(P_DecodeBASE64(text.Name(), decoded.Name()), MIMORA_OK);
    EXPECT_EQ(ReadFile(decoded.Name()), bytes);
  }
}

}  // namespace
}  // namespace mimora::testing
