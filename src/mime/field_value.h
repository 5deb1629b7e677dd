// Copyright (c) 2026 the mimora developers.
//
// The analysis of structured field values, such as "text/plain; charset=utf-8" (RFC 2045 5.1), with
// comments (RFC 5322 3.2.2), quoted strings, and continued and percent-encoded parameters
// (RFC 2231). Everything that needs a piece of such a field asks here.
#ifndef MIMORA_MIME_FIELD_VALUE_H_
#define MIMORA_MIME_FIELD_VALUE_H_

#include <optional>
#include <string>
#include <string_view>

#include "platform/ascii.h"

namespace mimora {

struct ParameterText {
  std::string_view text;
  bool is_utf8 = false;  // it declared a charset, and was re-coded
};

// A content type as the message writes it, for example Text and plain.
struct ContentType {
  std::string_view major;
  std::string_view sub;

  // In upper case, with a slash.
  std::string Full() const;
  // Without A_SUB: whether it is of that kind.
  bool Is(std::string_view a_major, std::string_view a_sub = {}) const {
    return EqualIgnoringCase(major, a_major) && (a_sub.empty() || EqualIgnoringCase(sub, a_sub));
  }
};

// Refers to the text that it was made from.
class FieldValue {
 public:
  explicit FieldValue(std::string_view text) : text_(text) {}

  // What stands before the parameters: comments and folding removed, trimmed.
  std::string Main() const {
    std::string scratch;
    return std::string(Main(scratch));
  }
  // The same without a copy: SCRATCH holds it only when it does not stand like that in the text.
  std::string_view Main(std::string& scratch) const;

  // A parameter, ready for use. When it stands in a plain and in an extended form, the extended one
  // counts, and of several alike the first.
  std::optional<std::string> Parameter(std::string_view name) const;
  // The same without a copy, as above.
  std::optional<ParameterText> FindParameter(std::string_view name, std::string& scratch) const;

  // The content type that it declares; nothing when it is not of the form major/sub. SCRATCH as
  // above.
  std::optional<ContentType> Type(std::string& scratch) const;

 private:
  std::optional<ParameterText> FindInAnyField(std::string_view name, std::string& scratch) const;
  std::optional<ContentType> PlainType() const;

  std::string_view text_;
};

}  // namespace mimora

#endif  // MIMORA_MIME_FIELD_VALUE_H_
