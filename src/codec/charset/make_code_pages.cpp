// Copyright (c) 2026 the mimora developers.
//
// Runs during the build: writes the constant tables that code_page.h and composition.h declare.
// Usage: make_code_pages OUTPUT COMPOSITIONS.txt PAGE.txt...
// pages/README.md describes the page files. The rows of the other one are LETTER MARK:COMPOSED ...
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
#include <utility>
#include <vector>

#include "codec/charset/code_page.h"
#include "codec/charset/composition.h"

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

// Hands READ_ROW the first word of each line and the stream of the others.
template <typename ReadRow>
void ReadRows(const std::string& path, ReadRow read_row) {
  std::ifstream file(path);
  if (!file) Fail(path + ": cannot be read");
  int number = 0;
  for (std::string line; std::getline(file, line);) {
    ++number;
    std::istringstream words(line);
    std::string key;
    words >> key;
    try {
      read_row(key, words);
    } catch (const std::exception& error) {
      Fail(path + ":" + std::to_string(number) + ": " + error.what());
    }
  }
}

class PageReader {
 public:
  static Page Read(const std::string& path) {
    PageReader reader;
    ReadRows(path, [&](const auto& key, auto& words) { reader.ReadLine(key, words); });
    const std::string fault = reader.section_ != "encode" ? "is not whole" : FaultOf(reader.page_);
    if (!fault.empty()) Fail(path + ": " + fault);
    return std::move(reader.page_);
  }

 private:
  // What the users of the tables rely on.
  static std::string FaultOf(const Page& page) {
    const bool leads = std::ranges::count(page.bytes, CodePage::kLead) > 0;
    if (page.number == 0 || page.kind.empty()) return "has no number, or no kind";
    if (page.undefined == 0 || page.default_char == 0) return "has no substitutes";
    if (leads != (page.kind == "double")) return "has leads where there are none, or lacks them";
    if (page.bytes[0] == CodePage::kLead) return "has a lead of zero";
    if (page.pairs_of != 0 && page.kind != "mixed") return "has pairs of another";
    return "";
  }

  void ReadLine(const std::string& key, std::istream& words) {
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
    if (std::string rest; words >> rest) Fail("what is " + rest);
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
      for (const uint16_t byte : ParseRun(word)) {
        if (byte > 0xFF) Fail("no byte: " + word);
        page_.bytes[byte] = CodePage::kLead;
      }
    } while (words >> word);
  }

  void ReadRow(const std::string& key, std::istream& words) {
    uint32_t number = ParseHex(key);
    for (std::string word; words >> word;) {
      for (const uint16_t value : ParseRun(word)) {
        if (number > (key.size() == 2 ? 0xFFu : 0xFFFFu)) Fail("the row is too long");
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
    const bool surrogate = (character & 0xF800) == 0xD800;
    if (character >= CodePage::kLead || surrogate) Fail("the character is reserved");
    if (!is_byte && !HasPair(code)) Fail("the byte in front does not lead");
    Table& table = is_byte ? page_.bytes : page_.pairs;
    if (table.at(code) != CodePage::kNone) Fail("the code has a meaning already");
    table[code] = character;
  }

  bool HasPair(uint16_t code) const {
    return page_.kind == "double" ? page_.bytes[code >> 8] == CodePage::kLead
                                  : page_.HasPairs() && code > 0xFF;
  }

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
    if (page.pairs_of == 0) continue;
    const auto other = pages.find(page.pairs_of);
    if (other == pages.end() || other->second.kind != "mixed" || other->second.pairs_of != 0)
      Fail("page " + std::to_string(number) + " takes the pairs of none");
    TakePairs(other->second, page);
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

using Compositions = std::vector<Composition>;

Compositions ReadCompositions(const std::string& path) {
  Compositions all;
  ReadRows(path, [&](const std::string& letter, std::istream& words) {
    for (std::string word; words >> word;) {
      if (word.size() != 9 || word[4] != ':') Fail("no MARK:COMPOSED: " + word);
      all.push_back({ParseHex(letter), ParseHex(word.substr(0, 4)), ParseHex(word.substr(5))});
    }
  });
  return all;
}

class Writer {
 public:
  explicit Writer(const std::string& path) : path_(path), out_(path) {}

  void Write(const Pages& pages, Compositions compositions) {
    out_ << "// Made by make_code_pages.\n#include \"codec/charset/code_page.h\"\n"
            "#include \"codec/charset/composition.h\"\n\nnamespace mimora {\nnamespace {\n";
    const std::string rows = WritePages(pages);
    out_ << "\n}  // namespace\n\n";
    WriteArray("kCodePageLeaves", leaves_);
    out_ << "\nconst CodePage kCodePages[] = {\n"
         << rows << "};\nconst size_t kCodePageCount = " << pages.size() << ";\n";
    std::ranges::sort(compositions, {}, ByMark);
    WriteCompositions("kCompositionsByMark", compositions);
    std::ranges::sort(compositions, {}, &Composition::composed);
    WriteCompositions("kCompositionsByComposed", compositions);
    out_ << "const size_t kCompositionCount = " << compositions.size()
         << ";\n\n}  // namespace mimora\n";
    if (!out_.flush()) Fail(path_ + ": cannot be written");
  }

 private:
  // Answers the rows, the tables of which it has written.
  std::string WritePages(const Pages& pages) {
    std::ostringstream rows;
    for (const auto& [number, page] : pages) {
      rows << "    {" << number << ", CodePageKind::" << kKinds.at(page.kind) << ", "
           << page.HasAscii() << ", " << page.undefined << ", " << page.default_char << ", "
           << WriteTable(page.bytes) << ", "
           << (page.HasPairs() ? WriteTable(CutIntoLeaves(page.pairs)) : "nullptr") << ", "
           << WriteTable(CutIntoLeaves(page.encode)) << "},\n";
    }
    return rows.str();
  }

  void WriteCompositions(const char* name, const Compositions& compositions) {
    out_ << "\nconst Composition " << name << "[] = {\n";
    for (const auto& [letter, mark, composed] : compositions)
      out_ << "    {" << +letter << ", " << +mark << ", " << +composed << "},\n";
    out_ << "};\n";
  }

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

void MakeCodePages(const std::string& output, const std::string& compositions,
                   const std::vector<std::string>& page_files) {
  Pages pages;
  for (const std::string& path : page_files) {
    Page page = PageReader::Read(path);
    const uint32_t number = page.number;
    if (!pages.emplace(number, std::move(page)).second) Fail(path + ": the page is there already");
  }
  FillEncodeTables(pages);
  for (const auto& [number, page] : pages) CheckEncodeTable(page);
  Compositions letters = ReadCompositions(compositions);
  Writer(output).Write(pages, std::move(letters));
}

}  // namespace
}  // namespace mimora

int main(int argc, char** argv) {
  try {
    if (argc < 4) throw std::runtime_error("usage: make_code_pages OUTPUT COMPOSITIONS PAGE...");
    mimora::MakeCodePages(argv[1], argv[2], {argv + 3, argv + argc});
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "make_code_pages: " << error.what() << '\n';
    return 1;
  }
}
