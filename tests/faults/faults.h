// Copyright (c) 2026 the mimora developers.
//
// Faults on order. The program of these tests has its own operator new, and the linker leads the
// calls that the library makes into the C library through here; callbacks of tests ask themselves.
#ifndef MIMORA_TESTS_FAULTS_FAULTS_H_
#define MIMORA_TESTS_FAULTS_FAULTS_H_

#include <cstdint>

namespace mimora::testing {

enum class Fault {
  kNone,
  kAllocation,      // there is no memory
  kOpen,            // a file cannot be opened, created or looked at
  kRead,            // the disk cannot be read
  kWrite,           // the disk is full
  kSeek,            // a file cannot be moved
  kShort,           // a call moves one byte only
  kInterruption,    // a signal comes: the call has done nothing
  kCallbackError,   // a callback answers that it failed
  kCallbackLie,     // it answers that it did more than it was asked for
  kCallbackThrows,  // it throws
};

// Lets the fault happen at its AT-th chance, counted from 1, and at all later ones if it LASTS.
void Order(Fault fault, int64_t at, bool lasts);

// No more faults from here on. Answers whether it ever happened.
bool EndOrder();

// Asked at each chance: whether the fault happens now.
bool Happens(Fault fault);

// No faults as long as the object lives.
class Truce {
 public:
  Truce();
  ~Truce();
  Truce(const Truce&) = delete;
  Truce& operator=(const Truce&) = delete;

 private:
  const Fault ordered_;
};

// Blocks of memory that were allocated and not freed again.
int64_t LiveBlocks();

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_FAULTS_FAULTS_H_
