// Copyright (c) 2026 the mimora developers.
#include "tool/tree.h"

#include "tool/message.h"
#include "tool/offsets.h"
#include "tool/texts.h"

namespace mimora::tool {
namespace {

std::vector<EmbeddedFile> EmbeddedFiles(M_Bodypart* part, const char* charset) {
  std::vector<EmbeddedFile> files;
  for (int32_t number = 1;; ++number) {
    const int64_t size = M_GetAttachmentSize(number, part);
    if (size < 0) return files;
    files.push_back({AttachmentName(part, number, charset), size});
  }
}

std::string Join(const std::string& base, const std::string& last) {
  return base.empty() ? last : base + "." + last;
}

class TreeReader {
 public:
  explicit TreeReader(const char* charset) : charset_(charset) {}

  // MESSAGE_NUMBER is that of the part that encloses the message, empty for the root. The library
  // bounds how deep trees are, so that this may call itself.
  PartNode ReadMessage(M_Bodypart* message, const std::string& message_number) {
    const bool multipart = M_GetChildBodypartsCount(message) > 0;
    PartNode node = ReadPart(message, multipart ? message_number : Join(message_number, "1"));
    if (message_number.empty())
      node.number.clear();
    else if (multipart)
      node.number = Join(message_number, "TEXT");
    return node;
  }

 private:
  PartNode ReadPart(M_Bodypart* part, const std::string& number) {
    PartNode node = Describe(part);
    node.number = number;
    const int32_t count = M_GetChildBodypartsCount(part);
    for (int32_t i = 0; i < count; ++i)
      node.children.push_back(
          ReadPart(M_GetNthChildBodypart(part, i), Join(number, std::to_string(i + 1))));
    M_Bodypart* enclosed = M_GetMessageBodypartBody(part);
    if (enclosed != part) node.children.push_back(ReadMessage(enclosed, number));
    if (!node.children.empty()) node.decoded_size.reset();
    return node;
  }

  PartNode Describe(M_Bodypart* part) {
    PartNode node;
    node.part = part;
    node.type = AttachmentType(part, 0).value_or("");
    node.name = AttachmentName(part, 0, charset_);
    const auto declared = [part](auto* copy) {
      return CopiedText([=](char* buffer, uint32_t* size) { return copy(part, buffer, size); });
    };
    node.encoding = declared(&M_GetContentTransferEncoding);
    node.charset = declared(&M_GetCharset);
    node.disposition = declared(&M_GetContentDisposition);
    node.header_offset = probe_.HeaderOffset(part);
    node.body_offset = probe_.BodyOffset(part);
    int64_t decoded_size = 0;
    M_GetBodypartSize(part, &decoded_size, &node.body_size);
    node.decoded_size = decoded_size;
    node.embedded = EmbeddedFiles(part, charset_);
    return node;
  }

  const char* const charset_;
  OffsetProbe probe_;
};

const PartNode* FindExactly(const PartNode& node, std::string_view number) {
  if (node.number == number) return &node;
  for (const PartNode& child : node.children)
    if (const PartNode* found = FindExactly(child, number)) return found;
  return nullptr;
}

}  // namespace

PartNode ReadTree(M_Bodypart* root, const char* charset) {
  return TreeReader(charset).ReadMessage(root, "");
}

const PartNode& SelectPart(const PartNode& root, const std::string& number) {
  if (const PartNode* found = FindExactly(root, number)) return *found;
  if (number == "1") return root;
  throw MessageError("there is no part " + number);
}

}  // namespace mimora::tool
