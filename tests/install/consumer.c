/* Copyright (c) 2026 the mimora developers. */
#include <mimora/mimora.h>
#include <stdio.h>

int main(int argc, char** argv) {
  S_InStream* in;
  M_Bodypart* message;
  int32_t result;
  if (argc != 2) return 2;
  in = S_CreateInStream(argv[1], -1, 0, NULL, NULL, NULL, 0);
  message = M_CreateMessage();
  result = M_LoadMessage(message, in);
  printf("%s: %d children\n", argv[1], (int)M_GetChildBodypartsCount(message));
  M_DestroyMessage(message);
  S_DestroyInStream(in);
  return result == MIMORA_OK ? 0 : 1;
}
