// Copyright (c) 2026 the mimora developers.
#include "mime/header_fields.h"

#include <algorithm>
#include <cstring>

#include "platform/ascii.h"
#include "stream/scan.h"

namespace mimora {
namespace {

// A header that begins with a continuation line needs a field to continue.
constexpr std::string_view kDummyName = "X-Dummy";
constexpr std::string_view kDummyValue =
    "Dummy header field to account for the following continuation line:";

// Copies the text and a zero, and answers the place behind.
char* PutText(std::string_view text, char* to) {
  text.copy(to, text.size());
  to[text.size()] = '\0';
  return to + text.size() + 1;
}

}  // namespace

HeaderField HeaderFields::At(size_t index) const {
  const Entry& entry = entries_[index];
  const char* const name = texts_.data() + entry.start;
  return {{name, entry.name_size}, {name + entry.name_size + 1, entry.value_size}};
}

std::optional<std::string_view> HeaderFields::Find(std::string_view name, int n) const {
  int matches = 0;
  for (const Entry& entry : entries_) {
    if (entry.name_size != name.size()) continue;
    const char* const found = texts_.data() + entry.start;
    if (!EqualIgnoringCase({found, name.size()}, name) || ++matches != n) continue;
    return std::string_view(found + name.size() + 1, entry.value_size);
  }
  return std::nullopt;
}

void HeaderFields::Reserve(size_t fields, size_t bytes) {
  entries_.reserve(fields);
  texts_.reserve(bytes);
}

void HeaderFields::Append(std::string_view name, std::string_view value) {
  const size_t start = texts_.size();
  PutText(value, PutText(name, texts_.Add(name.size() + value.size() + 2)));
  *entries_.Add(1) = {start, name.size(), value.size()};
}

void HeaderFields::Continue(std::string_view line) {
  if (entries_.empty()) Append(kDummyName, kDummyValue);
  char* const end = texts_.Add(line.size() + 2) - 1;  // over the zero
  end[0] = '\r';
  end[1] = '\n';
  PutText(line, end + 2);
  entries_.back().value_size += line.size() + 2;
}

std::optional<std::string_view> HeaderFields::NameIn(std::string_view line) {
  const std::string_view name(line.begin(), FindSpaceOr<':', 0x7F>(line.begin(), line.end()));
  const bool has_colon = TrimLeft(line.substr(name.size()), IsBlank).starts_with(':');
  return has_colon ? std::optional(name) : std::nullopt;
}

bool HeaderFields::AppendLine(std::string_view line) {
  if (IsBlank(line.front())) {
    Continue(line);
    return true;
  }
  const auto name = NameIn(line);
  if (!name) return false;
  std::string_view value = TrimLeft(line.substr(name->size()), IsBlank).substr(1);
  if (value.starts_with(' ')) value.remove_prefix(1);
  Append(*name, value);
  return true;
}

void HeaderFields::Delete(size_t index) {
  deleted_bytes_ += entries_[index].Size();
  entries_.Erase(index);
  // Not each time, or deleting all would take quadratic time.
  if (deleted_bytes_ > texts_.size() / 2) CloseGaps();
}

void HeaderFields::CloseGaps() {
  size_t end = 0;
  for (Entry& entry : entries_) {
    std::memmove(texts_.data() + end, texts_.data() + entry.start, entry.Size());
    entry.start = end;
    end += entry.Size();
  }
  texts_.Truncate(end);
  deleted_bytes_ = 0;
}

void HeaderFields::Clear() {
  texts_.clear();
  entries_.clear();
  deleted_bytes_ = 0;
}

}  // namespace mimora
