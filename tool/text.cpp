// Copyright (c) 2026 the mimora developers.
#include <memory>

#include "tool/body_stream.h"
#include "tool/commands.h"
#include "tool/html.h"
#include "tool/message.h"
#include "tool/text_output.h"
#include "tool/texts.h"

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

// A letter that is only there as HTML.
void PrintHtmlLetter(const Message& message, Titles& titles, Output& out) {
  M_Bodypart* letter = FindHtmlLetter(message.Root());
  if (letter == nullptr) throw MessageError("there is no text letter");
  std::string html;
  CheckResult(StreamBody(
      [letter](S_OutStream* stream) {
        return M_SaveBodypartBody(letter, nullptr, nullptr, nullptr, stream);
      },
      [&html](std::string_view piece) { html += piece; }));
  const auto charset = CopiedText(
      [letter](char* buffer, uint32_t* size) { return M_GetCharset(letter, buffer, size); });
  const std::string text = RenderHtml(html, charset.value_or(""), out.Charset().Name());
  titles.Print(message.Path());
  LinesWriter writer(out);
  writer.Write(text);
  writer.Finish(true);
}

void PrintLetter(const Message& message, Titles& titles, Output& out) {
  M_Bodypart* letter = M_FindTextLetterBodypart(message.Root());
  if (letter == nullptr) return PrintHtmlLetter(message, titles, out);
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
      "letter that is only there as HTML is shown as the text that a reader would see.");
  command->callback([files, &out, &status] { status = PrintLetters(*files, out); });
}

}  // namespace mimora::tool
