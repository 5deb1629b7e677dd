// Copyright (c) 2026 the mimora developers.
#include <memory>
#include <utility>

#include "tool/commands.h"
#include "tool/json_output.h"
#include "tool/message.h"
#include "tool/text_output.h"
#include "tool/tree.h"

namespace mimora::tool {
namespace {

struct Arguments {
  std::vector<std::string> files;
  std::string part;
  bool json = false;
};

// Usage that no message can satisfy is told apart from a part that a message does not have.
std::string CheckPartNumber(const std::string& number) {
  std::string_view rest = number;
  if (rest.ends_with(".TEXT")) rest.remove_suffix(5);
  bool digit_before = false;
  for (const char letter : rest) {
    const bool digit = letter >= '0' && letter <= '9';
    if (!digit && (letter != '.' || !digit_before)) return "not a part number like 1.2: " + number;
    digit_before = digit;
  }
  return digit_before ? "" : "not a part number like 1.2: " + number;
}

M_Bodypart* SelectPart(const Message& message, const std::string& number) {
  if (number.empty()) return message.Root();
  const PartNode root = ReadTree(message.Root());
  const PartNode* node = FindPart(root, number);
  if (node == nullptr) throw MessageError("there is no part " + number);
  return node->part;
}

template <typename Visit>
void ForEachField(M_Bodypart* part, Visit visit) {
  const int32_t count = M_HeaderFieldsCount(part);
  for (int32_t i = 0; i < count; ++i) {
    const char* name = nullptr;
    const char* value = nullptr;
    if (M_BodypartHeaderField(part, i, &name, &value) == 0)
      visit(std::string_view(name), std::string_view(value));
  }
}

// Programs get the bytes as they are, line ends apart; a terminal must not be steered by them.
std::string FieldText(std::string_view text, const Output& out) {
  if (out.IsTerminal()) return ManyLines(text, out.IsUtf8());
  std::string raw(text);
  for (std::size_t at = 0; (at = raw.find("\r\n", at)) != std::string::npos;) raw.erase(at, 1);
  return raw;
}

void PrintFields(M_Bodypart* part, Output& out) {
  ForEachField(part, [&out](std::string_view name, std::string_view value) {
    out.Write(FieldText(name, out) + ":");
    // A value that is empty, or begins on the next line, had no space in front of it.
    if (!value.empty() && value.front() != '\r') out.Write(" ");
    out.Write(FieldText(value, out) + "\n");
  });
}

int HeadersAsText(const Arguments& arguments, Output& out) {
  const bool titles = arguments.files.size() > 1;
  const char* gap = "";
  return ForEachMessage(
      arguments.files, out,
      [&](const Message& message) {
        M_Bodypart* part = SelectPart(message, arguments.part);
        if (titles) {
          out.Write(std::exchange(gap, "\n"));
          out.Write("==> " + OneLine(message.Path(), out.IsUtf8()) + " <==\n");
        }
        PrintFields(part, out);
      },
      [](const std::string&, const MessageError&) {});
}

int HeadersAsJson(const Arguments& arguments, Output& out) {
  JsonArray array(out);
  const int status = ForEachMessage(
      arguments.files, out,
      [&](const Message& message) {
        Json fields = Json::array();
        ForEachField(SelectPart(message, arguments.part),
                     [&fields](std::string_view name, std::string_view value) {
                       fields.push_back({{"name", name}, {"value", value}});
                     });
        array.Add(fields);
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
  command->add_option("--part", arguments->part, "The part to take, as numbered by show")
      ->type_name("NUMBER")
      ->check(CheckPartNumber);
  command->add_flag("--json", arguments->json, "Write a JSON array with one array per file");
  command->footer(
      "Examples:\n"
      "  mimora headers letter.eml\n"
      "  mimora headers --part 2.1 letter.eml");
  command->callback([arguments, &out, &status] {
    status = arguments->json ? HeadersAsJson(*arguments, out) : HeadersAsText(*arguments, out);
  });
}

}  // namespace mimora::tool
