// Copyright (c) 2026 the mimora developers.
//
// The tool as its users meet it: command lines in, exit status and texts out. MIMORA_TOOL names
// the program, MIMORA_EXAMPLES the folder of the sample messages.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "support/certificates.h"

namespace {

using nlohmann::json;
using testing::IsNotSubstring;
using testing::IsSubstring;

struct Outcome {
  int status = -1;
  std::string out, err;
};

constexpr std::string_view kLetter =
    "From: Ema <ema@example.org>\r\n"
    "Subject: one\r\n\ttwo\r\n"
    "X-Empty:\r\n"
    "Content-Type:\r\n multipart/mixed; boundary=cut\r\n"
    "\r\n"
    "--cut\r\n"
    "Content-Type: TEXT/Plain; charset=US-ascii; name=\"a.txt\"\r\n"
    "Content-Disposition: inline; filename=b.txt\r\n"
    "Content-Transfer-Encoding: Quoted-Printable\r\n"
    "\r\n"
    "caf=C3=A9\r\n"
    "--cut--\r\n";

// Steers the terminal by C0, by C1 written in UTF-8, turns a name around, and holds a broken
// character beside a proper one.
constexpr std::string_view kHostile =
    "Subject: \x1B[2J\xC2\x9B;31m\xC3\xA9\xFF\r\n"
    "Content-Type: text/plain; name=\"\xE2\x80\xAEgpj.exe\"\r\n"
    "\r\n"
    "x\r\n";

// Its only text is no letter, and steers the terminal.
constexpr std::string_view kPage = "Content-Type: text/html\r\n\r\n<p>\x1B[2J\r\n";

// Names that lead out of a directory, onto another line, onto the file of another part, and to one
// that is there already. The subject tries to add a field.
constexpr std::string_view kNames =
    "Subject: =?utf-8?q?a=0ABcc:_b?=\r\n"
    "Content-Type: multipart/mixed; boundary=cut\r\n"
    "\r\n"
    "--cut\r\nContent-Type: image/png; name=\"../../up.png\"\r\n\r\n1\r\n"
    "--cut\r\nContent-Type: image/png; name=\"=?utf-8?q?a=0Ab=1B=C3=A9?=\"\r\n\r\n2\r\n"
    "--cut\r\nContent-Type: image/png; name=there\r\n\r\n3\r\n"
    "--cut\r\nContent-Type: image/png; name=UP.png\r\n\r\n4\r\n"
    "--cut\r\nContent-Type: image/png; name=/tmp\r\n\r\n5\r\n"
    "--cut--\r\n";

// Every command runs in a folder of its own with these files, through the shell. There $T is the
// tool, in a UTF-8 locale unless the command says otherwise, and $E the folder of the samples.
class Tool : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    std::string name = (std::filesystem::temp_directory_path() / "tool_test.XXXXXX").string();
    ASSERT_NE(::mkdtemp(name.data()), nullptr);
    folder_ = name;
    setenv("T", std::filesystem::absolute(MIMORA_TOOL).c_str(), 1);
    setenv("E", std::filesystem::absolute(MIMORA_EXAMPLES).c_str(), 1);
    setenv("LC_ALL", "C.UTF-8", 1);
    std::ofstream(folder_ / "letter.eml", std::ios::binary) << kLetter;
    std::ofstream(folder_ / "hostile.eml", std::ios::binary) << kHostile;
    std::ofstream(folder_ / "page.eml", std::ios::binary) << kPage;
    std::ofstream(folder_ / "names.eml", std::ios::binary) << kNames;
    std::ofstream(folder_ / "odd.eml") << "Content-Type: text/plain; charset=x-odd\n\n\xE1\n";
    std::ofstream(folder_ / "there") << "old";
    std::ofstream(folder_ / "empty.eml");
    std::filesystem::create_directory(folder_ / "out");
    std::filesystem::create_directory(folder_ / "store");
    const auto me = mimora::testing::MakeOwner("me");
    std::ofstream(folder_ / "store/me.pem") << mimora::testing::Pem(me) << KeyPem(me);
    setenv("MIMORA_CERT_STORE", (folder_ / "store").c_str(), 1);
  }
  static void TearDownTestSuite() { std::filesystem::remove_all(folder_); }

  static Outcome Run(const std::string& command) {
    const std::string line = "cd " + folder_.string() + " && { " + command + "; } 2>.err";
    Outcome outcome;
    FILE* pipe = ::popen(line.c_str(), "r");
    if (pipe == nullptr) return outcome;
    for (int c; (c = std::fgetc(pipe)) != EOF;) outcome.out += static_cast<char>(c);
    const int status = ::pclose(pipe);
    outcome.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::getline(std::ifstream(folder_ / ".err"), outcome.err, '\0');
    return outcome;
  }
  static json RunForJson(const std::string& command) {
    return json::parse(Run(command).out, nullptr, false);
  }

  static inline std::filesystem::path folder_;
};

