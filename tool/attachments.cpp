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
  bool json = false;
};

struct Attachment {
  std::string part;
  int32_t number = 0;  // 0: the part itself, else the file embedded in it
  std::optional<std::string> name, type;
  int64_t size = 0;
};

// What a reader does not see as text: named and attached parts, all that is no text, and the files
// inside bodies. The texts that a message shows are none, even if they have names.
class AttachmentFinder {
 public:
  std::vector<Attachment> Find(const PartNode& root) {
    VisitMessage(root);
    return std::move(found_);
  }

 private:
  void VisitMessage(const PartNode& message) {
    Visit(message, M_FindTextLetterBodypart(message.part), true);
  }

  // SHOWN: a text at this place is what the message shows, or another version of it.
  void Visit(const PartNode& node, const M_Bodypart* letter, bool shown) {
    if (node.part != letter && IsAttachment(node, shown)) Add(node, 0, node.name, node.type);
    for (std::size_t i = 0; i < node.embedded.size(); ++i) {
      const auto number = static_cast<int32_t>(i + 1);
      Add(node, number, node.embedded[i].name, AttachmentType(node.part, number));
    }
    const bool multipart = node.type.starts_with("multipart/");
    const bool alternative = node.type == "multipart/alternative";
    const bool related = node.type == "multipart/related";
    for (std::size_t i = 0; i < node.children.size(); ++i) {
      if (multipart)
        Visit(node.children[i], letter, alternative || (related && i == 0));
      else
        VisitMessage(node.children[i]);
    }
  }

  static bool IsAttachment(const PartNode& node, bool shown) {
    const bool multipart = node.type.starts_with("multipart/");
    if (multipart && !node.children.empty()) return false;
    if (node.disposition && LowerCase(*node.disposition) == "attachment") return true;
    if (node.type.starts_with("text/")) return node.name && !shown;
    return node.name || !multipart;
  }

  void Add(const PartNode& node, int32_t number, const std::optional<std::string>& name,
           const std::optional<std::string>& type) {
    const int64_t size = number == 0 ? node.decoded_size.value_or(node.body_size)
                                     : node.embedded[static_cast<std::size_t>(number - 1)].size;
    // The message itself is only listed when it is a single part.
    found_.push_back({node.number.empty() ? "1" : node.number, number, name, type, size});
  }

  std::vector<Attachment> found_;
};

void PrintAttachments(const Message& message, Output& out) {
  using enum Table::Align;
  const LocaleCharset& charset = out.Charset();
  const auto text = [&charset](const std::optional<std::string>& value) {
    return value ? OneLine(*value, charset) : "-";
  };
  Table table({kLeft, kLeft, kRight, kLeft});
  table.AddRow({"NUMBER", "TYPE", "SIZE", "NAME"});
  const PartNode root = ReadTree(message.Root(), charset.Name());
  for (const Attachment& attachment : AttachmentFinder().Find(root)) {
    const std::string file = attachment.number == 0 ? "" : "/" + std::to_string(attachment.number);
    table.AddRow({attachment.part + file, text(attachment.type), Grouped(attachment.size),
                  text(attachment.name)});
  }
  table.Print(out);
}

Json ToJson(const Message& message) {
  Json list = Json::array();
  const PartNode root = ReadTree(message.Root(), kUtf8);
  for (const Attachment& attachment : AttachmentFinder().Find(root))
    list.push_back({{"part", attachment.part},
                    {"number", attachment.number},
                    {"name", OrNull(attachment.name)},
                    {"type", OrNull(attachment.type)},
                    {"size", attachment.size}});
  return {{"file", message.Path()}, {"attachments", std::move(list)}};
}

int AttachmentsAsText(const Arguments& arguments, Output& out) {
  Titles titles(arguments.files.size(), out);
  return ForEachMessage(
      arguments.files, out,
      [&](const Message& message) {
        titles.Print(message.Path());
        PrintAttachments(message, out);
      },
      kReportOnly);
}

int AttachmentsAsJson(const Arguments& arguments, Output& out) {
  JsonArray array(out);
  const int status = ForEachMessage(
      arguments.files, out, [&](const Message& message) { array.Add(ToJson(message)); },
      [&](const std::string& path, const MessageError& error) {
        array.Add({{"file", path}, {"attachments", nullptr}, {"error", error.what()}});
      });
  array.Close();
  return status;
}

}  // namespace

void AddAttachmentsCommand(CLI::App& app, Output& out, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("attachments", "List the attachments of messages");
  AddFiles(*command, arguments->files);
  command->add_flag("--json", arguments->json, "Write a JSON array with one object per file");
  command->footer(
      "Examples:\n"
      "  mimora attachments letter.eml\n"
      "  mimora attachments --json *.eml\n"
      "\n"
      "NUMBER is that of the part, as show has it; 2/1 is the first file inside the body of part "
      "2.\n"
      "Listed are named and attached parts, all parts that are no text, and the files inside\n"
      "bodies, but not the texts that the message itself shows.");
  command->callback([arguments, &out, &status] {
    status =
        arguments->json ? AttachmentsAsJson(*arguments, out) : AttachmentsAsText(*arguments, out);
  });
}

}  // namespace mimora::tool
