// Copyright (c) 2026 the mimora developers.
#include <gtest/gtest.h>
#include <mimora/mimora.h>

#include <atomic>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "support/sources.h"

namespace {

using mimora::testing::TextFile;

constexpr int kThreads = 8;
constexpr int kRounds = 200;

void RunInThreads(const std::function<void(int)>& work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
  for (std::thread& thread : threads) thread.join();
}

std::string MessageWithParts(int count) {
  std::string text = "Subject: s\nContent-Type: multipart/mixed; boundary=b\n\n";
  for (int i = 0; i < count; ++i) {
    text += "--b\nContent-Transfer-Encoding: base64\n\nTWFu\n";
  }
  return text + "--b--\n";
}

std::atomic<int> lines{0};
void CountLine(const char*) { lines.fetch_add(1); }

TEST(Threads, ParseDifferentMessagesAndWriteLogLines) {
  RunInThreads([](int number) {
    const std::string text = MessageWithParts(number);
    for (int round = 0; round < kRounds; ++round) {
      // The first of these decide about the log at the same time; later ones change the callback.
      if (round % 16 == number) P_SetQQ_callback(round % 2 == 0 ? CountLine : nullptr);
      P_QQ("a line");
      M_CheckBodypart(nullptr);
      M_Bodypart* message = M_CreateMessage();
      EXPECT_EQ(M_LoadBodypartFromString(message, text.c_str(), -1), MIMORA_OK);
      EXPECT_EQ(M_GetChildBodypartsCount(message), number);
      uint32_t flags = 0;
      M_GetBodypartFlags(message, &flags);
      M_DestroyMessage(message);
    }
  });
  P_SetQQ_callback(nullptr);
  EXPECT_GT(lines.load(), 0);
}

// What is made at the first use, and kept, is made by whoever comes first.
TEST(Threads, UseEverythingForTheFirstTimeTogether) {
  std::atomic<int> waiting{kThreads};
  RunInThreads([&](int) {
    --waiting;
    while (waiting > 0) std::this_thread::yield();
    char text[64];
    uint32_t size = sizeof text;
    EXPECT_EQ(M_DecodeHeaderFieldValue("=?euc-jp?B?pKI=?=", "utf-8", text, &size), 1);
    EXPECT_STREQ(text, "\u3042");
    EXPECT_EQ(P_Extension2MimeType(".html", text, sizeof text), 0);
    EXPECT_STREQ(text, "text/html");
    char16_t wide[8];
    size = 8;
    EXPECT_EQ(M_HTMLToText(u"<b>&eacute;</b>", wide, &size), 1);
    EXPECT_EQ(wide[0], u'\u00E9');
    P_MD5Sum("", 0, text);
    EXPECT_EQ(P_CRC32("a", 1), 0x174841BCu);
    EXPECT_EQ(P_RFC822DateTimeStr2time_t("1 Jan 1970 00:00:01 GMT"), 1u);
    P_Algorithm* algorithms = nullptr;
    EXPECT_GT(P_GetAlgorithmList(0, &algorithms), 0);
    P_FreeAlgorithmList(algorithms);
  });
}

// A stream that is moved for every read: the bytes of one thread must never reach another.
TEST(Threads, ShareAStreamUnderItsLock) {
  const std::string text = MessageWithParts(kThreads);
  const TextFile file(text);
  S_InStream* in = S_CreateInStream(file.Name(), -1, 0, nullptr, nullptr, nullptr, 16);
  M_Bodypart* message = M_CreateMessage();
  ASSERT_EQ(M_LoadMessage(message, in), MIMORA_OK);
  RunInThreads([&](int number) {
    M_Bodypart* part = M_GetNthChildBodypart(message, number);
    for (int round = 0; round < kRounds; ++round) {
      char body[8] = {};
      uint32_t size = 4;
      S_LockInStream(in);
      EXPECT_EQ(M_GetBodyText(part, in, body, 0, &size), 0);
      S_UnlockInStream(in);
      EXPECT_STREQ(body, "TWFu");
    }
  });
  RunInThreads([&](int number) {
    M_Bodypart* part = M_GetNthChildBodypart(message, number);
    for (int round = 0; round < kRounds; ++round) {
      S_OutStream* out = S_CreateOutStream(nullptr, 0, nullptr, nullptr, nullptr, 0);
      const char* encoding = round % 8 == 0 ? "quoted-printable" : nullptr;
      EXPECT_EQ(M_SaveBodypartBody(part, encoding, nullptr, nullptr, out), MIMORA_OK);
      const void* bytes = nullptr;
      uint32_t size = 0;
      EXPECT_EQ(S_GetOutStreamBuffer(out, &bytes, &size), 0);
      EXPECT_EQ(std::string(static_cast<const char*>(bytes), size), "Man");
      S_DestroyOutStream(out);
    }
  });
  M_DestroyMessage(message);
  S_DestroyInStream(in);
}

}  // namespace
