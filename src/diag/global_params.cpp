// Copyright (c) 2026 the mimora developers.
#include "diag/global_params.h"

#include <string_view>

#include "platform/ascii.h"

namespace mimora {
void GlobalParams::Set(const char* list) {
  if (list == nullptr) return;
  for (std::string_view text = list; !text.empty(); text = text.data() + text.size() + 1) {
    const size_t equals = text.find('=');
    if (equals == std::string_view::npos) continue;
    const std::string key = UpperCase(text.substr(0, equals));
    const std::string_view value = text.substr(equals + 1);
    if (key == "NAMEPREFIXFORATTACHMENT") {
      attachment_prefix = value;
    } else if (key == "NAMEPREFIXFORMESSAGE") {
      message_prefix = value;
    }
  }
}

GlobalParams& TheGlobalParams() {
  static GlobalParams params;
  return params;
}

}  // namespace mimora
