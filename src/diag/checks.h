// Copyright (c) 2026 the mimora developers.
//
// Handle checks. A handle is the address of an object whose first 32 bits tell its kind.
#ifndef MIMORA_DIAG_CHECKS_H_
#define MIMORA_DIAG_CHECKS_H_

#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "diag/log.h"

namespace mimora {

// The checks read the tag at the address of the object: it has to be the first member. Stands in a
// member function of the class.
#define MIMORA_CHECK_TAG_IS_FIRST(Class)                                          \
  _Pragma("GCC diagnostic push")                                                  \
      _Pragma("GCC diagnostic ignored \"-Winvalid-offsetof\"") static_assert(     \
          offsetof(Class, tag_) == 0 && sizeof(Class::tag_) == sizeof(uint32_t)); \
  _Pragma("GCC diagnostic pop") static_assert(!std::is_polymorphic_v<Class>)

constexpr uint32_t kBodypartSignature = 0x87654321;
constexpr uint32_t kInstreamSignature = 0x98765432;
constexpr uint32_t kOutstreamSignature = 0x98765431;

// Whether the handle is readable and of its kind. Says so in the log. Any address may be asked
// about; the object itself is not touched.
bool checkbodypart(const void* handle, const char* context);
bool checkinstream(const void* handle, const char* context);
bool checkoutstream(const void* handle, const char* context);

// The first 32 bits behind a handle, 0 when it cannot be read.
uint32_t SignatureOf(const void* handle);

// The checks of the exports, which only log: no work when nobody listens.
inline void NoteBodypart(const void* handle, const char* context = "") {
  if (LogHeard()) checkbodypart(handle, context);
}
inline void NoteInstream(const void* handle, const char* context = "") {
  if (LogHeard()) checkinstream(handle, context);
}
inline void NoteOutstream(const void* handle, const char* context = "") {
  if (LogHeard()) checkoutstream(handle, context);
}

}  // namespace mimora

#endif  // MIMORA_DIAG_CHECKS_H_
