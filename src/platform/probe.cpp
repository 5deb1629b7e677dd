// Copyright (c) 2026 the mimora developers.
#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <mutex>

#include "platform/platform.h"

namespace mimora::platform {
namespace {

// No page below this address is ever mapped.
constexpr uintptr_t kLowestAddress = 4096;

// Some containers forbid process_vm_readv; then every address would look unreadable. The kernel
// also says EFAULT for a bad address when it is asked to copy the bytes into a pipe.
class PipeProbe {
 public:
  bool ReadWord(const void* address, uint32_t& word) {
    const std::scoped_lock lock(mutex_);
    if (ends_[0] == kNoFile && pipe2(ends_, O_CLOEXEC | O_NONBLOCK) == -1) return false;
    const ssize_t written = write(ends_[1], address, sizeof word);
    if (written <= 0) return false;
    // A word across the end of a readable page is written in part: take that out again.
    return read(ends_[0], &word, static_cast<size_t>(written)) == written &&
           written == static_cast<ssize_t>(sizeof word);
  }

 private:
  std::mutex mutex_;
  int ends_[2] = {kNoFile, kNoFile};
};

}  // namespace

bool ReadWord(const void* address, uint32_t& word) {
  if (reinterpret_cast<uintptr_t>(address) < kLowestAddress) return false;
  static std::atomic<bool> forbidden{false};
  if (!forbidden.load(std::memory_order_relaxed)) {
    const iovec to{&word, sizeof word};
    const iovec from{const_cast<void*>(address), sizeof word};
    const ssize_t count = process_vm_readv(getpid(), &to, 1, &from, 1, 0);
    if (count == static_cast<ssize_t>(sizeof word)) return true;
    if (count != -1 || (errno != EPERM && errno != ENOSYS)) return false;
    forbidden.store(true, std::memory_order_relaxed);
  }
  static PipeProbe probe;
  return probe.ReadWord(address, word);
}

}  // namespace mimora::platform