struct CommandCase {
  const char* name;
  const char* command;
  int status;
  std::vector<std::string> out = {}, err = {}, absent = {};  // pieces; absent from both
};

// clang-format off
const CommandCase kCommands[] = {
    {"tree with names, sizes and places", "$T show letter.eml", 0, {
      "letter.eml, 285 bytes\n"
      "  From:    Ema <ema@example.org>\n"
      "  Subject: one two\n\n"
      "PART     TYPE             ENCODING          CHARSET   DECODED  RAW  HEADER AT  BODY AT  NAME\n"
      "message  multipart/mixed  -                 -               -  177          0  108+177\n"
      "└─ 1     text/plain       Quoted-Printable  US-ascii        5    9        115  265+9    a.txt\n"}},
    {"tree without UTF-8", "LC_ALL=C $T show $E/newsletter.eml", 0,
     {"\n|- 1 ", "\n`- 2 ", "\n   |- 2.1 "}, {}, {"\xE2"}},
    {"message in a message", "$T show $E/forwarded.eml", 0,
     {"\n└─ 2 ", "\n   └─ 2.TEXT ", "\n      ├─ 2.1 ", "\n      └─ 2.2 "}},
    {"files of a TNEF body", "$T show $E/tnef.eml", 0,
     {"\n   ├─ embedded file 1, 582 bytes, Besiktningsprotokoll Åsgård 2026-05-07.rtf\n",
      "\n   └─ embedded file 2, "}, {}, {"embedded file 3"}},
    {"decoded names, senders and subjects", "$T show $E/invoice.eml", 0,
     {"  From:    Ludmila Třešňáková <", "  Subject: Faktura č. 2026", "  Faktura č. 2026-0417 – židle.pdf\n"}},
    {"damage is shown and no failure", "$T show $E/broken-no-boundary.eml", 0,
     {"\n  damaged: a multipart without boundary"}},
    {"empty file", "$T show empty.eml", 0,
     {"empty.eml, 0 bytes\n  damaged: the data ends inside the header\n", "\nmessage "}},
    {"missing file among others", "$T show letter.eml gone.eml $E/invoice.eml", 1,
     {"letter.eml, ", "invoice.eml, "}, {"mimora: gone.eml: No such file or directory\n"}},
    {"folder", "$T show .", 1, {}, {"mimora: .: Is a directory\n"}},
    {"standard input", "$T show - <letter.eml", 0, {"-, 285 bytes", "a.txt"}},
    {"hostile texts in the tree", "$T show hostile.eml", 0,
     {R"(  Subject: \x1B[2J\xC2\x9B;31mé\xFF)", R"(\xE2\x80\xAEgpj.exe)"}, {},
     {"\x1B", "\x9B", "\xFF", "\xAE"}},
    {"hostile texts without UTF-8", "LC_ALL=C $T show hostile.eml", 0, {R"(\xC3\xA9)"}, {}, {"\xC3"}},
    {"header on a terminal", "script -qec '$T headers hostile.eml' /dev/null", 0,
     {R"(Subject: \x1B[2J\xC2\x9B;31mé\xFF)"}, {}, {"\x1B", "\xFF"}},
    {"header for programs, folded as it was", "$T headers letter.eml", 0,
     {"From: Ema <ema@example.org>\nSubject: one\n\ttwo\nX-Empty:\n"
      "Content-Type:\n multipart/mixed; boundary=cut\n"}, {}, {"\r"}},
    {"hostile header for programs", "$T headers hostile.eml", 0,
     {"Subject: \x1B[2J\xC2\x9B;31m\xC3\xA9\xFF\n"}},
    {"JSON on a terminal", "script -qec '$T headers --json hostile.eml' /dev/null", 0, {R"(\u009b)"}, {},
     {"\x9B"}},
    {"decoded header, a line each", "$T headers --decode names.eml $E/invoice.eml", 0,
     {"Subject: a Bcc: b\nContent", "\nFrom: Ludmila Třešňáková <ucetni@example.net>\n"}},
    {"header of an enclosed message", "$T headers $E/forwarded.eml --part 2.TEXT", 0,
     {"\nSubject: Rain gauges, January and February\n"}, {}, {"Fwd:"}},
    {"the one body of a message", "$T headers hostile.eml --part 1", 0, {"Subject: "}},
    {"part that one does not have", "$T headers --part 2.2 letter.eml $E/newsletter.eml", 1,
     {"newsletter.eml <==\nContent-Type: image/png"},
     {"mimora: letter.eml: there is no part 2.2\n"}, {"letter.eml <==\nContent-Type: text"}},
    {"part number that is none", "$T headers --part 1..2 letter.eml", 2, {}, {"1..2"}, {"From"}},
    {"letter with the line ends of the system", "$T text $E/invoice.eml", 0,
     {"Vážená paní Hrubešová,\n\nděkujeme"}, {}, {"\r", "==>"}},
    {"letter for programs in the locale C", "LC_ALL=C $T text $E/invoice.eml", 0, {"Vážená"}},
    {"letter on a terminal in the locale C", "LC_ALL=C script -qec '$T text $E/invoice.eml' /dev/null", 0,
     {R"(V\xC3\xA1\xC5\xBEen)"}, {}, {"\xC3"}},
    {"letters, one missing, one with files in it", "$T text names.eml hostile.eml $E/uuencoded.eml", 1,
     {"==> hostile.eml <==\nx\n\n==>", "uuencoded.eml <==\nDear all,"},
     {"mimora: names.eml: there is no text letter\n"}, {"names.eml <==", "begin 6"}},
    {"letter that is only there as HTML", "$T text page.eml", 0, {"[2J\n"}, {}, {"<p>"}},
    {"visible text of a file", "printf '<p>a\\351<p>b' | $T html2text --charset latin1 -", 0,
     {"a\u00E9\n\nb\n"}},
    {"zeros in it", "printf '\\377\\376a\\0\\0\\0b\\0' | $T html2text -", 0, {"ab\n"}},
    {"letter in an unknown character set", "$T text odd.eml", 0, {"\xE1\n"},
     {"mimora: odd.eml: warning: its character set is not known"}},
    {"attachments", "$T attachments $E/forwarded.eml $E/tnef.eml names.eml", 0,
     {"forwarded.eml <==\n"
      "NUMBER  TYPE             SIZE  NAME\n"
      "2       message/rfc822  1,905  Rain gauges, January and February.eml\n"
      "2.2     text/csv          312  rain-2026-01-02.csv\n\n",
      "\n2/2 ", "  a b\\x1Bé\n"}},
    {"texts that are no attachments", "$T attachments $E/calendar.eml letter.eml", 0, {"NAME\n"}, {}, {"text/"}},
    {"extract from a pipe", "cat $E/newsletter.eml | $T extract -o out -", 0, {"out/seedlings.png, 872 bytes\n"}},
    {"extract, one file missing", "$T extract -o out gone.eml $E/tnef.eml", 1, {"out/winmail.dat, 2,840 bytes\n"},
     {"mimora: gone.eml: No such file or directory\n"}},
    {"extract into nothing", "$T extract -o gone letter.eml", 2, {}, {"gone"}},
    {"extract into an unknown character set", "$T extract --charset x-odd -o out letter.eml", 1, {},
     {"mimora: letter.eml: a character set is not known\n"}},
    {"progress of slow work on a terminal",
     "script -qec '(sleep 1.5; cat $E/tnef.eml) | $T extract -o out - >list' /dev/null; cat list", 0,
     {"[#########-------]  62%  2 of 4 files, ", "[################] 100%  4 of 4 files, "}},
    {"body decoded", "$T save --part 1 letter.eml | od -An -c", 0, {"   c   a   f 303 251\n"}},
    {"body as it stands", "$T save --part 1 --raw letter.eml", 0, {"caf=C3=A9"}},
    {"body of a part with parts", "$T save --part 1 $E/invoice.eml | wc -c; "
     "$T save --part 2 $E/forwarded.eml >raw; tail -c +1536 $E/forwarded.eml | head -c 1905 | cmp - raw", 0, {"1237\n"}},
    {"body translated", "$T save --part 1 --charset iso-8859-2 $E/invoice.eml", 0, {"V\xE1\xBE" "en\xE1"}},
    {"body on a terminal", "script -qec '$T save --part 1 page.eml' /dev/null", 0, {R"(<p>\x1B[2J)"}, {}, {"\x1B"}},
    {"file inside a body", "$T save --part 1 --embedded 1 $E/uuencoded.eml | wc -c", 0, {"774\n"}},
    {"no such file inside a body", "$T save --part 1 --embedded 1 -o new letter.eml; test ! -e new", 0, {},
     {"mimora: letter.eml: there is no embedded file of that number\n"}},
    {"body into a file that is there", "$T save --part 1 -o there letter.eml || cat there", 0, {"old"},
     {"mimora: letter.eml: there: File exists\n"}},
    {"options that exclude each other", "$T save --part 1 --raw --charset utf-8 letter.eml", 2, {}, {"excludes"}},
    {"certificates", "$T certs", 0, {"  sign,encrypt,key  me@example.org\n"}},
    {"certificates for programs", "$T certs --for sign --json", 0, {R"("email": "me@example.org")"}},
    {"one certificate", "$T certs ME@example.org", 0, {"\nSubject: CN=me\n"}},
    {"no store, no such use", "$T certs --store gone; $T certs --for fun", 2, {},
     {"mimora: gone: the certificate store cannot be read\n", "fun not in {"}},
    {"signed message", "$T sign --signer me@example.org letter.eml >new && $T show new && $T headers --part 1 new; rm new", 0,
     {"  From:    Ema <", "multipart/signed", "\n├─ 1 ", "\n│  └─ 1.1 ", "smime.p7s\n", "\nContent-Type:\n multipart/mixed"}},
    {"signed and encrypted message",
     "$T sign --signer me@example.org --opaque letter.eml | $T encrypt --to me@example.org - | $T headers -", 0,
     {"From: Ema <ema@example.org>\nSubject: one\n\ttwo\nX-Empty:\nMIME-Version: 1.0\nContent-Type: ",
      "smime-type=enveloped-data"}, {}, {"cut", "signed-data"}},
    {"message with line ends of old",
     "printf 'A: b\\rContent-Type: text/html\\r\\rsecret' | $T encrypt --to me@example.org -", 0,
     {"A: b\r\nMIME-Version: 1.0\r\nContent-Type: app"}, {}, {"secret"}},
    {"message with nothing but fields",
     "printf 'Mime-Version : 1\\nContent-Type: text/html' | $T sign --signer me@example.org -", 0,
     {"Content-Type: text/html\r\n\r\n\r\n--"}, {}, {"Mime"}},
    {"password file that is not there", "$T sign --password-file gone --signer me@example.org letter.eml", 1, {},
     {"mimora: letter.eml: gone: No such file"}},
    {"recipient without a certificate", "$T encrypt --to me@example.org --to you@b -o new letter.eml; test ! -e new", 0, {},
     {"mimora: letter.eml: you@b: there is no such certificate in the store\n"}},
    {"message that cannot be signed", "printf 'a: b\\n\\n\\0' | $T sign --signer me@example.org -", 1, {},
     {"mimora: -: it has zeros in it"}},
    {"no command", "$T", 2, {}, {"mimora: ", "--help"}},
    {"no file", "$T show", 2, {}, {"FILE is required"}},
    {"unknown option", "$T show --jsn letter.eml", 2, {}, {"--jsn"}, {"letter.eml"}},
    {"help", "$T --help", 0, {"Examples:\n", "show", "headers", "extract"}},
    {"version", "$T --version", 0, {"mimora 1."}},
    {"full disk", "$T show letter.eml >/dev/full", 1, {},
     {"mimora: standard output: No space left on device\n"}},
    {"full disk for a body", "$T save --part 1 letter.eml >/dev/full", 1, {},
     {"mimora: standard output: No space left on device\n"}},
    {"reader gone", "{ sleep 0.2; $T show letter.eml; echo status $? >&2; } | :", 0, {},
     {"status 141\n"}},
};
// clang-format on

