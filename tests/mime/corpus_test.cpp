// Copyright (c) 2026 the mimora developers.
//
// Messages from the tests of other software, against what independent readers make of them.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "mime/parser.h"
#include "platform/ascii.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

using nlohmann::json;

// Null stands for what readers do not agree on.
void ExpectNumber(const json& want, int64_t got, const char* what) {
  if (!want.is_number()) return;
  EXPECT_EQ(got, want.get<int64_t>()) << what;
}

void ExpectText(const json& want, const std::string& got, const char* what) {
  if (!want.is_string()) return;
  EXPECT_EQ(UpperCase(got), UpperCase(want.get<std::string>())) << what;
}

void ExpectTree(const json& want, const Bodypart& part, const std::string& place) {
  SCOPED_TRACE("part " + place);
  ExpectText(want["type"], part.TypeName(), "type");
  ExpectNumber(want["header"][0], part.PartStart, "header position");
  ExpectNumber(want["header"][1], part.HeaderSize, "header size");
  ExpectNumber(want["body"][0], part.BodyStart, "body position");
  ExpectNumber(want["body"][1], part.BodyLength, "body size");
  ExpectText(want.value("encoding", json()), part.ContentTransferEncoding, "encoding");
  ExpectText(want.value("charset", json()), part.Charset, "charset");
  ExpectNumber(want.value("decoded", json()), part.DecodedSize, "decoded size");
  ExpectNumber(want.value("uuencoded", json()), std::ssize(part.UuencodedBlocks), "uuencoded");
  if (!want.contains("children")) return;
  std::vector<const Bodypart*> subparts;
  for (const auto& child : part.Children) subparts.push_back(child.get());
  if (part.EnclosedMessage != nullptr) subparts.push_back(part.EnclosedMessage.get());
  ASSERT_EQ(subparts.size(), want["children"].size());
  for (size_t i = 0; i < subparts.size(); ++i)
    ExpectTree(want["children"][i], *subparts[i], place + "." + std::to_string(i + 1));
}

TEST(Corpus, ComesApartAsIndependentReadersSee) {
  const std::string corpus = std::string(MIMORA_TEST_DATA) + "/corpus/";
  const json expected = json::parse(ReadFile(corpus + "expected.json"));
  ASSERT_GT(expected.size(), 80u);
  for (const auto& [name, tree] : expected.items()) {
    SCOPED_TRACE(name);
    const std::string text = ReadFile(corpus + name);
    ASSERT_FALSE(text.empty());
    ForEverySource(text, [&tree = tree](Minstream& in) {
      Bodypart message;
      Load(message, in);
      ExpectTree(tree, message, "1");
    });
  }
}

}  // namespace
}  // namespace mimora::testing
