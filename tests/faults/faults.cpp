// Copyright (c) 2026 the mimora developers.
#include "faults/faults.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdlib>
#include <new>

extern "C" void __real_free(void* block);

namespace mimora::testing {
namespace {

Fault ordered = Fault::kNone;
int64_t chances_left = 0;
bool fault_lasts = false;
bool happened = false;
std::atomic<int64_t> live_blocks{0};

}  // namespace

void Order(Fault fault, int64_t at, bool lasts) {
  chances_left = at;
  fault_lasts = lasts;
  happened = false;
  ordered = fault;
}

bool EndOrder() {
  ordered = Fault::kNone;
  return happened;
}

bool Happens(Fault fault) {
  if (fault != ordered || (happened && !fault_lasts)) return false;
  if (!happened && --chances_left > 0) return false;
  return happened = true;
}

Truce::Truce() : ordered_(ordered) { ordered = Fault::kNone; }
Truce::~Truce() { ordered = ordered_; }

int64_t LiveBlocks() { return live_blocks; }

namespace {

// The fault with its reason: true when it happens.
bool Fails(Fault fault, int error) {
  if (!Happens(fault)) return false;
  errno = error;
  return true;
}

template <typename Size>
Size Shortened(Size length) {
  return length > 1 && Happens(Fault::kShort) ? Size{1} : length;
}

void* Counted(void* block) {
  if (block != nullptr) ++live_blocks;
  return block;
}

void* Allocate(size_t size) {
  return Fails(Fault::kAllocation, ENOMEM) ? nullptr
                                           : Counted(std::aligned_alloc(16, (size + 16) / 16 * 16));
}

void Free(void* block) {
  if (block != nullptr) --live_blocks;
  __real_free(block);
}

}  // namespace
}  // namespace mimora::testing

using mimora::testing::Fault;

// ---- Operators ----------------------------------------------------------------------------------

void* operator new(size_t size) {
  if (void* block = mimora::testing::Allocate(size)) return block;
  throw std::bad_alloc();
}
void* operator new(size_t size, const std::nothrow_t&) noexcept {
  return mimora::testing::Allocate(size);
}
void* operator new[](size_t size) { return operator new(size); }
void* operator new[](size_t size, const std::nothrow_t& tag) noexcept {
  return operator new(size, tag);
}
void operator delete(void* block) noexcept { mimora::testing::Free(block); }
void operator delete(void* block, size_t) noexcept { mimora::testing::Free(block); }
void operator delete[](void* block) noexcept { mimora::testing::Free(block); }
void operator delete[](void* block, size_t) noexcept { mimora::testing::Free(block); }

// ---- The C library ------------------------------------------------------------------------------

extern "C" {

void* __real_malloc(size_t size);
void* __real_calloc(size_t count, size_t size);
void* __real_realloc(void* block, size_t size);
int __real_open(const char* name, int flags, ...);
int __real_mkostemps(char* name, int suffix, int flags);
int __real_fcntl(int file, int command, ...);
int __real_fstat(int file, struct stat* status);
ssize_t __real_read(int file, void* data, size_t length);
ssize_t __real_write(int file, const void* data, size_t length);
off_t __real_lseek(int file, off_t position, int from);

void* __wrap_malloc(size_t size) {
  return mimora::testing::Fails(Fault::kAllocation, ENOMEM)
             ? nullptr
             : mimora::testing::Counted(__real_malloc(size));
}

// Compilers make it of a malloc and what follows.
void* __wrap_calloc(size_t count, size_t size) {
  return mimora::testing::Fails(Fault::kAllocation, ENOMEM)
             ? nullptr
             : mimora::testing::Counted(__real_calloc(count, size));
}

void* __wrap_realloc(void* block, size_t size) {
  if (mimora::testing::Fails(Fault::kAllocation, ENOMEM)) return nullptr;
  void* const moved = __real_realloc(block, size);
  return block == nullptr ? mimora::testing::Counted(moved) : moved;
}

void __wrap_free(void* block) { mimora::testing::Free(block); }

int __wrap_open(const char* name, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const int mode = (flags & O_CREAT) != 0 ? va_arg(arguments, int) : 0;
  va_end(arguments);
  if (mimora::testing::Fails(Fault::kOpen, EMFILE)) return -1;
  if (mimora::testing::Fails(Fault::kInterruption, EINTR)) return -1;
  return __real_open(name, flags, mode);
}

int __wrap_mkostemps(char* name, int suffix, int flags) {
  return mimora::testing::Fails(Fault::kOpen, EMFILE) ? -1 : __real_mkostemps(name, suffix, flags);
}

int __wrap_fcntl(int file, int command, ...) {
  va_list arguments;
  va_start(arguments, command);
  const int argument = va_arg(arguments, int);
  va_end(arguments);
  if (command == F_DUPFD_CLOEXEC && mimora::testing::Fails(Fault::kOpen, EMFILE)) return -1;
  return __real_fcntl(file, command, argument);
}

int __wrap_fstat(int file, struct stat* status) {
  return mimora::testing::Fails(Fault::kOpen, EIO) ? -1 : __real_fstat(file, status);
}

ssize_t __wrap_read(int file, void* data, size_t length) {
  if (mimora::testing::Fails(Fault::kRead, EIO)) return -1;
  if (mimora::testing::Fails(Fault::kInterruption, EINTR)) return -1;
  return __real_read(file, data, mimora::testing::Shortened(length));
}

ssize_t __wrap_write(int file, const void* data, size_t length) {
  if (mimora::testing::Fails(Fault::kWrite, ENOSPC)) return -1;
  if (mimora::testing::Fails(Fault::kInterruption, EINTR)) return -1;
  return __real_write(file, data, mimora::testing::Shortened(length));
}

off_t __wrap_lseek(int file, off_t position, int from) {
  return mimora::testing::Fails(Fault::kSeek, EIO) ? -1 : __real_lseek(file, position, from);
}

}  // extern "C"
