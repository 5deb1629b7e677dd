// Copyright (c) 2026 the mimora developers.
#include "mime/header_builder.h"

#include <iterator>
#include <utility>

#include "diag/log.h"
#include "platform/ascii.h"

namespace mimora {

// A name is looked for once: the lines may be many, and so may the fields.
bool HeaderBuilder::IsFirstOfBody(std::string_view name) {
  for (size_t i = 0; i < std::size(kBodyFields); ++i) {
    if (!EqualIgnoringCase(name, kBodyFields[i])) continue;
    return !std::exchange(looked_for_[i], true) && !fields_.Find(name);
  }
  return false;
}

bool HeaderBuilder::IsListedBeyondLimit(std::string_view line) {
  if (IsBlank(line.front())) return !continues_dropped_;
  // As in front of the limit, what follows a line that is no field continues the one before.
  const auto name = HeaderFields::NameIn(line);
  if (!name) return false;
  continues_dropped_ = !IsFirstOfBody(*name);
  return !continues_dropped_;
}

void HeaderBuilder::PassOver(std::string_view line) {
  if (passed_over_++ == 0) first_ = OneLine(line.substr(0, 80));
}

void HeaderBuilder::Log() const {
  if (passed_over_ == 0) return;
  LogError("<E> %zu header lines that are no fields, or too many, the first: %s", passed_over_,
           first_.c_str());
}

}  // namespace mimora
