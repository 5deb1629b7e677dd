// Copyright (c) 2026 the mimora developers.
//
// Runs during the build: writes the constant tables that code_page.h declares.
// Usage: make_code_pages OUTPUT PAGE.txt...   pages/README.md describes the page files.
#include <algorithm>
#include <array>
#include <fstream>
#include <iostream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "codec/charset/code_page.h"

namespace mimora {
namespace {

using Table = std::vector<uint16_t>;

const std::map<std::string, std::string> kKinds = {
    {"single", "kSingle"}, {"double", "kDouble"}, {"mixed", "kMixed"}, {"iscii", "kIscii"}};

// One page as its file has it, and the tables over it.
struct Page {
  uint32_t number = 0;
  std::string kind;
  uint16_t undefined = 0;
  uint16_t default_char = 0;
  uint32_t pairs_of = 0;
  Table bytes = Table(0x100, CodePage::kNone);
  Table pairs = Table(0x10000, CodePage::kNone);
  Table encode = Table(0x10000, CodePage::kNone);
  // The codes that are not the lowest of their character.
  std::map<uint16_t, uint16_t> encode_rows;

  bool HasPairs() const { return kind != "single"; }

  bool HasAscii() const {
    for (uint16_t c = 0; c < 0x80; ++c) {
      if (bytes[c] != c || encode[c] != c) return false;
    }
    return true;
  }
};

[[noreturn]] void Fail(const std::string& why) { throw std::runtime_error(why); }

// A number of 2 or 4 hexadecimal digits.
uint16_t ParseHex(std::string_view digits) {
  const bool whole = digits.find_first_not_of("0123456789ABCDEF") == std::string_view::npos;
  if ((digits.size() != 2 && digits.size() != 4) || !whole)
    Fail("no number of 2 or 4 digits: " + std::string(digits));
  return static_cast<uint16_t>(std::stoul(std::string(digits), nullptr, 16));
}

uint32_t ParseDecimal(const std::string& digits) {
  if (digits.empty() || digits.size() > 5 ||
      digits.find_first_not_of("0123456789") != std::string::npos)
    Fail("no decimal number: " + digits);
  return static_cast<uint32_t>(std::stoul(digits));
}

// "4E00", "4E00..4E05" or "4E00*6".
Table ParseRun(const std::string& word) {
  const size_t sign = word.find_first_of(".*");
  const uint16_t first = ParseHex(word.substr(0, sign));
  if (sign == std::string::npos) return {first};
  if (word[sign] == '*') return Table(ParseDecimal(word.substr(sign + 1)), first);
  if (word.compare(sign, 2, "..") != 0) Fail("no run: " + word);
  const uint16_t last = ParseHex(word.substr(sign + 2));
  if (last < first) Fail("the run goes down: " + word);
  Table run;
  for (uint32_t value = first; value <= last; ++value) run.push_back(static_cast<uint16_t>(value));
  return run;
}

class PageReader {
 public:
  explicit PageReader(const std::string& path) : path_(path), file_(path) {
    if (!file_) Fail(path + ": cannot be read");
  }

  Page Read() {
    for (std::string line; std::getline(file_, line);) {
      ++line_;
      try {
        ReadLine(line);
      } catch (const std::exception& error) {
        Fail(path_ + ":" + std::to_string(line_) + ": " + error.what());
      }
    }
    if (page_.number == 0 || section_ != "encode") Fail(path_ + ": is not whole");
    return page_;
  }

 private:
  void ReadLine(const std::string& line) {
    std::istringstream words(line);
    std::string key;
    words >> key;
    if (key == "decode" || key == "encode") {
      section_ = key;
    } else if (section_.empty()) {
      ReadProperty(key, words);
    } else {
      ReadRow(key, words);
    }
  }

  void ReadProperty(const std::string& key, std::istream& words) {
    std::string value;
    words >> value;
    if (key == "leads") return ReadLeads(value, words);
    if (key == "page") {
      page_.number = ParseDecimal(value);
    } else if (key == "kind") {
      if (!kKinds.contains(value)) Fail("unknown kind " + value);
      page_.kind = value;
    } else if (key == "undefined") {
      page_.undefined = ParseHex(value);
    } else if (key == "default") {
      page_.default_char = ParseHex(value);
    } else if (key == "pairs") {
      page_.pairs_of = ParseDecimal(value);
    } else {
      Fail("unknown property " + key);
    }
  }

  void ReadLeads(std::string word, std::istream& words) {
    do {
      for (const uint16_t byte : ParseRun(word)) page_.bytes.at(byte) = CodePage::kLead;
    } while (words >> word);
  }

  void ReadRow(const std::string& key, std::istream& words) {
    uint32_t number = ParseHex(key);
    for (std::string word; words >> word;) {
      for (const uint16_t value : ParseRun(word)) {
        if (number > 0xFFFF) Fail("the row is too long");
        if (section_ == "decode") {
          AddCharacter(key.size() == 2, static_cast<uint16_t>(number), value);
        } else if (!page_.encode_rows.emplace(static_cast<uint16_t>(number), value).second) {
          Fail("there are two codes of one character");
        }
        ++number;
      }
    }
  }

  void AddCharacter(bool is_byte, uint16_t code, uint16_t character) {
    if (character >= CodePage::kLead) Fail("the character is reserved");
    if (!is_byte && !HasPair(code)) Fail("the byte in front does not lead");
    Table& table = is_byte ? page_.bytes : page_.pairs;
    if (table.at(code) != CodePage::kNone) Fail("the code has a meaning already");
    table[code] = character;
  }

