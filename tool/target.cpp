// Copyright (c) 2026 the mimora developers.
#include "tool/target.h"

#include "tool/message.h"
#include "tool/new_file.h"
#include "tool/text_output.h"

namespace mimora::tool {

void WriteTarget(const std::string& name, Output& out,
                 const std::function<void(const TakeBytes&)>& write) {
  if (!name.empty() && name != "-") {
    TellAsMessageError([&] {
      NewFile file(name);
      write([&file](std::string_view bytes) { file.Write(bytes); });
      file.Keep();
    });
  } else if (!out.IsTerminal()) {
    write([&out](std::string_view bytes) { out.Write(bytes); });
  } else {
    LinesWriter writer(out);
    write([&writer](std::string_view bytes) { writer.Write(bytes); });
    writer.Finish(true);
  }
}

void AddTarget(CLI::App& command, std::string& name) {
  command
      .add_option("-o,--output", name,
                  "File to write, readable by you only; one that exists is left alone")
      ->type_name("FILE");
}

}  // namespace mimora::tool
