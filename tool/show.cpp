// Copyright (c) 2026 the mimora developers.
#include <memory>
#include <utility>

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
  bool json = false;
};

// The pieces that tree lines are drawn with.
struct Branches {
  const char* fork;
  const char* last;
  const char* rail;
  const char* gap;
};
constexpr Branches kUtf8Branches = {"├─ ", "└─ ", "│  ", "   "};
constexpr Branches kAsciiBranches = {"|- ", "`- ", "|  ", "   "};

class TreePrinter {
 public:
  explicit TreePrinter(const LocaleCharset& charset)
      : charset_(charset), branches_(charset.IsUtf8() ? kUtf8Branches : kAsciiBranches) {
    table_.AddRow(
        {"PART", "TYPE", "ENCODING", "CHARSET", "DECODED", "RAW", "HEADER AT", "BODY AT", "NAME"});
  }

  // LEAD stands in front of the part's own line, BELOW in front of the lines under it.
  void Add(const PartNode& node, const std::string& lead = "", const std::string& below = "") {
    const auto text = [this](const std::optional<std::string>& value, const char* missing) {
      return value ? OneLine(*value, charset_) : missing;
    };
    table_.AddRow({lead + (node.number.empty() ? "message" : node.number),
                   OneLine(node.type, charset_), text(node.encoding, "-"), text(node.charset, "-"),
                   node.decoded_size ? Grouped(*node.decoded_size) : "-", Grouped(node.body_size),
                   std::to_string(node.header_offset),
                   std::to_string(node.body_offset) + "+" + std::to_string(node.body_size),
                   text(node.name, "")});
    AddBelow(node, below);
  }

  void Print(Output& out) const { table_.Print(out); }

 private:
  void AddBelow(const PartNode& node, const std::string& below) {
    std::size_t left = node.embedded.size() + node.children.size();
    for (std::size_t i = 0; i < node.embedded.size(); ++i) {
      const EmbeddedFile& file = node.embedded[i];
      std::string line = below + (--left == 0 ? branches_.last : branches_.fork);
      line += "embedded file " + std::to_string(i + 1) + ", " + Bytes(file.size);
      if (file.name) line += ", " + OneLine(*file.name, charset_);
      table_.AddLine(std::move(line));
    }
    for (const PartNode& child : node.children) {
      const bool last = --left == 0;
      Add(child, below + (last ? branches_.last : branches_.fork),
          below + (last ? branches_.gap : branches_.rail));
    }
  }

  using enum Table::Align;

  const LocaleCharset& charset_;
  const Branches& branches_;
  Table table_{{kLeft, kLeft, kLeft, kLeft, kRight, kRight, kRight, kLeft, kLeft}};
};

void PrintMessage(const Message& message, Output& out) {
  const LocaleCharset& charset = out.Charset();
  out.Write(OneLine(message.Path(), charset) + ", " + Bytes(message.Size()) + "\n");
  for (const char* field : {"From", "Subject", "Date"}) {
    const char* value = M_BodypartHeaderFieldValue(message.Root(), field);
    if (value == nullptr) continue;
    const std::string label = std::string(field) + ":";
    out.Write("  " + label + std::string(9 - label.size(), ' ') +
              OneLine(DecodedValue(value, charset.Name()), charset) + "\n");
  }
  if (!message.Damage().empty()) out.Write("  damaged: " + std::string(message.Damage()) + "\n");
  out.Write("\n");
  TreePrinter printer(charset);
  printer.Add(ReadTree(message.Root(), charset.Name()));
  printer.Print(out);
}

Json ToJson(const EmbeddedFile& file) { return {{"name", OrNull(file.name)}, {"size", file.size}}; }

Json ToJson(const PartNode& node) {
  Json children = Json::array();
  for (const PartNode& child : node.children) children.push_back(ToJson(child));
  Json embedded = Json::array();
  for (const EmbeddedFile& file : node.embedded) embedded.push_back(ToJson(file));
  return {{"part", node.number},
          {"type", node.type},
          {"name", OrNull(node.name)},
          {"encoding", OrNull(node.encoding)},
          {"charset", OrNull(node.charset)},
          {"disposition", OrNull(node.disposition)},
          {"header_offset", node.header_offset},
          {"header_size", node.body_offset - node.header_offset},
          {"body_offset", node.body_offset},
          {"body_size", node.body_size},
          {"decoded_size", OrNull(node.decoded_size)},
          {"embedded", std::move(embedded)},
          {"children", std::move(children)}};
}

int ShowAsText(const Arguments& arguments, Output& out) {
  const char* gap = "";
  return ForEachMessage(
      arguments.files, out,
      [&](const Message& message) {
        out.Write(std::exchange(gap, "\n"));
        PrintMessage(message, out);
      },
      kReportOnly);
}

int ShowAsJson(const Arguments& arguments, Output& out) {
  JsonArray array(out);
  const int status = ForEachMessage(
      arguments.files, out,
      [&](const Message& message) {
        array.Add({{"file", message.Path()},
                   {"size", message.Size()},
                   {"result", message.Result()},
                   {"message", ToJson(ReadTree(message.Root(), kUtf8))}});
      },
      [&](const std::string& path, const MessageError& error) {
        array.Add({{"file", path},
                   {"size", nullptr},
                   {"result", OrNull(error.Result())},
                   {"message", nullptr},
                   {"error", error.what()}});
      });
  array.Close();
  return status;
}

}  // namespace

void AddShowCommand(CLI::App& app, Output& out, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("show", "Show the parts of messages");
  AddFiles(*command, arguments->files);
  command->add_flag("--json", arguments->json, "Write a JSON array with one object per file");
  command->footer(
      "Examples:\n"
      "  mimora show letter.eml\n"
      "  mimora show --json *.eml\n"
      "\n"
      "HEADER AT is where a part begins, BODY AT the place and size of its body, both counted in\n"
      "bytes from the start of the file.");
  command->callback([arguments, &out, &status] {
    status = arguments->json ? ShowAsJson(*arguments, out) : ShowAsText(*arguments, out);
  });
}

}  // namespace mimora::tool