  bool HasPair(uint16_t code) const {
    return page_.kind == "double" ? page_.bytes[code >> 8] == CodePage::kLead
                                  : page_.HasPairs() && code > 0xFF;
  }

  const std::string path_;
  std::ifstream file_;
  int line_ = 0;
  std::string section_;
  Page page_;
};

using Pages = std::map<uint32_t, Page>;

void EncodeLowest(const Table& decode, Table& encode) {
  for (size_t code = 0; code < decode.size(); ++code) {
    const uint16_t character = decode[code];
    if (character < CodePage::kLead && encode[character] == CodePage::kNone)
      encode[character] = static_cast<uint16_t>(code);
  }
}

// Where the pairs are those of another page, a character is a byte if it can.
void TakePairs(const Page& other, Page& page) {
  page.pairs = other.pairs;
  EncodeLowest(page.pairs, page.encode);
  for (const auto& [character, code] : other.encode_rows) {
    uint16_t& own = page.encode[character];
    if (code > 0xFF && (own == CodePage::kNone || own > 0xFF)) own = code;
  }
}

void FillEncodeTables(Pages& pages) {
  for (auto& [number, page] : pages) {
    EncodeLowest(page.bytes, page.encode);
    EncodeLowest(page.pairs, page.encode);
    for (const auto& [character, code] : page.encode_rows) page.encode[character] = code;
    if (page.pairs_of != 0) TakePairs(pages.at(page.pairs_of), page);
  }
}

// What every user of the tables relies on.
void CheckEncodeTable(const Page& page) {
  for (const uint16_t code : page.encode) {
    if (code == CodePage::kNone) continue;
    const uint16_t character = code < 0x100 ? page.bytes[code] : page.pairs[code];
    if (character >= CodePage::kLead)
      Fail("page " + std::to_string(page.number) + " encodes as " + std::to_string(code) +
           ", which has no meaning");
  }
}

class Writer {
 public:
  explicit Writer(const std::string& path) : path_(path), out_(path) {}

  void Write(const Pages& pages) {
    out_ << "// Made by make_code_pages.\n#include \"codec/charset/code_page.h\"\n\n"
            "namespace mimora {\nnamespace {\n";
    std::ostringstream rows;
    for (const auto& [number, page] : pages) {
      rows << "    {" << number << ", CodePageKind::" << kKinds.at(page.kind) << ", "
           << page.HasAscii() << ", " << page.undefined << ", " << page.default_char << ", "
           << WriteTable(page.bytes) << ", "
           << (page.HasPairs() ? WriteTable(CutIntoLeaves(page.pairs)) : "nullptr") << ", "
           << WriteTable(CutIntoLeaves(page.encode)) << "},\n";
    }
    out_ << "\n}  // namespace\n\n";
    WriteArray("kCodePageLeaves", leaves_);
    out_ << "\nconst CodePage kCodePages[] = {\n"
         << rows.str() << "};\nconst size_t kCodePageCount = " << pages.size()
         << ";\n\n}  // namespace mimora\n";
    if (!out_.flush()) Fail(path_ + ": cannot be written");
  }

 private:
  Table CutIntoLeaves(const Table& table) {
    Table numbers;
    for (auto p = table.begin(); p != table.end(); p += kLeafSize) {
      const Table leaf(p, p + kLeafSize);
      const auto next = static_cast<uint16_t>(leaf_numbers_.size());
      const auto [at, is_new] = leaf_numbers_.emplace(leaf, next);
      if (is_new) leaves_.insert(leaves_.end(), leaf.begin(), leaf.end());
      numbers.push_back(at->second);
    }
    if (leaf_numbers_.size() > 0x10000) Fail("there are too many leaves");
    return numbers;
  }

  // Answers the name. Equal tables are written once.
  std::string WriteTable(const Table& table) {
    const auto [at, is_new] = names_.emplace(table, "kTable" + std::to_string(names_.size()));
    if (is_new) WriteArray(at->second, table);
    return at->second;
  }

  void WriteArray(const std::string& name, const Table& table) {
    out_ << "const uint16_t " << name << "[" << table.size() << "] = {";
    for (size_t i = 0; i < table.size(); ++i) out_ << (i % 16 == 0 ? "\n" : "") << table[i] << ",";
    out_ << "};\n";
  }

  const std::string path_;
  std::ofstream out_;
  Table leaves_;
  std::map<Table, uint16_t> leaf_numbers_;
  std::map<Table, std::string> names_;
};

void MakeCodePages(const std::string& output, const std::vector<std::string>& paths) {
  Pages pages;
  for (const std::string& path : paths) {
    Page page = PageReader(path).Read();
    const uint32_t number = page.number;
    if (!pages.emplace(number, std::move(page)).second) Fail(path + ": the page is there already");
  }
  FillEncodeTables(pages);
  for (const auto& [number, page] : pages) CheckEncodeTable(page);
  Writer(output).Write(pages);
}

}  // namespace
}  // namespace mimora

int main(int argc, char** argv) {
  try {
    if (argc < 3) throw std::runtime_error("usage: make_code_pages OUTPUT PAGE.txt...");
    mimora::MakeCodePages(argv[1], {argv + 2, argv + argc});
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "make_code_pages: " << error.what() << '\n';
    return 1;
  }
}
