// Copyright (c) 2026 the mimora developers.
#include "analysis/text_letter.h"

#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <string>

#include "mime/parser.h"

namespace mimora {
namespace {

// A multipart of that kind and boundary; each part begins behind a delimiter line.
std::string Multipart(const std::string& kind, const std::string& boundary,
                      std::initializer_list<std::string> parts) {
  std::string text = "Content-Type: multipart/" + kind + "; boundary=" + boundary + "\n\n";
  for (const std::string& part : parts) text += "--" + boundary + "\n" + part + "\n";
  return text + "--" + boundary + "--\n";
}

std::string Text(const std::string& sub, const std::string& body, const std::string& more = "") {
  return "Content-Type: text/" + sub + "; charset=utf-8\n" + more + "\n" + body;
}

const std::string kAttached = "Content-Disposition: Attachment ; filename=a.txt\n";
const std::string kImage = "Content-Type: image/png\nContent-ID: <i>\n\nx";

TEST(FindTextLetter, FollowsTheStructure) {
  const std::string letter = Text("plain", "LETTER");
  const std::string other = Text("plain", "other");
  const std::string html = Text("html", "<p>");
  const struct {
    const char* name;
    std::string message;
    bool found;
  } cases[] = {
      {"a text", letter, true},
      {"no header at all", "\nLETTER", true},
      {"a text that is attached", Text("plain", "x", kAttached), false},
      {"another single part", kImage, false},
      {"an empty multipart", Multipart("mixed", "m", {}), false},
      {"mixed: text behind a picture", Multipart("mixed", "m", {kImage, letter, other}), true},
      {"mixed: the first text is HTML", Multipart("mixed", "m", {html, letter}), false},
      {"mixed: the first text is attached",
       Multipart("mixed", "m", {Text("plain", "x", kAttached), letter}), false},
      {"mixed: an alternative decides",
       Multipart("mixed", "m", {Multipart("alternative", "a", {html}), letter}), false},
      {"mixed: an alternative",
       Multipart("mixed", "m", {Multipart("alternative", "a", {html, letter})}), true},
      {"mixed: a related one",
       Multipart("mixed", "m", {Multipart("related", "r", {letter, kImage})}), true},
      {"mixed: not looked into another mixed one",
       Multipart("mixed", "m", {Multipart("mixed", "n", {other}), letter}), true},
      {"an unknown kind is mixed", Multipart("x-own", "m", {letter}), true},
      {"alternative: behind HTML and an attached one",
       Multipart("alternative", "a", {html, Text("plain", "x", kAttached), letter}), true},
      {"alternative: the outer one first",
       Multipart("alternative", "a", {Multipart("alternative", "b", {other}), letter}), true},
      {"alternative: the first inner one that has a letter",
       Multipart("alternative", "a",
                 {Multipart("alternative", "b", {Multipart("alternative", "c", {letter})}),
                  Multipart("alternative", "d", {other})}),
       true},
      {"alternative: not looked into a related one",
       Multipart("alternative", "a", {html, Multipart("related", "r", {other})}), false},
      {"related: the first part", Multipart("related", "r", {letter, other}), true},
      {"related: the first part is no text", Multipart("related", "r", {kImage, letter}), false},
      {"related: an alternative",
       Multipart("related", "r", {Multipart("alternative", "a", {html, letter}), kImage}), true},
      {"related: the part that is named",
       Multipart("related; start=\"<l@x>\"", "r",
                 {other, Text("plain", "LETTER", "Content-ID:\n <l@x> \n")}),
       true},
      {"related: a part is named that is not there",
       Multipart("related; start=nobody", "r", {letter}), false},
      {"related: the HTML version of a letter is named",
       Multipart("related; start=h", "r",
                 {kImage, Multipart("alternative", "a",
                                    {letter, Text("html", "<p>", "Content-ID: <h>\n")})}),
       true},
      {"related: HTML without another version", Multipart("related", "r", {html, letter}), false},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Minstream in(MemorySource{.data = c.message.data(), .length = std::ssize(c.message)});
    Bodypart message;
    Load(message, in);
    const Bodypart* found = FindTextLetter(message);
    ASSERT_EQ(found != nullptr, c.found);
    if (found == nullptr) continue;
    EXPECT_EQ(c.message.substr(static_cast<size_t>(found->BodyStart), 6), "LETTER");
  }
}

TEST(FindTextLetter, FindsNothingInAPartThatWasNeverLoaded) {
  Bodypart part;
  EXPECT_EQ(FindTextLetter(part), nullptr);
}

// Who makes a tree by hand may make it as deep as there is memory.
TEST(FindTextLetter, NeedsNoStackForDeepTrees) {
  Bodypart root;
  Bodypart* part = &root;
  for (int i = 0; i < 100'000; ++i) {
    part->Header.Append("Content-Type", "multipart/alternative; boundary=b");
    part = part->AppendChild(BodypartPtr(new Bodypart(part)));
  }
  EXPECT_EQ(FindTextLetter(root), part);
}

}  // namespace
}  // namespace mimora
