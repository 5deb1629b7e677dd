// Copyright (c) 2026 the mimora developers.
#include "tool/tree.h"

#include <algorithm>
#include <cstring>

#include "tool/offsets.h"

namespace mimora::tool {
namespace {

// Types beyond this are cut; none in use comes near it.
constexpr uint32_t kLongestType = 256;

// Takes a text from a function that tells the room it needs before it copies.
template <typename Copy>
std::optional<std::string> CopiedText(Copy copy) {
  uint32_t size = 0;
  if (copy(nullptr, &size) != 1) return std::nullopt;
  std::string text(size, '\0');
  if (copy(text.data(), &size) != 0) return std::nullopt;
  text.resize(std::strlen(text.c_str()));
  return text;
}

std::string TypeOf(M_Bodypart* part) {
  char type[kLongestType] = "";
  M_GetBodypartMimeContentType(part, type, sizeof type);
  std::string text = type;
  for (char& letter : text)
    if (letter >= 'A' && letter <= 'Z') letter = static_cast<char>(letter - 'A' + 'a');
  return text;
}

std::optional<std::string> NameOf(M_Bodypart* part) {
  const auto parameter = [part](const char* field, const char* name) {
    return CopiedText([=](char* buffer, uint32_t* size) {
      return M_MimeParameter(part, field, name, buffer, size);
    });
  };
  std::optional<std::string> name = parameter("Content-Type", "name");
  return name ? name : parameter("Content-Disposition", "filename");
}

std::vector<int64_t> EmbeddedSizes(M_Bodypart* part) {
  std::vector<int64_t> sizes;
  for (int32_t number = 1;; ++number) {
    const int64_t size = M_GetAttachmentSize(number, part);
    if (size < 0) return sizes;
    sizes.push_back(size);
  }
}

std::string Join(const std::string& base, const std::string& last) {
  return base.empty() ? last : base + "." + last;
}

class TreeReader {
 public:
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
    node.type = TypeOf(part);
    node.name = NameOf(part);
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
    node.embedded = EmbeddedSizes(part);
    return node;
  }

  OffsetProbe probe_;
};

const PartNode* FindExactly(const PartNode& node, std::string_view number) {
  if (node.number == number) return &node;
  for (const PartNode& child : node.children)
    if (const PartNode* found = FindExactly(child, number)) return found;
  return nullptr;
}

}  // namespace

PartNode ReadTree(M_Bodypart* root) { return TreeReader().ReadMessage(root, ""); }

const PartNode* FindPart(const PartNode& root, std::string_view number) {
  const PartNode* found = FindExactly(root, number);
  return found == nullptr && number == "1" ? &root : found;
}

}  // namespace mimora::tool
