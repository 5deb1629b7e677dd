// Copyright (c) 2026 the mimora developers.
#include <limits>
#include <memory>

#include "tool/body_stream.h"
#include "tool/commands.h"
#include "tool/message.h"
#include "tool/target.h"
#include "tool/texts.h"
#include "tool/tree.h"

namespace mimora::tool {
namespace {

constexpr const char* kFooter =
    "Examples:\n"
    "  mimora save --part 2 -o invoice.pdf letter.eml\n"
    "  mimora save --part 2 --embedded 1 letter.eml >budget.xls\n"
    "  mimora save --part 1 --charset utf-8 letter.eml | less\n"
    "\n"
    "Of a part that holds other parts the bytes are written as they stand. On a terminal bytes\n"
    "that could steer it show as \\xNN.";

struct Arguments {
  std::string file, part, charset, target;
  int32_t embedded = 0;  // 0: the body
  bool raw = false;
};

void WriteBody(const Message& message, const Arguments& arguments, const TakeBytes& take) {
  const PartNode root = ReadTree(message.Root(), kUtf8);
  const PartNode& node = SelectPart(root, arguments.part);
  // What holds other parts has no encoding of its own, whatever its header says.
  const bool as_it_stands = arguments.embedded == 0 && (arguments.raw || !node.children.empty());
  if (as_it_stands) return StreamBytes(message.Bytes(node.body_offset, node.body_size), take);
  CheckResult(StreamBody(
      [&](S_OutStream* stream) {
        if (arguments.embedded != 0)
          return M_SaveAttachment(arguments.embedded, node.part, nullptr, stream);
        return M_SaveBodypartBody(node.part, nullptr, arguments.charset.c_str(), nullptr, stream);
      },
      take));
}

int Save(const Arguments& arguments, Output& out) {
  return ForEachMessage(
      {arguments.file}, out,
      [&](const Message& message) {
        WriteTarget(arguments.target, out,
                    [&](const TakeBytes& take) { WriteBody(message, arguments, take); });
      },
      kReportOnly);
}

}  // namespace

void AddSaveCommand(CLI::App& app, Output& out, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("save", "Write the body of one part, decoded");
  command->add_option("FILE", arguments->file, "Message file; - is the standard input")
      ->required()
      ->type_name("");
  AddPart(*command, arguments->part)->required();
  CLI::Option* embedded =
      command->add_option("--embedded", arguments->embedded, "The N-th file inside the body")
          ->type_name("N")
          ->check(CLI::Range(1, std::numeric_limits<int32_t>::max()).description(""));
  CLI::Option* charset =
      command->add_option("--charset", arguments->charset, "Translate a text to this character set")
          ->type_name("NAME")
          ->excludes(embedded);
  command->add_flag("--raw", arguments->raw, "The bytes as they stand in the message")
      ->excludes(embedded)
      ->excludes(charset);
  AddTarget(*command, arguments->target);
  command->footer(kFooter);
  command->callback([arguments, &out, &status] { status = Save(*arguments, out); });
}

}  // namespace mimora::tool
