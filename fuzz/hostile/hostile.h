// Copyright (c) 2026 the mimora developers.
//
// Mail from enemies: each class is one idea that makes careless software slow, large, or crash.
#ifndef MIMORA_FUZZ_HOSTILE_HOSTILE_H_
#define MIMORA_FUZZ_HOSTILE_HOSTILE_H_

#include <cstddef>
#include <functional>
#include <span>
#include <string>
#include <string_view>

namespace mimora::hostile {

// What the memory of who reads the message may grow with.
enum class Unit {
  kNothing,      // bodies: they are streamed
  kPart,         // N of them
  kField,        // N header fields
  kFile,         // N files inside a body
  kHeaderBytes,  // the size of the message
  kPageBytes,    // the same: a page is shown from memory
};

struct MessageClass {
  const char* name;
  Unit unit;
  std::size_t size;  // the N of the full set
  std::string (*make)(std::size_t n);
};

std::span<const MessageClass> StructureClasses();
std::span<const MessageClass> HeaderClasses();
std::span<const MessageClass> BodyClasses();
std::span<const MessageClass> TnefClasses();
std::span<const MessageClass> PageClasses();

inline std::string Repeat(std::string_view piece, std::size_t n) {
  std::string text;
  text.reserve(piece.size() * n);
  for (std::size_t i = 0; i < n; ++i) text += piece;
  return text;
}

// The pieces that PIECE makes of 0 to N - 1.
inline std::string Series(std::size_t n, const std::function<std::string(std::size_t)>& piece) {
  std::string text;
  for (std::size_t i = 0; i < n; ++i) text += piece(i);
  return text;
}

inline std::string Number(std::size_t i) { return std::to_string(i); }

// A message of one body.
inline std::string Body(std::string_view type, std::string_view encoding, std::string_view body) {
  return std::string("From: a@example.org\nContent-Type: ")
      .append(type)
      .append("\nContent-Transfer-Encoding: ")
      .append(encoding)
      .append("\n\n")
      .append(body);
}

}  // namespace mimora::hostile

#endif  // MIMORA_FUZZ_HOSTILE_HOSTILE_H_
