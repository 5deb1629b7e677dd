// Copyright (c) 2026 the mimora developers.
#ifndef MIMORA_TOOL_TARGET_H_
#define MIMORA_TOOL_TARGET_H_

#include <CLI/CLI.hpp>
#include <functional>
#include <string>

#include "tool/body_stream.h"
#include "tool/output.h"

namespace mimora::tool {

// Where a command writes what it makes: a new file, or the standard output when the name is empty
// or "-". On a terminal bytes that could steer it show as \xNN. WRITE is called once; when it
// throws no file is left. Throws MessageError.
void WriteTarget(const std::string& name, Output& out,
                 const std::function<void(const TakeBytes&)>& write);

// The option --output.
void AddTarget(CLI::App& command, std::string& name);

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_TARGET_H_
