// Copyright (c) 2026 the mimora developers.
//
// The commands of the tool. Each adds its arguments to APP; when it is called it writes to OUT
// and sets STATUS, the exit status.
#ifndef MIMORA_TOOL_COMMANDS_H_
#define MIMORA_TOOL_COMMANDS_H_

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "tool/output.h"

namespace mimora::tool {

void AddShowCommand(CLI::App& app, Output& out, int& status);
void AddHeadersCommand(CLI::App& app, Output& out, int& status);
void AddTextCommand(CLI::App& app, Output& out, int& status);
void AddAttachmentsCommand(CLI::App& app, Output& out, int& status);
void AddExtractCommand(CLI::App& app, Output& out, int& status);
void AddSaveCommand(CLI::App& app, Output& out, int& status);
void AddHtml2TextCommand(CLI::App& app, Output& out, int& status);
void AddSignCommand(CLI::App& app, Output& out, int& status);
void AddEncryptCommand(CLI::App& app, Output& out, int& status);
void AddCertsCommand(CLI::App& app, Output& out, int& status);

// The message files that most commands take.
void AddFiles(CLI::App& command, std::vector<std::string>& files);

// The option --part.
CLI::Option* AddPart(CLI::App& command, std::string& number);

// The option --store.
void AddStore(CLI::App& command, std::string& directory);

}  // namespace mimora::tool

#endif  // MIMORA_TOOL_COMMANDS_H_
