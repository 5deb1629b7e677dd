// Copyright (c) 2026 the mimora developers.
//
// Where libFuzzer enters a target.
#include "fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  mimora::fuzz::CheckInput({data, size});
  return 0;
}