TEST_F(Tool, CommandLinesAnswerWithStatusAndTexts) {
  for (const CommandCase& c : kCommands) {
    SCOPED_TRACE(c.name);
    const Outcome got = Run(c.command);
    EXPECT_EQ(got.status, c.status) << got.err;
    for (const std::string& text : c.out) EXPECT_PRED_FORMAT2(IsSubstring, text, got.out);
    for (const std::string& text : c.err) EXPECT_PRED_FORMAT2(IsSubstring, text, got.err);
    for (const std::string& text : c.absent)
      EXPECT_PRED_FORMAT2(IsNotSubstring, text, got.out + got.err);
    EXPECT_EQ(got.err.empty(), c.err.empty() && c.status == 0) << got.err;
  }
}

std::string Outline(const json& node) {
  std::string text = node["part"].get<std::string>() + " " + node["type"].get<std::string>();
  for (const json& child : node["children"]) text += "|" + Outline(child);
  return text;
}

TEST_F(Tool, JsonTreesHaveTheirPartsAndTypes) {
  constexpr const char* kTrees[][2] = {
      {"newsletter.eml",
       " multipart/alternative|1 text/plain|2 multipart/related|2.1 text/html|2.2 image/png"},
      {"forwarded.eml",
       " multipart/mixed|1 text/plain|2 message/rfc822|2.TEXT multipart/mixed|2.1 text/plain"
       "|2.2 text/csv"},
      {"broken-cut-off.eml", " multipart/mixed|1 text/plain|2 image/png"},
      {"tnef.eml", " multipart/mixed|1 text/plain|2 application/ms-tnef"},
      {"broken-unclosed.eml",
       " multipart/mixed|1 multipart/alternative|1.1 text/plain|1.2 text/html|2 image/png"},
      {"broken-no-boundary.eml", " multipart/mixed"},
  };
  std::string command = "$T show --json";
  for (const auto& [file, outline] : kTrees) command += std::string(" $E/") + file;
  const json messages = RunForJson(command);
  ASSERT_EQ(messages.size(), std::size(kTrees));
  for (size_t i = 0; i < messages.size(); ++i) {
    EXPECT_EQ(Outline(messages[i]["message"]), kTrees[i][1]) << kTrees[i][0];
    EXPECT_EQ(messages[i]["result"], i + 1 == std::size(kTrees) ? 0x2000025D : 0);
  }
}

