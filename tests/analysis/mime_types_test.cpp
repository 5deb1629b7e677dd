// Copyright (c) 2026 the mimora developers.
#include "analysis/mime_types.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "mimora/mimora.h"
#include "support/process.h"
#include "support/sources.h"

namespace mimora::testing {
namespace {

TEST(ExtensionForType, KnowsAFewTypesInAnyCase) {
  const std::pair<const char*, const char*> cases[] = {{"text/plain", ".TXT"},
                                                       {"TEXT/Html", ".HTM"},
                                                       {"audio/x_pu_wav", ".WAV"},
                                                       {"audio/x-pu-wav", ""},
                                                       {"image/png", ""},
                                                       {"TEXT", ""},
                                                       {"", ""}};
  for (const auto& [type, want] : cases) EXPECT_EQ(ExtensionForType(type), want) << type;
}

TEST(P_GetExtensionFromMimeType, LeavesABufferAloneThatIsTooSmall) {
  char buffer[8] = "?";
  EXPECT_EQ(P_GetExtensionFromMimeType("text/plain", buffer, 4), 1);
  EXPECT_EQ(P_GetExtensionFromMimeType("text/plain", nullptr, 8), 1);
  EXPECT_STREQ(buffer, "?");
  EXPECT_EQ(P_GetExtensionFromMimeType("text/plain", buffer, 5), 0);
  EXPECT_STREQ(buffer, ".TXT");
  EXPECT_EQ(P_GetExtensionFromMimeType("image/png", buffer, 1), 0);
  EXPECT_STREQ(buffer, "");
}

// The types of a machine are read once per process.
TEST(P_Extension2MimeType, AsksTheMachineThenItsOwnTable) {
  const auto work = [] {
    const TextFile types(
        "# comment\ntext/own\tOWN two # three\napplication/second two\nimage/none\n");
    ::setenv("MIMORA_MIME_TYPES", types.Name(), 1);
    const auto show = [](int32_t status, const char* type) {
      Show((std::to_string(status) + " " + type).c_str());
    };
    char type[20];
    for (const char* extension : {".own", ".TWO", ".three", ".none", "own", ".", "", ".Eml"})
      show(P_Extension2MimeType(extension, type, sizeof type), type);
    show(P_Extension2MimeType(".own", type, 9), type);
    show(P_Extension2MimeType(".own", type, 8), type);
    show(P_Extension2MimeType(".own", nullptr, 8), "");
    show(P_Extension2MimeType(nullptr, type, 8), type);

    constexpr char kMail[] =
        "Content-Type: TEXT/plain; x=y\n\nbegin 644 a.b.own\n`\nend\n"
        "begin 644 own\n`\nend\n";
    M_Bodypart* part = M_CreateMessage();
    M_LoadBodypartFromBuffer(part, kMail, sizeof kMail - 1);
    for (const int32_t number : {0, 1, 2, 3, -1})
      show(M_GetAttachmentMimeType(number, part, type, sizeof type), type);
    show(M_GetAttachmentMimeType(1, part, type, 5), type);
    show(M_GetAttachmentMimeType(0, nullptr, type, sizeof type), type);
    M_DestroyMessage(part);
  };
  ExpectShown("", "", work,
              "0 text/own|0 text/own|2 |2 |2 |2 |2 |0 message/rfc822|0 text/own|234 |234 |2 |"
              "0 TEXT/PLAIN|0 text/own|1 |1 |1 |1 text|1 |");
}

}  // namespace
}  // namespace mimora::testing
