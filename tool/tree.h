// Copyright (c) 2026 the mimora developers.
//
// The parts of a message with all that is known of them, numbered as mail clients number them.
#ifndef MIMORA_TOOL_TREE_H_
#define MIMORA_TOOL_TREE_H_

#include <mimora/mimora.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace mimora::tool {

// A file inside a body.
struct EmbeddedFile {
  std::optional<std::string> name;
  int64_t size = 0;
};

// The children of a multipart are counted: 1, 2, and below 2: 2.1, 2.2. A message enclosed in
// part 2 has its parts there too: they are 2.1, 2.2 when it is a multipart, else its one body is
// 2.1. The enclosed multipart itself has no number left and is called 2.TEXT; the message at the
// root is the empty text.
struct PartNode {
  M_Bodypart* part = nullptr;  // belongs to the message
  std::string number;
  std::string type;  // lower case
  std::optional<std::string> name;
  // As the header declares them, quotes and RFC 2231 undone; missing when it does not.
  std::optional<std::string> encoding, charset, disposition;
  int64_t header_offset = 0;
  int64_t body_offset = 0;
  int64_t body_size = 0;
  std::optional<int64_t> decoded_size;  // of a part that has nothing below it
  std::vector<EmbeddedFile> embedded;   // numbered from 1
  // Of a message/... part the one that it encloses.
  std::vector<PartNode> children;
};

// Names come in CHARSET. Throws MessageError.
PartNode ReadTree(M_Bodypart* root, const char* charset);

// The part of a number. "1" is the one body of a message that is no multipart, so it finds the
// message. Throws MessageError when there is none.
const PartNode& SelectPart(const PartNode& root, const std::string& number);

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_TREE_H_