TEST_F(Tool, JsonNodeTellsWhatTheHeaderDeclares) {
  const json got = RunForJson("$T show --json letter.eml");
  const json want = json::parse(R"({
      "part": "1", "type": "text/plain", "name": "a.txt", "charset": "US-ascii",
      "encoding": "Quoted-Printable", "disposition": "inline", "header_offset": 115,
      "header_size": 150, "body_offset": 265, "body_size": 9, "decoded_size": 5,
      "embedded": [], "children": []})");
  EXPECT_EQ(got.at(0).at("message").at("children").at(0), want);
  for (const char* missing : {"name", "charset", "encoding", "disposition", "decoded_size"})
    EXPECT_TRUE(got[0]["message"].at(missing).is_null()) << missing;
}

TEST_F(Tool, ExtractWritesNewFilesInsideItsDirectoryOnly) {
  const std::string listing = "find . -type f | sort";
  const std::string before = Run("mkdir in && cp there in && " + listing).out;
  const Outcome got = Run("$T extract -o in names.eml");
  EXPECT_EQ(got.out,
            "in/up.png, 1 byte\nin/a b_é, 1 byte\nin/there (2), 1 byte\nin/UP (2).png, 1 byte\n"
            "in/tmp, 1 byte\n");
  EXPECT_EQ(Run("cat in/there in/up.png 'in/there (2)'").out, "old13");
  EXPECT_EQ(Run("rm in/tmp in/[auU]* 'in/there (2)'; " + listing).out, before);
}

