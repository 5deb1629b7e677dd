// Copyright (c) 2026 the mimora developers.
#include <mimora/mimora.h>

#include <exception>
#include <new>
#include <sstream>

#include "tool/commands.h"
#include "tool/output.h"

namespace mimora::tool {
namespace {

constexpr int kWrongUsage = 2;

std::string Version() {
  std::ostringstream text;
  text << "mimora " << MIMORA_VERSION_MAJOR << '.' << MIMORA_VERSION_MINOR << '.'
       << MIMORA_VERSION_PATCH;
  return text.str();
}

int Run(int argc, const char* const* argv, Output& out) {
  int status = 0;
  CLI::App app("Takes Internet messages apart.", "mimora");
  app.set_version_flag("--version", Version());
  app.require_subcommand(1);
  AddShowCommand(app, out, status);
  AddHeadersCommand(app, out, status);
  AddTextCommand(app, out, status);
  AddAttachmentsCommand(app, out, status);
  AddExtractCommand(app, out, status);
  AddSaveCommand(app, out, status);
  AddHtml2TextCommand(app, out, status);
  AddSignCommand(app, out, status);
  AddEncryptCommand(app, out, status);
  AddCertsCommand(app, out, status);
  // Set last: commands take over the footer that stands when they are added.
  app.footer(
      "Examples:\n"
      "  mimora show letter.eml                    the parts, their sizes and places\n"
      "  mimora headers --decode letter.eml        the header, readable\n"
      "  mimora text letter.eml                    the text that somebody wrote\n"
      "  mimora attachments --json *.eml           what is attached, for programs\n"
      "  mimora extract -o files letter.eml        everything in it, as files\n"
      "  mimora save --part 2 -o a.pdf letter.eml  one part\n"
      "  mimora html2text page.html                the visible text of a page\n"
      "  mimora sign --signer me@a.org letter.eml  the letter with a signature\n"
      "  fetch-mail | mimora show -                a message from the standard input\n"
      "\n"
      "Exit status: 0; 1 a message could not be read as asked; 2 wrong usage.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    std::ostringstream help;
    std::ostringstream complaint;
    const bool asked_for_help = app.exit(error, help, complaint) == 0;
    out.Write(help.str());
    if (asked_for_help) return 0;
    out.ReportError("", error.what());
    out.ReportError("", "run it with --help for more information");
    return kWrongUsage;
  }
  return status;
}

// Failures that belong to no single message.
int RunGuarded(int argc, const char* const* argv, Output& out) {
  try {
    return Run(argc, argv, out);
  } catch (const OutputError&) {
    throw;
  } catch (const std::bad_alloc&) {
    out.ReportError("", "out of memory");
  } catch (const std::exception& error) {
    out.ReportError("", error.what());
  }
  return 1;
}

}  // namespace
}  // namespace mimora::tool

int main(int argc, char** argv) {
  using mimora::tool::Output;
  Output out;
  try {
    const int status = mimora::tool::RunGuarded(argc, argv, out);
    out.Flush();
    return status;
  } catch (const mimora::tool::OutputError& error) {
    out.ReportError("standard output", error.what());
    return 1;
  }
}
