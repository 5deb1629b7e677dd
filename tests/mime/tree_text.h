// Copyright (c) 2026 the mimora developers.
//
// A tree as a text that tests compare: one line a part, indented by its depth,
//   TYPE header-offset+size body-offset+size =decoded-size [uu NAME offset+length=size] [tnef ...]
#ifndef MIMORA_TESTS_MIME_TREE_TEXT_H_
#define MIMORA_TESTS_MIME_TREE_TEXT_H_

#include <string>

#include "mime/bodypart.h"

namespace mimora::testing {

inline std::string TreeText(const Bodypart& root) {
  std::string text;
  const auto number = [](int64_t value) { return std::to_string(value); };
  WalkBodyparts(root, [&](const Bodypart& part) {
    text += std::string(2 * static_cast<size_t>(part.Depth() - root.Depth()), ' ') +
            part.Type().Full() + " " + number(part.PartStart) + "+" + number(part.HeaderSize) +
            " " + number(part.BodyStart) + "+" + number(part.BodyLength) + " =" +
            number(part.DecodedSize);
    if (part.Opaque) text += " opaque";
    for (const EmbeddedAttachment& file : part.UuencodedBlocks) {
      text += " [uu " + file.Name + " " + number(file.Offset) + "+" + number(file.BlockLength) +
              "=" + number(file.DecodedSize) + "]";
    }
    for (const EmbeddedAttachment& file : part.TnefAttachments) {
      text +=
          " [tnef " + file.Name + " " + number(file.Offset) + "=" + number(file.DecodedSize) + "]";
    }
    text += "\n";
  });
  return text;
}

}  // namespace mimora::testing

#endif  // MIMORA_TESTS_MIME_TREE_TEXT_H_
