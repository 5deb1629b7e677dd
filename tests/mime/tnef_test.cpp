// Copyright (c) 2026 the mimora developers.
#include "mime/tnef.h"

#include <random>

#include "codec/base64.h"
#include "diag/limits.h"
#include "mime/parser.h"
#include "mime/tree_text.h"
#include "support/sources.h"

namespace mimora {
namespace {

using testing::TreeText;

// ---- Streams put together -----------------------------------------------------------------------

std::string Number(uint64_t value, int size) {
  std::string bytes;
  for (; size > 0; --size, value >>= 8) bytes += static_cast<char>(value & 0xFF);
  return bytes;
}

std::string Start() { return Number(0x223E9F78, 4) + Number(1, 2); }

std::string Attribute(int level, uint32_t id, const std::string& data) {
  return Number(static_cast<uint64_t>(level), 1) + Number(id, 4) + Number(data.size(), 4) + data +
         Number(0, 2);
}

std::string Rendering() { return Attribute(2, 0x00069002, std::string(14, '\0')); }
std::string Title(const std::string& name) { return Attribute(2, 0x00018010, name + '\0'); }
std::string Data(const std::string& data) { return Attribute(2, 0x0006800F, data); }

// One property with one value of variable length.
std::string LongProperty(uint32_t type, uint32_t id, const std::string& value) {
  return Number(type, 2) + Number(id, 2) + Number(1, 4) + Number(value.size(), 4) + value +
         std::string((4 - value.size() % 4) % 4, '\0');
}

std::string Properties(uint32_t count, const std::string& properties) {
  return Attribute(2, 0x00069005, Number(count, 4) + properties);
}

std::string LongName(const std::string& name) {
  return Properties(1, LongProperty(0x1E, 0x3707, name + '\0'));
}

std::string Utf16(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) bytes += Number(unit, 2);
  return bytes + Number(0, 2);
}

using Files = std::vector<std::pair<std::string, int64_t>>;

Files FilesOf(const std::string& stream, bool* is_tnef = nullptr) {
  Minstream in(MemorySource{.data = stream.data(), .length = std::ssize(stream)});
  std::vector<EmbeddedAttachment> list;
  const bool known = ReadTnefAttachments(in, std::ssize(stream), kMostEmbeddedFiles, list);
  if (is_tnef != nullptr) *is_tnef = known;
  Files files;
  for (const EmbeddedAttachment& file : list) {
    // What is listed lies in the stream.
    EXPECT_GT(file.DecodedSize, 0);
    EXPECT_LE(file.Offset + file.DecodedSize, std::ssize(stream));
    files.emplace_back(file.Name, file.DecodedSize);
  }
  return files;
}

TEST(Tnef, ListsNamedFilesThatAreNotEmpty) {
  const std::string named_property = Number(0x1E, 2) + Number(0x8001, 2) + std::string(16, 'g') +
                                     Number(1, 4) + Number(6, 4) + std::string("a\0b\0\0\0", 6) +
                                     std::string(2, '\0') + Number(1, 4) + Number(2, 4) +
                                     std::string("x\0\0\0", 4);
  const struct {
    const char* name;
    std::string stream;
    Files want;
  } cases[] = {
      {"nothing", Start(), {}},
      {"two files",
       Start() + Attribute(1, 0x00089006, "v") + Rendering() + Title("a.txt") + Data("abc") +
           Rendering() + Data("defg") + Title("b.txt"),
       {{"a.txt", 3}, {"b.txt", 4}}},
      {"long name first",
       Start() + Rendering() + LongName("longer.txt") + Title("L~1") + Data("a"),
       {{"longer.txt", 1}}},
      {"UTF-16 name",
       Start() + Rendering() + Data("a") +
           Properties(1, LongProperty(0x1F, 0x3707, Utf16(u"\u010d\U0001F600\xD800."))),
       {{"\xC4\x8D\xF0\x9F\x98\x80\xEF\xBF\xBD.", 1}}},
      {"behind other properties",
       Start() + Rendering() + Data("a") +
           Properties(6, Number(3, 2) + Number(0x3705, 2) + Number(1, 4) +         // number
                             Number(0x40, 2) + Number(0x3007, 2) + Number(9, 8) +  // time
                             Number(0x1003, 2) + Number(0x1234, 2) + Number(2, 4) +
                             Number(7, 8) +  // two numbers
                             named_property + LongProperty(0x102, 0x3702, "abcde") +
                             LongProperty(0x1E, 0x3707, "n")),
       {{"n", 1}}},
      {"behind a property of no known type",
       Start() + Rendering() + Title("t") + Data("a") +
           Properties(2, Number(0x77, 2) + Number(1, 2) + LongProperty(0x1E, 0x3707, "n")) +
           Rendering() + Title("u") + Data("b"),
       {{"t", 1}, {"u", 1}}},
      {"no name", Start() + Rendering() + Data("abc"), {}},
      {"untitled", Start() + Rendering() + Title("Untitled Attachment") + Data("abc"), {}},
      {"empty", Start() + Rendering() + Title("a") + Data(""), {}},
      {"data cut off",
       (Start() + Rendering() + Title("a") + Data("abcdef")).substr(0, 57),
       {{"a", 4}}},
      {"false length",
       Start() + Rendering() + Title("a") + Data("abc") + Number(2, 1) + Number(0x0006800F, 4) +
           Number(0xFFFFFFFF, 4),
       {{"a", 3}}},
      {"false level ends it",
       Start() + Rendering() + Title("a") + Data("abc") + Attribute(7, 1, "x") + Rendering() +
           Title("b") + Data("x"),
       {{"a", 3}}},
      {"false property count",
       Start() + Rendering() + Title("a") + Data("abc") + Properties(0xFFFFFFFF, ""),
       {{"a", 3}}},
      {"false value count",
       Start() + Rendering() + Title("a") + Data("abc") +
           Properties(1, Number(0x1E, 2) + Number(0x3707, 2) + Number(0xFFFFFFFF, 4)),
       {{"a", 3}}},
      {"false value length",
       Start() + Rendering() + Title("a") + Data("abc") +
           Properties(1,
                      Number(0x1E, 2) + Number(0x3707, 2) + Number(1, 4) + Number(0xFFFFFFF0, 4)),
       {{"a", 3}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    bool is_tnef = false;
    EXPECT_EQ(FilesOf(c.stream, &is_tnef), c.want);
    EXPECT_TRUE(is_tnef);
  }
}

TEST(Tnef, KnowsWhatIsNone) {
  for (const char* text : {"", "x", "\x78\x9F\x3E", "\x22\x3E\x9F\x78 the other way round"}) {
    bool is_tnef = true;
    EXPECT_EQ(FilesOf(text, &is_tnef), Files{});
    EXPECT_FALSE(is_tnef);
  }
}

// Cut at every place and changed at every byte: nothing outside the stream is read or listed.
TEST(Tnef, SurvivesDamageAtEveryByte) {
  const std::string whole = Start() + Attribute(1, 0x00089006, "v") + Rendering() + Title("a.txt") +
                            Data("abc") + LongName("longer.txt") + Rendering() + Title("b") +
                            Data("d") + Properties(1, LongProperty(0x1F, 0x3707, Utf16(u"name")));
  std::mt19937 random(3);
  for (size_t at = 0; at < whole.size(); ++at) {
    FilesOf(whole.substr(0, at));
    for (int round = 0; round < 8; ++round) {
      std::string damaged = whole;
      damaged[at] = static_cast<char>(random());
      FilesOf(damaged);
    }
  }
}

TEST(Tnef, NamesAndListsHaveLimits) {
  const auto limit = static_cast<size_t>(kLongestTnefName);
  for (const size_t length : {limit - 1, limit, limit + 1}) {
    const Files files =
        FilesOf(Start() + Rendering() + Title(std::string(length, 'n')) + Data("a"));
    ASSERT_EQ(files.size(), 1u);
    EXPECT_EQ(files[0].first.size(), std::min(length, limit));
  }
  for (const size_t count : {kMostEmbeddedFiles - 1, kMostEmbeddedFiles, kMostEmbeddedFiles + 1}) {
    std::string stream = Start();
    for (size_t i = 0; i < count; ++i) stream += Rendering() + Title("a") + Data("b");
    EXPECT_EQ(FilesOf(stream).size(), std::min(count, kMostEmbeddedFiles));
  }
}

// ---- Inside a message ---------------------------------------------------------------------------

TEST(Tnef, InAMessageIsDecodedFirstAndLeavesNoFileBehind) {
  const std::string stream = Start() + Rendering() + Title("a.txt") + Data("abc");
  Minstream in(MemorySource{.data = stream.data(), .length = std::ssize(stream)});
  Moutstream encoded{MemorySink{}};
  EncodeBase64(in, encoded, 76);
  const std::string head =
      "Content-Type: application/ms-tnef\nContent-Transfer-Encoding: base64\n\n";
  Bodypart message;
  ASSERT_EQ(LoadFromCopy(message, head + testing::TextOf(encoded)), kOk);
  ASSERT_EQ(message.TnefAttachments.size(), 1u);
  EXPECT_EQ(message.TnefAttachments[0].Name, "a.txt");
  EXPECT_EQ(stream.substr(static_cast<size_t>(message.TnefAttachments[0].Offset), 3), "abc");
  EXPECT_EQ(message.DecodedSize, std::ssize(stream));

  // What is no TNEF stream is a body like any other.
  ASSERT_EQ(LoadFromCopy(message, head + "TWFu"), kOk);
  EXPECT_EQ(TreeText(message), "APPLICATION/MS-TNEF 0+69 69+4 =3\n");
}

}  // namespace
}  // namespace mimora
