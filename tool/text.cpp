// Copyright (c) 2026 the mimora developers.
#include <memory>

#include "tool/body_stream.h"
#include "tool/commands.h"
#include "tool/message.h"
#include "tool/text_output.h"

namespace mimora::tool {
namespace {

// Uuencoded files are no part of what somebody wrote. CHARSET may be null.
int32_t WriteLetter(M_Bodypart* letter, const char* charset, LinesWriter& writer) {
  return StreamBody(
      [=](S_OutStream* stream) {
        return M_SaveBodypartBodyEx(letter, nullptr, charset, nullptr, stream, 0);
      },
      [&](std::string_view piece) { writer.Write(piece); });
}

void PrintLetter(const Message& message, Titles& titles, Output& out) {
  M_Bodypart* letter = M_FindTextLetterBodypart(message.Root());
  if (letter == nullptr) throw MessageError("there is no text letter");
  titles.Print(message.Path());
  LinesWriter writer(out);
  int32_t result = WriteLetter(letter, out.Charset().Name(), writer);
  if (result == MIMORA_E_CHARSET) {
    out.ReportError(message.Path(),
                    "warning: its character set is not known, the text stays as it is");
    result = WriteLetter(letter, nullptr, writer);
  }
  writer.Finish(titles.AreWanted() || out.IsTerminal());
  CheckResult(result);
}

int PrintLetters(const std::vector<std::string>& files, Output& out) {
  Titles titles(files.size(), out);
  return ForEachMessage(
      files, out, [&](const Message& message) { PrintLetter(message, titles, out); }, kReportOnly);
}

}  // namespace

void AddTextCommand(CLI::App& app, Output& out, int& status) {
  const auto files = std::make_shared<std::vector<std::string>>();
  CLI::App* command = app.add_subcommand("text", "Print the text that somebody wrote");
  AddFiles(*command, *files);
  command->footer(
      "Examples:\n"
      "  mimora text letter.eml\n"
      "  mimora text letter.eml | wc -w\n"
      "\n"
      "The text comes in the character set of your locale, in UTF-8 if that is none but ASCII. A\n"
      "message that has only HTML, or no text, is an error.");
  command->callback([files, &out, &status] { status = PrintLetters(*files, out); });
}

}  // namespace mimora::tool
