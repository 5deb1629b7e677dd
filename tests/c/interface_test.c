/* Copyright (c) 2026 the mimora developers.
 *
 * What a caller in plain C sees: the header compiles as C99 and every handle, callback and size
 * arrives as it was sent. */
#include <mimora/mimora.h>
#include <stdio.h>
#include <string.h>

static int failures = 0;

#define EXPECT(condition)                                     \
  do {                                                        \
    if (!(condition)) {                                       \
      fprintf(stderr, "line %d: %s\n", __LINE__, #condition); \
      ++failures;                                             \
    }                                                         \
  } while (0)

static const char kMessage[] =
    "Subject: From C\r\n"
    "Content-Type: multipart/mixed; boundary=b\r\n"
    "\r\n"
    "--b\r\n"
    "\r\n"
    "text\r\n"
    "--b\r\n"
    "Content-Type: image/gif; name=\"a b.gif\"\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "TWFu\r\n"
    "--b--\r\n";

struct source {
  int64_t position;
  int reads;
};

static int64_t MIMORA_CALL read_message(S_Context context, void* destination, int64_t length) {
  struct source* source = (struct source*)context;
  int64_t left = (int64_t)sizeof kMessage - 1 - source->position;
  if (length > left) length = left;
  if (length > 10) length = 10;
  memcpy(destination, kMessage + source->position, (size_t)length);
  source->position += length;
  ++source->reads;
  return length;
}

static void MIMORA_CALL seek_message(S_Context context, int64_t position) {
  ((struct source*)context)->position = position;
}

static int64_t MIMORA_CALL tell_message(S_Context context) {
  return ((struct source*)context)->position;
}

static int64_t MIMORA_CALL append(S_Context context, const void* data, int64_t length) {
  char* text = (char*)context;
  strncat(text, (const char*)data, (size_t)length);
  return length;
}

static void load_from_callbacks(void) {
  struct source source = {0, 0};
  S_InStream* in =
      S_CreateInStream(NULL, 0, (S_Context)&source, read_message, seek_message, tell_message, 64);
  M_Bodypart* message = M_CreateMessage();
  M_Bodypart* image;
  char name[32];
  uint32_t size = sizeof name;
  int64_t decoded = 0, raw = 0;

  EXPECT(M_LoadMessage(message, in) == MIMORA_OK);
  EXPECT(source.reads > 10);
  EXPECT(M_GetChildBodypartsCount(message) == 2);
  EXPECT(strcmp(M_BodypartHeaderFieldValue(message, "subject"), "From C") == 0);
  image = M_GetNthChildBodypart(message, 1);
  EXPECT(M_MimeParameter(image, "Content-Type", "name", name, &size) == 0);
  EXPECT(strcmp(name, "a b.gif") == 0);
  EXPECT(M_GetBodypartSize(image, &decoded, &raw) == 0);
  EXPECT(decoded == 3);
  EXPECT(raw == 4);
  M_DestroyMessage(message);
  S_DestroyInStream(in);
}

static void copy_to_callback(void) {
  char text[64] = "";
  S_InStream* in = S_CreateInStream("abc\ndef", 7, 0, NULL, NULL, NULL, 0);
  S_OutStream* out = S_CreateOutStream(NULL, (S_Context)text, append, NULL, NULL, 2);
  P_EncodeQuotedPrintable(in, out);
  EXPECT(S_FlushBuffers(out) == 0);
  EXPECT(S_WritePos(out) == 8);
  EXPECT(strcmp(text, "abc\r\ndef") == 0);
  S_DestroyOutStream(out);
  S_DestroyInStream(in);
}

int main(void) {
  EXPECT(P_MIMORATest(7) == 0);
  load_from_callbacks();
  copy_to_callback();
  return failures == 0 ? 0 : 1;
}
