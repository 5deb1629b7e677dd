// Copyright (c) 2026 the mimora developers.
//
// What a mail server does with the library, as operations that can be done again and again.
#ifndef MIMORA_TESTS_FAULTS_OPERATIONS_H_
#define MIMORA_TESTS_FAULTS_OPERATIONS_H_

#include <cstdint>
#include <span>
#include <string_view>

namespace mimora::testing {

// What an operation was answered. It allocates nothing: faults are for the library.
class Answers {
 public:
  // A status: anything but 0 is a failure.
  int32_t Status(int32_t status) {
    if (status != 0) failed_ = true;
    return status;
  }
  // A handle: null is a failure.
  template <typename Handle>
  Handle* Made(Handle* handle) {
    if (handle == nullptr) failed_ = true;
    return handle;
  }
  void Number(int64_t number) { Text({reinterpret_cast<const char*>(&number), sizeof number}); }
  void Text(std::string_view text) {
    for (const char c : text) hash_ = (hash_ ^ static_cast<unsigned char>(c)) * 0x100000001B3;
    hash_ = (hash_ ^ text.size()) * 0x100000001B3;
  }

  // Something was done that must not happen, failure or not.
  void Wrong() { wrong_ = true; }

  bool IsWrong() const { return wrong_; }
  bool Failed() const { return failed_; }
  uint64_t Hash() const { return hash_; }

 private:
  uint64_t hash_ = 0xCBF29CE484222325;
  bool failed_ = false;
  bool wrong_ = false;
};

struct Operation {
  const char* name;
  void (*run)(Answers& answers);
};

// Folder for what operations write; it is empty when none runs.
void SetWorkFolder(const char* folder);
const char* WorkFolder();
std::span<const Operation> Operations();

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_FAULTS_OPERATIONS_H_