TEST_F(Tool, JsonKeepsAPlaceForEachFile) {
  const json trees = RunForJson("$T show --json gone.eml hostile.eml");
  ASSERT_EQ(trees.size(), 2u);
  EXPECT_TRUE(trees[0]["message"].is_null());
  EXPECT_EQ(trees[0]["error"], "No such file or directory");
  EXPECT_EQ(trees[1]["message"]["name"], "\xE2\x80\xAEgpj.exe");

  const json headers = RunForJson("$T headers --json hostile.eml gone.eml letter.eml");
  ASSERT_EQ(headers.size(), 3u);
  EXPECT_EQ(headers[0][0]["value"], "\x1B[2J\xC2\x9B;31m\xC3\xA9\xEF\xBF\xBD");
  EXPECT_TRUE(headers[1].is_null());
  EXPECT_EQ(headers[2][1], (json{{"name", "Subject"}, {"value", "one\r\n\ttwo"}}));

  const json lists = RunForJson("$T attachments --json gone.eml $E/uuencoded.eml");
  ASSERT_EQ(lists.size(), 2u);
  EXPECT_EQ(lists[0]["error"], "No such file or directory");
  EXPECT_TRUE(lists[0]["attachments"].is_null());
  const json logo = {
      {"part", "1"}, {"number", 2}, {"name", "logo.gif"}, {"type", "image/gif"}, {"size", 261}};
  EXPECT_EQ(lists[1]["attachments"][1], logo);
}

}  // namespace
