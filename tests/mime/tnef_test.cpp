// Copyright (c) 2026 the mimora developers.
#include "mime/tnef.h"

#include <random>

#include "codec/base64.h"
#include "diag/limits.h"
#include "mime/parser.h"
#include "mime/tree_text.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

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

const std::string kRendering = Attribute(2, 0x00069002, std::string(14, '\0'));
std::string Title(const std::string& name) { return Attribute(2, 0x00018010, name + '\0'); }
std::string Data(const std::string& data) { return Attribute(2, 0x0006800F, data); }
std::string File(const std::string& name, const std::string& data) {
  return kRendering + Title(name) + Data(data);
}

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

// The files of a stream, "none" when it is no TNEF stream.
std::string FilesOf(const std::string& stream) {
  Minstream in(SourceOf(stream));
  std::vector<EmbeddedAttachment> list;
  if (!ReadTnefAttachments(in, std::ssize(stream), kMostEmbeddedFiles, list)) return "none";
  std::string files;
  for (const EmbeddedAttachment& file : list) {
    // What is listed lies in the stream.
    EXPECT_GT(file.DecodedSize, 0);
    EXPECT_LE(file.Offset + file.DecodedSize, std::ssize(stream));
    files += "[" + file.Name + " " + std::to_string(file.DecodedSize) + "]";
  }
  return files;
}

TEST(Tnef, ListsNamedFilesThatAreNotEmpty) {
  const std::string number = Number(3, 2) + Number(0x3705, 2) + Number(1, 4);
  const std::string time = Number(0x40, 2) + Number(0x3007, 2) + Number(9, 8);
  const std::string two_numbers =
      Number(0x1003, 2) + Number(0x1234, 2) + Number(2, 4) + Number(7, 8);
  const std::string named_property = Number(0x1E, 2) + Number(0x8001, 2) + std::string(16, 'g') +
                                     Number(1, 4) + Number(6, 4) + std::string("a\0b\0\0\0", 6) +
                                     std::string(2, '\0') + Number(1, 4) + Number(2, 4) +
                                     std::string("x\0\0\0", 4);
  const std::string name = LongProperty(0x1E, 0x3707, "n");
  const std::string a_txt = File("a.txt", "abc");
  const struct {
    const char* name;
    std::string attributes;
    const char* want;
  } cases[] = {
      {"nothing", "", ""},
      {"two files",
       Attribute(1, 0x00089006, "v") + a_txt + kRendering + Data("defg") + Title("b.txt"),
       "[a.txt 3][b.txt 4]"},
      {"long name first", kRendering + LongName("longer.txt") + Title("L~1") + Data("a"),
       "[longer.txt 1]"},
      {"UTF-16 name",
       kRendering + Data("a") +
           Properties(1, LongProperty(0x1F, 0x3707, Utf16(u"\u010d\U0001F600\xD800."))),
       "[\xC4\x8D\xF0\x9F\x98\x80\xEF\xBF\xBD. 1]"},
      {"behind other properties",
       kRendering + Data("a") +
           Properties(6, number + time + two_numbers + named_property +
                             LongProperty(0x102, 0x3702, "abcde") + name),
       "[n 1]"},
      {"behind a property of no known type",
       File("t", "a") + Properties(2, Number(0x77, 2) + Number(1, 2) + name) + File("u", "b"),
       "[t 1][u 1]"},
      {"no name", kRendering + Data("abc"), ""},
      {"untitled", File("Untitled Attachment", "abc"), ""},
      {"empty", File("a", ""), ""},
      {"data cut off", File("a", "abcdef").substr(0, 51), "[a 4]"},
      {"false length", a_txt + Number(2, 1) + Number(0x0006800F, 4) + Number(0xFFFFFFFF, 4),
       "[a.txt 3]"},
      {"false level ends it", a_txt + Attribute(7, 1, "x") + File("b", "x"), "[a.txt 3]"},
      {"false property count", a_txt + Properties(0xFFFFFFFF, ""), "[a.txt 3]"},
      {"false value count",
       a_txt + Properties(1, Number(0x1E, 2) + Number(0x3707, 2) + Number(0xFFFFFFFF, 4)),
       "[a.txt 3]"},
      {"false value length",
       a_txt + Properties(
                   1, Number(0x1E, 2) + Number(0x3707, 2) + Number(1, 4) + Number(0xFFFFFFF0, 4)),
       "[a.txt 3]"},
  };
  for (const auto& c : cases) EXPECT_EQ(FilesOf(Start() + c.attributes), c.want) << c.name;
  for (const char* text : {"", "x", "\x78\x9F\x3E", "\x22\x3E\x9F\x78 the other way round"})
    EXPECT_EQ(FilesOf(text), "none") << text;
}

// Cut at every place and changed at every byte: nothing outside the stream is read or listed.
TEST(Tnef, SurvivesDamageAtEveryByte) {
  const std::string whole = Start() + Attribute(1, 0x00089006, "v") + File("a.txt", "abc") +
                            LongName("longer.txt") + File("b", "d") +
                            Properties(1, LongProperty(0x1F, 0x3707, Utf16(u"name")));
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
    const std::string kept(std::min(length, limit), 'n');
    EXPECT_EQ(FilesOf(Start() + File(std::string(length, 'n'), "a")), "[" + kept + " 1]");
  }
  for (const size_t count : {kMostEmbeddedFiles - 1, kMostEmbeddedFiles, kMostEmbeddedFiles + 1}) {
    std::string stream = Start();
    for (size_t i = 0; i < count; ++i) stream += File("a", "b");
    EXPECT_EQ(FilesOf(stream).size(), std::min(count, kMostEmbeddedFiles) * 5);
  }
}

// ---- Inside a message ---------------------------------------------------------------------------

TEST(Tnef, InAMessageIsDecodedFirstAndLeavesNoFileBehind) {
  const std::string stream = Start() + File("a.txt", "abc");
  Minstream in(SourceOf(stream));
  Moutstream encoded{MemorySink{}};
  EncodeBase64(in, encoded, 76);
  const std::string head =
      "Content-Type: application/ms-tnef\nContent-Transfer-Encoding: base64\n\n";
  Bodypart message;
  ASSERT_EQ(LoadFromCopy(message, head + TextOf(encoded)), kOk);
  ASSERT_EQ(message.TnefAttachments.size(), 1u);
  EXPECT_EQ(message.TnefAttachments[0].Name, "a.txt");
  EXPECT_EQ(stream.substr(static_cast<size_t>(message.TnefAttachments[0].Offset), 3), "abc");
  EXPECT_EQ(message.DecodedSize, std::ssize(stream));

  // What is no TNEF stream is a body like any other.
  ASSERT_EQ(LoadFromCopy(message, head + "TWFu"), kOk);
  EXPECT_EQ(TreeText(message), "APPLICATION/MS-TNEF 0+69+4 =3");
}

}  // namespace
}  // namespace mimora::testing
