// Copyright (c) 2026 the mimora developers.
#include <memory>

#include "tool/commands.h"
#include "tool/json_output.h"
#include "tool/message.h"
#include "tool/text_output.h"
#include "tool/texts.h"
#include "tool/tree.h"

namespace mimora::tool {
namespace {

struct Arguments {
  std::vector<std::string> files;
  std::string part;
  bool decode = false;
  bool json = false;
};

// NUMBER empty: the message itself.
M_Bodypart* FindPart(const Message& message, const std::string& number) {
  if (number.empty()) return message.Root();
  return SelectPart(ReadTree(message.Root(), kUtf8), number).part;
}

template <typename Visit>
void ForEachField(M_Bodypart* part, Visit visit) {
  const int32_t count = M_HeaderFieldsCount(part);
  for (int32_t i = 0; i < count; ++i) {
    const char* name = nullptr;
    const char* value = nullptr;
    if (M_BodypartHeaderField(part, i, &name, &value) == 0) visit(name, value);
  }
}

std::string DecodedText(const char* value, const Output& out) {
  const std::string text = DecodedValue(value, out.Charset().Name());
  return out.IsTerminal() ? OneLine(text, out.Charset()) : text;
}

void PrintFields(M_Bodypart* part, bool decode, Output& out) {
  ForEachField(part, [&](const char* name, const char* value) {
    const std::string text = decode ? DecodedText(value, out) : Lines(value, out);
    out.Write(Lines(name, out) + ":");
    // A value that is empty, or begins on the next line, had no space in front of it.
    if (!text.empty() && text.front() != '\n') out.Write(" ");
    out.Write(text + "\n");
  });
}

int HeadersAsText(const Arguments& arguments, Output& out) {
  Titles titles(arguments.files.size(), out);
  return ForEachMessage(
      arguments.files, out,
      [&](const Message& message) {
        M_Bodypart* part = FindPart(message, arguments.part);
        titles.Print(message.Path());
        PrintFields(part, arguments.decode, out);
      },
      kReportOnly);
}

Json FieldsAsJson(M_Bodypart* part, bool decode) {
  Json fields = Json::array();
  ForEachField(part, [&](const char* name, const char* value) {
    fields.push_back({{"name", name}, {"value", decode ? DecodedValue(value, kUtf8) : value}});
  });
  return fields;
}

int HeadersAsJson(const Arguments& arguments, Output& out) {
  JsonArray array(out);
  const int status = ForEachMessage(
      arguments.files, out,
      [&](const Message& message) {
        array.Add(FieldsAsJson(FindPart(message, arguments.part), arguments.decode));
      },
      // The arrays stand in the order of the files, so each file keeps its place.
      [&](const std::string&, const MessageError&) { array.Add(nullptr); });
  array.Close();
  return status;
}

}  // namespace

void AddHeadersCommand(CLI::App& app, Output& out, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("headers", "Print the header fields of messages");
  AddFiles(*command, arguments->files);
  AddPart(*command, arguments->part);
  command->add_flag("--decode", arguments->decode, "Undo folding and encoded words");
  command->add_flag("--json", arguments->json, "Write a JSON array with one array per file");
  command->footer(
      "Examples:\n"
      "  mimora headers letter.eml\n"
      "  mimora headers --decode --part 2.1 letter.eml");
  command->callback([arguments, &out, &status] {
    status = arguments->json ? HeadersAsJson(*arguments, out) : HeadersAsText(*arguments, out);
  });
}

}  // namespace mimora::tool
