// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_MIME_HEADER_BUILDER_H_
#define MIMORA_MIME_HEADER_BUILDER_H_

#include <cstddef>
#include <iterator>
#include <string>
#include <string_view>

#include "mime/header_fields.h"

namespace mimora {

// Makes the fields of one header from its lines.
class HeaderBuilder {
 public:
  // Once so many fields are listed, only those are that tell what the body is, each name once.
  HeaderBuilder(HeaderFields& fields, size_t most) : fields_(fields), most_(most) {}

  // The line is not empty.
  void Take(std::string_view line) {
    if (!IsListed(line) || !fields_.AppendLine(line)) PassOver(line);
  }

  // Tells the log of the lines that were passed over.
  void Log() const;

 private:
  static constexpr std::string_view kBodyFields[] = {"Content-Type", "Content-Transfer-Encoding",
                                                     "Content-Disposition", "Content-ID"};

  bool IsListed(std::string_view line) {
    return fields_.Count() < most_ || IsListedBeyondLimit(line);
  }
  bool IsListedBeyondLimit(std::string_view line);
  bool IsFirstOfBody(std::string_view name);
  void PassOver(std::string_view line);

  HeaderFields& fields_;
  size_t most_;
  bool continues_dropped_ = false;  // what a continuation line would continue is not listed
  bool looked_for_[std::size(kBodyFields)] = {};
  size_t passed_over_ = 0;
  std::string first_;
};

}  // namespace mimora

#endif  // MIMORA_MIME_HEADER_BUILDER_H_
