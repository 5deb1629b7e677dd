// Copyright (c) 2026 the mimora developers.
#include "analysis/raw_body.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "diag/result.h"
#include "mime/parser.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

constexpr char kHeader[] = "Content-Type: multipart/mixed; boundary=b\n\n";
const std::string kMail = std::string(kHeader) + "--b\nA: b\n\none\n--b\n\ntwo\n--b--\nend";

struct Case {
  const char* name;
  bool first_part;  // else the message
  bool body_only;
  int32_t offset;
  uint32_t wanted;
  const char* text;  // null: there is less
};

constexpr Case kCases[] = {
    {"a body", true, true, 0, 3, "one"},
    {"a body and what is behind it", true, true, 1, 6, "ne\n--b"},
    {"a part", true, false, 0, 9, "A: b\n\none"},
    {"a part from its middle on", true, false, 3, 6, "b\n\none"},
    {"a part ends with its body", true, false, 0, 10, nullptr},
    {"nothing of a part", true, false, 9, 0, ""},
    {"behind a part", true, false, 20, 1, nullptr},
    {"in front of everything", true, false, -1000, 1, nullptr},
    {"the message goes on to the end", false, true, 29, 3, "end"},
    {"and no further", false, true, 29, 4, nullptr},
};

TEST(RawText, IsReadAndSavedFromEverySource) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.name);
    ForEverySource(kMail, [&c](Minstream& in) {
      Bodypart message;
      Load(message, in);
      const Bodypart& part = c.first_part ? *message.Children[0] : message;
      const TextFile file("old");
      uint32_t count = c.wanted;
      EXPECT_EQ(SaveText(&part, nullptr, file.Name(), c.body_only, c.offset, &count),
                c.text != nullptr ? kOk : kReadFailed);
      EXPECT_EQ(std::filesystem::exists(file.Name()), c.text != nullptr);
      EXPECT_EQ(ReadFile(file.Name()), c.text != nullptr ? c.text : "");
      char buffer[20] = {};
      uint32_t size = c.wanted;
      const auto read = c.body_only ? ReadBodyText : ReadBodypartText;
      EXPECT_EQ(read(&part, nullptr, buffer, c.offset, &size), 0);
      if (c.text != nullptr) {
        EXPECT_EQ(std::string(buffer, size), c.text);
      }
      EXPECT_EQ(size < c.wanted, c.text == nullptr);
    });
  }
}

TEST(RawText, IsNotSavedWhereThatFails) {
  Minstream in(MemorySource{.data = kMail.data(), .length = std::ssize(kMail)});
  Bodypart message;
  Load(message, in);
  uint32_t count = 5;
  EXPECT_EQ(SaveText(&message, nullptr, "/dev/full", false, 0, &count), kWriteFailed);
  EXPECT_TRUE(std::filesystem::exists("/dev/full"));
  EXPECT_EQ(SaveText(&message, nullptr, "/nonexistent/x", false, 0, &count), kOutputNotOpened);
  EXPECT_EQ(SaveText(&message, nullptr, nullptr, false, 0, &count), kOutputNotOpened);
  EXPECT_EQ(SaveText(&message, nullptr, "/dev/null", false, 0, nullptr), kNotOpen);
  EXPECT_EQ(SaveText(nullptr, &in, "/dev/null", false, 0, &count), kNotOpen);
}

}  // namespace
}  // namespace mimora::testing
