// Copyright (c) 2026 the mimora developers.
#include "mime/header_fields.h"

#include <algorithm>

#include "platform/ascii.h"

namespace mimora {
namespace {

// A header that begins with a continuation line needs a field to continue.
constexpr std::string_view kDummyName = "X-Dummy";
constexpr std::string_view kDummyValue =
    "Dummy header field to account for the following continuation line:";

constexpr bool IsNameCharacter(char c) { return static_cast<unsigned char>(c) > ' ' && c != 0x7F; }

}  // namespace

HeaderField HeaderFields::At(size_t index) const {
  const Entry& entry = entries_[index];
  const std::string_view texts = texts_;
  return {texts.substr(entry.start, entry.name_size),
          texts.substr(entry.start + entry.name_size + 1, entry.value_size)};
}

std::optional<std::string_view> HeaderFields::Find(std::string_view name, int n) const {
  int matches = 0;
  for (size_t i = 0; i < entries_.size(); ++i) {
    if (entries_[i].name_size != name.size()) continue;
    const HeaderField field = At(i);
    if (EqualIgnoringCase(field.name, name) && ++matches == n) return field.value;
  }
  return std::nullopt;
}

void HeaderFields::Append(std::string_view name, std::string_view value) {
  entries_.push_back({texts_.size(), name.size(), value.size()});
  texts_.append(name).push_back('\0');
  texts_.append(value).push_back('\0');
}

void HeaderFields::Continue(std::string_view line) {
  if (entries_.empty()) Append(kDummyName, kDummyValue);
  texts_.pop_back();
  texts_.append("\r\n").append(line).push_back('\0');
  entries_.back().value_size += line.size() + 2;
}

bool HeaderFields::AppendLine(std::string_view line) {
  if (IsBlank(line.front())) {
    Continue(line);
    return true;
  }
  const char* end = line.data() + line.size();
  const char* name_end =
      std::find_if(line.data(), end, [](char c) { return c == ':' || !IsNameCharacter(c); });
  const char* colon = std::find_if_not(name_end, end, IsBlank);
  if (colon == end || *colon != ':') return false;
  const char* value = colon + 1;
  if (value < end && *value == ' ') ++value;
  Append({line.data(), static_cast<size_t>(name_end - line.data())},
         {value, static_cast<size_t>(end - value)});
  return true;
}

void HeaderFields::Delete(size_t index) {
  entries_.erase(entries_.begin() + static_cast<std::ptrdiff_t>(index));
}

void HeaderFields::Clear() {
  texts_ = {};
  entries_ = {};
}

}  // namespace mimora
