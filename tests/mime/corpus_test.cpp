// Copyright (c) 2026 the mimora developers.
//
// Messages from the tests of other software, against what independent readers make of them.
#include <algorithm>
#include <nlohmann/json.hpp>

#include "mime/parser.h"
#include "mime/tree_text.h"
#include "platform/ascii.h"
#include "support/sources.h"

namespace mimora {
namespace {

using nlohmann::json;

std::vector<const Bodypart*> Subparts(const Bodypart& part) {
  std::vector<const Bodypart*> parts;
  for (const auto& child : part.Children) parts.push_back(child.get());
  if (part.EnclosedMessage != nullptr) parts.push_back(part.EnclosedMessage.get());
  return parts;
}

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
  ExpectText(want["type"], part.Type().Full(), "type");
  ExpectNumber(want["header"][0], part.PartStart, "header position");
  ExpectNumber(want["header"][1], part.HeaderSize, "header size");
  ExpectNumber(want["body"][0], part.BodyStart, "body position");
  ExpectNumber(want["body"][1], part.BodyLength, "body size");
  if (want.contains("encoding")) {
    ExpectText(want["encoding"], part.ContentTransferEncoding, "encoding");
  }
  if (want.contains("charset")) ExpectText(want["charset"], part.Charset, "charset");
  if (want.contains("decoded")) ExpectNumber(want["decoded"], part.DecodedSize, "decoded size");
  if (want.contains("uuencoded")) {
    EXPECT_EQ(part.UuencodedBlocks.size(), want["uuencoded"].get<size_t>());
  }
  if (!want.contains("children")) return;
  const auto subparts = Subparts(part);
  ASSERT_EQ(subparts.size(), want["children"].size());
  for (size_t i = 0; i < subparts.size(); ++i) {
    ExpectTree(want["children"][i], *subparts[i], place + "." + std::to_string(i + 1));
  }
}

const std::string kCorpus = std::string(MIMORA_TEST_DATA) + "/corpus/";

TEST(Corpus, ComesApartAsIndependentReadersSee) {
  const json expected = json::parse(testing::ReadFile(kCorpus + "expected.json"));
  ASSERT_GT(expected.size(), 80u);
  for (const auto& [name, tree] : expected.items()) {
    SCOPED_TRACE(name);
    const std::string text = testing::ReadFile(kCorpus + name);
    ASSERT_FALSE(text.empty());
    testing::ForEverySource(text, [&tree = tree](Minstream& in) {
      Bodypart message;
      Load(message, in);
      ExpectTree(tree, message, "1");
    });
  }
}

// Cut at any byte: the same tree from every source, no part outside what is there.
TEST(Corpus, CutAnywhereGivesTheSameTreeFromMemoryAndCallbacks) {
  const json expected = json::parse(testing::ReadFile(kCorpus + "expected.json"));
  for (const auto& [name, tree] : expected.items()) {
    const std::string whole = testing::ReadFile(kCorpus + name);
    if (whole.size() > 1200) continue;
    for (size_t length = 0; length < whole.size(); ++length) {
      SCOPED_TRACE(name + " cut after " + std::to_string(length));
      const std::string text = whole.substr(0, length);
      Bodypart from_memory;
      LoadFromCopy(from_memory, text);
      testing::DripSource source(text, 3);
      Minstream in(source.Reading(), 7);
      Bodypart from_callbacks;
      Load(from_callbacks, in);
      ASSERT_EQ(testing::TreeText(from_memory), testing::TreeText(from_callbacks));
      WalkBodyparts(from_memory, [length](const Bodypart& part) {
        ASSERT_LE(part.BodyStart + part.BodyLength, static_cast<int64_t>(length));
      });
    }
  }
}

}  // namespace
}  // namespace mimora
