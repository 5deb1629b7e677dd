// Copyright (c) 2026 the mimora developers.
#include <memory>

#include "tool/commands.h"
#include "tool/html.h"
#include "tool/message.h"
#include "tool/source.h"
#include "tool/text_output.h"

namespace mimora::tool {
namespace {

struct Arguments {
  std::vector<std::string> files;
  std::string charset;
};

void PrintDocument(const std::string& path, const std::string& charset, Titles& titles,
                   Output& out) {
  const Source source(path);
  const std::string text = RenderHtml(source.Bytes(), charset, out.Charset().Name());
  titles.Print(path);
  LinesWriter writer(out);
  writer.Write(text);
  writer.Finish(true);
}

int PrintDocuments(const Arguments& arguments, Output& out) {
  Titles titles(arguments.files.size(), out);
  return ForEachPath(
      arguments.files, out,
      [&](const std::string& path) {
        TellAsMessageError([&] { PrintDocument(path, arguments.charset, titles, out); });
      },
      kReportOnly);
}

}  // namespace

void AddHtml2TextCommand(CLI::App& app, Output& out, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("html2text", "Print the visible text of HTML files");
  command->add_option("FILE", arguments->files, "HTML files; - is the standard input")
      ->required()
      ->type_name("");
  command->add_option("--charset", arguments->charset, "The character set that the files are in")
      ->type_name("NAME");
  command->footer(
      "Examples:\n"
      "  mimora html2text page.html\n"
      "  mimora save --part 2 letter.eml | mimora html2text --charset iso-8859-2 -\n"
      "\n"
      "Without --charset the byte-order mark or the META element of a file tells its character\n"
      "set. The text comes in that of your locale.");
  command->callback([arguments, &out, &status] { status = PrintDocuments(*arguments, out); });
}

}  // namespace mimora::tool
