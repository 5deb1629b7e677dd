// Copyright (c) 2026 the mimora developers.
//
// A tree as a text that tests compare: the header of a part begins at an offset and has a size, its
// body follows. The decoded size is told when it is not that of the body, then the files inside,
// and in braces the parts:
//   TYPE offset+header+body [=decoded] [uu NAME offset+length=size] [tnef NAME offset=size] {...}
#ifndef MIMORA_TESTS_MIME_TREE_TEXT_H_
#define MIMORA_TESTS_MIME_TREE_TEXT_H_

#include <string>

#include "mime/bodypart.h"

namespace mimora::testing {

inline std::string TreeText(const Bodypart& part) {
  const auto number = [](int64_t value) { return std::to_string(value); };
  std::string text = part.TypeName() + " " + number(part.PartStart) + "+" +
                     number(part.HeaderSize) + "+" + number(part.BodyLength);
  if (part.BodyStart != part.PartStart + part.HeaderSize) text += " at " + number(part.BodyStart);
  if (part.DecodedSize != part.BodyLength) text += " =" + number(part.DecodedSize);
  if (part.Opaque) text += " opaque";
  for (const EmbeddedAttachment& file : part.UuencodedBlocks) {
    text += " [uu " + file.Name + " " + number(file.Offset) + "+" + number(file.BlockLength) + "=" +
            number(file.DecodedSize) + "]";
  }
  for (const EmbeddedAttachment& file : part.TnefAttachments)
    text +=
        " [tnef " + file.Name + " " + number(file.Offset) + "=" + number(file.DecodedSize) + "]";
  for (const auto& child : part.Children) text += " {" + TreeText(*child) + "}";
  if (part.EnclosedMessage != nullptr) text += " {" + TreeText(*part.EnclosedMessage) + "}";
  return text;
}

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_MIME_TREE_TEXT_H_
