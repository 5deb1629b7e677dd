// Copyright (c) 2026 the mimora developers.
#include <memory>

#include "tool/commands.h"
#include "tool/message.h"
#include "tool/progress.h"
#include "tool/source.h"
#include "tool/text_output.h"
#include "tool/texts.h"
#include "tool/tree.h"

namespace mimora::tool {
namespace {

struct Arguments {
  std::vector<std::string> files;
  std::string directory, charset;
};

void AddWork(const PartNode& node, Work& work) {
  if (node.children.empty()) {
    ++work.files;
    work.bytes += node.decoded_size.value_or(0);
  }
  for (const EmbeddedFile& file : node.embedded) {
    ++work.files;
    work.bytes += file.size;
  }
  for (const PartNode& child : node.children) AddWork(child, work);
}

Work FindWork(const std::string& file) {
  Work work;
  AddWork(ReadTree(OpenMessage(file)->Root(), kUtf8), work);
  return work;
}

class Extractor {
 public:
  Extractor(const Arguments& arguments, Output& out)
      : arguments_(arguments), out_(out), progress_(arguments.files.size()) {}

  int Run() {
    return ForEachPath(
        arguments_.files, out_, [this](const std::string& path) { Extract(path); }, kReportOnly);
  }

 private:
  void Extract(const std::string& path) {
    progress_.BeginMessage();
    const NamedFile file = TellAsMessageError([&] { return NamedFile(path); });
    if (progress_.IsWanted()) progress_.SetWork(FindWork(file.Name()));
    const int32_t result =
        M_DecodeEML(file.Name().c_str(), arguments_.directory.c_str(), arguments_.charset.c_str(),
                    &Tell, reinterpret_cast<S_Context>(this), 0, nullptr);
    progress_.Clear();
    CheckResult(result);
  }

  static void Tell(S_Context context, M_Bodypart*, int32_t, const char* path, int64_t size) {
    reinterpret_cast<Extractor*>(context)->Print(path, size);
  }

  void Print(std::string_view path, int64_t size) {
    progress_.Clear();
    // The library leaves nothing in a name that could steer a program; its bytes are those of the
    // file, whatever the locale.
    const std::string name = out_.IsTerminal() ? OneLine(path, out_.Charset()) : std::string(path);
    out_.Write(name + ", " + Bytes(size) + "\n");
    if (out_.IsTerminal()) out_.Flush();
    progress_.AddFile(size);
  }

  const Arguments& arguments_;
  Output& out_;
  Progress progress_;
};

}  // namespace

void AddExtractCommand(CLI::App& app, Output& out, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command =
      app.add_subcommand("extract", "Write all bodies of messages, decoded, into a directory");
  AddFiles(*command, arguments->files);
  command->add_option("-o,--output", arguments->directory, "The directory, which must exist")
      ->required()
      ->type_name("DIR")
      ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
  command->add_option("--charset", arguments->charset, "Translate texts to this character set")
      ->type_name("NAME");
  command->footer(
      "Examples:\n"
      "  mimora extract -o files letter.eml\n"
      "  mimora extract -o files --charset utf-8 *.eml\n"
      "  fetch-mail | mimora extract -o files -\n"
      "\n"
      "The files have the names that the sender gave, made safe, or are called part-1.2 after "
      "their\n"
      "parts. No file that exists is touched: \"a.txt\" becomes \"a (2).txt\". What is written is\n"
      "readable by you only and listed on the standard output.");
  command->callback([arguments, &out, &status] { status = Extractor(*arguments, out).Run(); });
}

}  // namespace mimora::tool
