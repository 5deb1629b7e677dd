// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_TOOL_JSON_OUTPUT_H_
#define MIMORA_TOOL_JSON_OUTPUT_H_

#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>

#include "tool/output.h"

namespace mimora::tool {

// Keys keep the order in which they are set, which is the one a reader expects.
using Json = nlohmann::ordered_json;

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

// An array that is written element by element, so that only one of them is held in memory.
// Bytes that are no proper UTF-8 come out as U+FFFD.
class JsonArray {
 public:
  explicit JsonArray(Output& out) : out_(out) {}

  void Add(const Json& element) {
    out_.Write(separator_);
    // On a terminal characters beyond ASCII, some of which could steer it, are written as \uNNNN.
    out_.Write(element.dump(2, ' ', out_.IsTerminal(), Json::error_handler_t::replace));
    separator_ = ",\n";
  }
  // Called once, behind the last element; an array that work was thrown out of stays open.
  void Close() { out_.Write(separator_ == kOpening ? "[]\n" : "\n]\n"); }

 private:
  static constexpr std::string_view kOpening = "[\n";

  Output& out_;
  std::string_view separator_ = kOpening;
};

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_JSON_OUTPUT_H_
