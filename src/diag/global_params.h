// Copyright (c) 2026 the mimora developers.
//
// Library-wide parameters. A host sets them before it uses the library from several threads.
#ifndef MIMORA_DIAG_GLOBAL_PARAMS_H_
#define MIMORA_DIAG_GLOBAL_PARAMS_H_

#include <string>

namespace mimora {

struct GlobalParams {
  std::string attachment_prefix = "att";
  std::string message_prefix = "message";

  // Takes KEY=VALUE texts, each ended by a zero, up to an empty one.
  void Set(const char* list);
};

GlobalParams& TheGlobalParams();

}  // namespace mimora

#endif  // MIMORA_DIAG_GLOBAL_PARAMS_H_
