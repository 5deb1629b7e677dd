// Copyright (c) 2026 the mimora developers.
#include "mime/bodypart.h"

#include <gtest/gtest.h>

#include "mime/dump.h"
#include "mime/parser.h"

namespace mimora {
namespace {

TEST(Dump, ShowsATree) {
  Bodypart message;
  ASSERT_EQ(LoadFromCopy(message,
                         "Content-Type: multipart/mixed; boundary=b\n\n"
                         "--b\nContent-Type: message/rfc822\n\n"
                         "Content-ID: <1@x>\n\nt\nbegin 644 f\n#86)C\nend\n\n--b--\n"),
            kOk);
  ::testing::internal::CaptureStdout();
  DumpBodypart(&message, stdout);
  EXPECT_EQ(::testing::internal::GetCapturedStdout(),
            "----[0] -----START-------------------------\n"
            "content-type = \"multipart/mixed; boundary=b\"\n"
            "content-transfer-encoding = \"\"\n"
            "header:\n  offset = 0\n  size = 43\n  fields count = 1\n"
            "body:\n  offset = 43\n  size = 84\n"
            "child parts count = 1\n"
            "child bodypart 0:\n"
            "  ----[1] -----START-------------------------\n"
            "  content-type = \"message/rfc822\"\n"
            "  content-transfer-encoding = \"\"\n"
            "  header:\n    offset = 47\n    size = 30\n    fields count = 1\n"
            "  body:\n    offset = 77\n    size = 43\n"
            "  body=bodypart\n"
            "    ----[2] <1@x>-----START-------------------------\n"
            "    content-type = \"\"\n"
            "    content-transfer-encoding = \"\"\n"
            "    header:\n      offset = 77\n      size = 19\n      fields count = 1\n"
            "    body:\n      offset = 96\n      size = 24\n"
            "    uupart 0 name=f, offset =2, size =22, rawsize =3\n"
            "    ----[2] <1@x>-----END---------------------------\n"
            "  ----[1] -----END---------------------------\n"
            "----[0] -----END---------------------------\n");
}

TEST(Flags, TellReceiptsAndSMime) {
  const struct {
    const char* header;
    uint32_t flags;
  } cases[] = {
      {"Subject: x", 0},
      {"Disposition-Notification-To: a@example.org", 1},
      {"Disposition-Notification-To:  ", 0},
      {"Content-Type: multipart/signed; boundary=b", 2},
      {"Content-Type: application/pkcs7-mime; smime-type=Signed-Data", 6},
      {"Content-Type: application/x-pkcs7-mime; smime-type=enveloped-data", 4},
      {"Disposition-Notification-To: a\nContent-Type: application/pkcs7-mime", 5},
  };
  for (const auto& c : cases) {
    Bodypart message;
    LoadFromCopy(message, std::string(c.header) + "\n\n");
    EXPECT_EQ(message.Flags(), c.flags) << c.header;
  }
}

TEST(StreamDefinition, MovesATreeFromOneStreamToAnother) {
  const std::string text =
      "Content-Type: multipart/mixed; boundary=b\n\n"
      "--b\nContent-Type: message/rfc822\n\nA: b\n\nx\n--b--\n";
  const MemorySource source{.data = text.data(), .length = std::ssize(text)};
  Minstream first(source), second(source), other(source);
  Bodypart message;
  ASSERT_EQ(Load(message, first), kOk);
  const auto count_on = [&message](const Minstream* stream, DataDefinition kind) {
    int count = 0;
    WalkBodyparts(message, [&](const Bodypart& part) {
      count += part.BodyStream == stream && part.DataDefinitionType == kind ? 1 : 0;
    });
    return count;
  };
  message.DetachFrom(&other);
  EXPECT_EQ(count_on(&first, kBodyInStream), 3);
  message.DetachFrom(&first);
  EXPECT_EQ(count_on(nullptr, kBodyDetached), 3);
  message.AttachTo(&second);
  EXPECT_EQ(count_on(&second, kBodyInStream), 3);
  message.AttachTo(&other);
  EXPECT_EQ(count_on(&second, kBodyInStream), 3) << "what is attached stays";
}

TEST(Bodypart, DeletesTheChildThatIsMeant) {
  for (int count = 1; count <= 4; ++count) {
    for (int deleted = 0; deleted < count; ++deleted) {
      Bodypart root;
      std::vector<Bodypart*> left;
      for (int i = 0; i < count; ++i) left.push_back(root.AppendChild(root.MakeSubpart(&root)));
      ASSERT_TRUE(root.DeleteChild(left[deleted]));
      left.erase(left.begin() + deleted);
      left.push_back(root.AppendChild(BodypartPtr(new Bodypart)));
      ASSERT_EQ(std::ssize(root.Children), count);
      for (int i = 0; i < count; ++i) EXPECT_EQ(root.Children[i].get(), left[i]) << deleted;
      EXPECT_FALSE(root.DeleteChild(&root));
    }
  }
}

// A chain of children made by hand, or each loaded into the one before, may be as deep as memory
// allows.
TEST(Bodypart, IsDestroyedAndWalkedHoweverDeepItIs) {
  constexpr int kDepth = 200'000;
  Bodypart root;
  Bodypart* part = &root;
  for (int i = 0; i < kDepth; ++i) {
    part = part->AppendChild(i % 2 == 0 ? BodypartPtr(new Bodypart) : part->MakeSubpart(part));
  }
  int count = 0;
  WalkBodyparts(root, [&count](const Bodypart&) { ++count; });
  EXPECT_EQ(count, kDepth + 1);
  root.DetachFrom(nullptr);
}

}  // namespace
}  // namespace mimora
