// Copyright (c) 2026 the mimora developers.
#include "diag/checks.h"

#include <cinttypes>

#include "platform/platform.h"

namespace mimora {
namespace {

bool Check(const void* handle, uint32_t signature, const char* name, const char* label,
           const char* context) {
  LogTrace("%s for %s=[%" PRIXPTR "] %s", name, label, reinterpret_cast<uintptr_t>(handle),
           context);
  bool good = false;
  if (handle != nullptr) {
    uint32_t found = 0;
    if (platform::ReadWord(handle, found)) {
      good = found == signature;
    } else {
      LogError("%s exception", name);
    }
  }
  if (!good) LogError("%s assert failure", name);
  return good;
}

}  // namespace

bool checkbodypart(const void* handle, const char* context) {
  return Check(handle, kBodypartSignature, "checkbodypart", "bp", context);
}

bool checkinstream(const void* handle, const char* context) {
  return Check(handle, kInstreamSignature, "checkinstream", "in", context);
}

bool checkoutstream(const void* handle, const char* context) {
  return Check(handle, kOutstreamSignature, "checkoutstream", "out", context);
}

uint32_t SignatureOf(const void* handle) {
  uint32_t found = 0;
  return platform::ReadWord(handle, found) ? found : 0;
}

}  // namespace mimora
