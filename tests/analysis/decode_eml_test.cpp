// Copyright (c) 2026 the mimora developers.
#include "analysis/decode_eml.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>

#include "analysis/safe_name.h"
#include "diag/result.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

namespace fs = std::filesystem;

TEST(SafeFileName, LeavesNothingDangerous) {
  const std::string long_stem(300, 'x');
  const struct {
    const char* name;
    std::string text;
    std::string want;
  } cases[] = {
      {"a name", "photo (1).jpg", "photo (1).jpg"},
      {"a path", "../../etc/passwd", "passwd"},
      {"an absolute path", "/etc/passwd", "passwd"},
      {"a path with backslashes", "C:\\dir\\a.txt", "a.txt"},
      {"only a path", "a/b/", ""},
      {"only dots", "..", ""},
      {"dots and blanks at the ends", " ..htaccess. ", "htaccess"},
      {"control characters",
       "a\nb\x7F"
       "c\xC2\x85",
       "a_b_c_"},
      {"the other direction", "a\xE2\x80\xAEgpj.exe", "a_gpj.exe"},
      {"letters beyond ASCII", "\xC5\xA1.txt", "\xC5\xA1.txt"},
      {"no UTF-8", "\xB9.txt", "\xEF\xBF\xBD.txt"},
      {"a mark in front of a dot", "\xEF\xBB\xBF.bashrc", "bashrc"},
      {"marks that are not seen", "a\xE2\x80\x8B.b\xEF\xBB\xBF", "a_.b_"},
      {"a dot at the cut", std::string(239, 'y') + ". " + std::string(60, 'z'),
       std::string(239, 'y')},
      {"a device with a blank", "CON .txt", "_CON .txt"},
      {"a device", "con.txt", "_con.txt"},
      {"a numbered device", "LPT1", "_LPT1"},
      {"no device", "console.txt", "console.txt"},
      {"too long", long_stem + ".jpeg", long_stem.substr(0, 235) + ".jpeg"},
      {"a long extension", "a." + long_stem, "a." + long_stem.substr(0, 238)},
      {"never half a character", long_stem.substr(0, 239) + "\xC5\xA1", long_stem.substr(0, 239)},
  };
  for (const auto& c : cases) EXPECT_EQ(SafeFileName(c.text), c.want) << c.name;
}

TEST(UniqueNames, AreToldApartWhateverTheLetterCase) {
  UniqueNames names;
  EXPECT_EQ(names.Next("a.txt"), "a.txt");
  EXPECT_EQ(names.Next("a (2).txt"), "a (2).txt");
  EXPECT_EQ(names.Next("A.TXT"), "A (3).TXT");
  EXPECT_EQ(names.Next("a.txt"), "a (4).txt");
  EXPECT_EQ(names.Next("a (2).TXT"), "a (2) (2).TXT");
  EXPECT_EQ(names.Next("b"), "b");
  EXPECT_EQ(names.Next("b"), "b (2)");
}

class DecodeEmlTest : public ::testing::Test {
 protected:
  DecodeEmlTest() : folder_((fs::temp_directory_path() / "decode_test.XXXXXX").string()) {
    EXPECT_NE(::mkdtemp(folder_.data()), nullptr);
    fs::create_directory(Target());
  }
  ~DecodeEmlTest() override { fs::remove_all(folder_); }

  std::string Target() const { return folder_ + "/target"; }

  int32_t Decode(const std::string& mail, std::string_view charset = {}) {
    const TextFile file(mail);
    told_.clear();
    const auto note = [this](Bodypart&, int32_t number, const std::string& path, int64_t size) {
      told_ += fs::path(path).filename().string() + " " + std::to_string(number) + " " +
               std::to_string(size) + "|";
    };
    return DecodeEml(file.Name(), Target(), charset, note, count_);
  }

  // What lies in the directory, and that there is nothing beside it.
  std::map<std::string, std::string> Files() const {
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::directory_iterator(Target())) {
      files[entry.path().filename()] = ReadFile(entry.path());
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()), 1);
    return files;
  }

  std::string folder_;
  std::string told_;
  uint32_t count_ = 0;
};

using FileMap = std::map<std::string, std::string>;

TEST_F(DecodeEmlTest, WritesEveryLeafAndEveryFileInside) {
  const std::string mail =
      "Content-Type: multipart/mixed; boundary=b\n\n"
      "--b\nContent-Type: text/plain; charset=iso-8859-2\n\n\xB9\nbegin 644 ../x\n#0V%T\n`\nend\n"
      "--b\nContent-Type: message/rfc822\n\nContent-Type: text/html; charset=x-none\n\n<p>\xB9\n"
      "--b\nContent-Type: image/gif; name=\"../../a.gif\"\n"
      "Content-Transfer-Encoding: base64\n\nTWFu\n"
      "--b\nContent-Type: image/png; name=A.GIF\n\npng\n"
      "--b\nContent-Disposition: attachment; filename=..\n\n\n"
      "--b--\n";
  EXPECT_EQ(Decode(mail, "utf-8"), kOk);
  EXPECT_EQ(Files(), (FileMap{{"part-1.TXT", "\xC5\xA1\n"},
                              {"x", "Cat"},
                              {"part-2.1.HTM", "<p>\xB9"},
                              {"a.gif", "Man"},
                              {"A (2).GIF", "png"},
                              {"part-5.TXT", ""}}));
  EXPECT_EQ(told_, "part-1.TXT 0 3|x 1 3|part-2.1.HTM 0 4|a.gif 0 3|A (2).GIF 0 3|part-5.TXT 0 0|");
  EXPECT_EQ(count_, 6u);
}

TEST_F(DecodeEmlTest, TakesATnefStreamApart) {
  EXPECT_EQ(Decode(ReadFile(MIMORA_TEST_DATA "/corpus/tnef-one-file.eml")), kOk);
  EXPECT_EQ(Files().at("AUTHORS").size(), 244u);
}

TEST_F(DecodeEmlTest, TouchesNothingThatExists) {
  const std::string mail = "Content-Type: text/plain; name=a\n\nnew";
  { std::ofstream(Target() + "/a") << "old"; }
  fs::create_symlink(folder_ + "/outside", Target() + "/a (2)");
  fs::create_directory(Target() + "/a (3)");
  EXPECT_EQ(Decode(mail), kOk);
  EXPECT_EQ(told_, "a (4) 0 3|");
  EXPECT_EQ(ReadFile(Target() + "/a"), "old");
  EXPECT_FALSE(fs::exists(folder_ + "/outside"));
}

TEST_F(DecodeEmlTest, ReportsWhatFails) {
  const std::string mail = "Content-Type: text/plain; charset=utf-8\n\nnew";
  EXPECT_EQ(Decode(mail, "x-none"), kUnknownCharset);
  EXPECT_EQ(DecodeEml("/nonexistent", Target(), {}, {}, count_), kInputNotOpened);
  EXPECT_TRUE(Files().empty());
  EXPECT_EQ(DecodeEml("/dev/null", "", {}, {}, count_), kOutputNotOpened);
  fs::remove(Target());
  EXPECT_EQ(Decode(mail), kOutputNotOpened);
  EXPECT_EQ(count_, 0u);
}

}  // namespace
}  // namespace mimora::testing
