/* Copyright (c) 2026 the mimora developers.
 *
 * What a caller in plain C sees: the header compiles as C99 and every handle, callback and size
 * arrives as it was sent. */
#include <mimora/mimora.h>
#include <stdio.h>
#include <string.h>

static const char kMessage[] =
    "Subject: From C\r\n"
    "Content-Transfer-Encoding: base64\r\n"
    "\r\n"
    "TWFu\r\n";

static int64_t MIMORA_CALL read_message(S_Context context, void* destination, int64_t length) {
  int64_t* position = (int64_t*)context;
  int64_t left = (int64_t)sizeof kMessage - 1 - *position;
  if (length > left) length = left;
  memcpy(destination, kMessage + *position, (size_t)length);
  *position += length;
  return length;
}

static void MIMORA_CALL seek_message(S_Context context, int64_t position) {
  *(int64_t*)context = position;
}

static int64_t MIMORA_CALL tell_message(S_Context context) { return *(int64_t*)context; }

static int64_t MIMORA_CALL append(S_Context context, const void* data, int64_t length) {
  strncat((char*)context, (const char*)data, (size_t)length);
  return length;
}

static int expect(int condition, const char* text) {
  if (!condition) fprintf(stderr, "%s\n", text);
  return !condition;
}
#define EXPECT(condition) failures += expect(condition, #condition)

static int lines = 0;
static void MIMORA_CALL count_line(const char* line) { lines += line[0] != '\0'; }

int main(void) {
  int failures = 0;
  int64_t position = 0, decoded = 0, raw = 0;
  char text[64] = "";
  S_InStream* in =
      S_CreateInStream(NULL, 0, (S_Context)&position, read_message, seek_message, tell_message, 9);
  S_OutStream* out = S_CreateOutStream(NULL, (S_Context)text, append, NULL, NULL, 2);
  M_Bodypart* message = M_CreateMessage();
  P_SetQQ_callback(count_line);
  EXPECT(P_MIMORATest(7) == 0);
  P_QQ("line");
  P_SetQQ_callback(NULL);
  EXPECT(lines == 1);
  EXPECT(M_LoadMessage(message, in) == MIMORA_OK);
  EXPECT(strcmp(M_BodypartHeaderFieldValue(message, "subject"), "From C") == 0);
  EXPECT(M_GetBodypartSize(message, &decoded, &raw) == 0);
  EXPECT(decoded == 3 && raw == 6);
  S_SeekReadPos(in, 54);
  EXPECT(S_CopyFromInStreamToOutStream(in, out) == MIMORA_OK);
  EXPECT(S_WritePos(out) == 6);
  EXPECT(strcmp(text, "TWFu\r\n") == 0);
  M_DestroyMessage(message);
  S_DestroyOutStream(out);
  S_DestroyInStream(in);
  return failures;
}
