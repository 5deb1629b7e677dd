// Copyright (c) 2026 the mimora developers.
#include <ctime>
#include <memory>
#include <span>

#include "tool/commands.h"
#include "tool/json_output.h"
#include "tool/message.h"
#include "tool/text_output.h"
#include "tool/texts.h"

namespace mimora::tool {
namespace {

constexpr const char* kUses[] = {"sign", "encrypt"};

struct Arguments {
  std::string store, name, use;
  bool json = false;

  const char* Store() const { return store.empty() ? nullptr : store.c_str(); }
  uint32_t Purpose() const {
    if (use.empty()) return MIMORA_PURPOSE_ANY;
    return use == kUses[0] ? MIMORA_PURPOSE_SIGN : MIMORA_PURPOSE_ENCRYPT;
  }
};

class Certificates {
 public:
  // Throws MessageError.
  explicit Certificates(const Arguments& arguments) {
    CheckResult(P_GetCertificatesList(arguments.Store(), arguments.Purpose(), &list_, &count_));
  }
  ~Certificates() { P_FreeCertificatesList(list_, count_); }
  Certificates(const Certificates&) = delete;
  Certificates& operator=(const Certificates&) = delete;

  std::span<const P_Certificate> All() const { return {list_, count_}; }

 private:
  P_Certificate* list_ = nullptr;
  uint32_t count_ = 0;
};

std::string Date(int64_t time) {
  const auto seconds = static_cast<std::time_t>(time);
  std::tm utc{};
  char text[32] = "";
  if (gmtime_r(&seconds, &utc) != nullptr) std::strftime(text, sizeof text, "%Y-%m-%d", &utc);
  return text;
}

std::vector<std::string> Uses(const P_Certificate& certificate) {
  std::vector<std::string> uses;
  const auto add = [&](uint32_t flag, const char* use) {
    if ((certificate.flags & flag) != 0) uses.emplace_back(use);
  };
  add(MIMORA_CERTIFICATE_SIGN, "sign");
  add(MIMORA_CERTIFICATE_ENCRYPT, "encrypt");
  add(MIMORA_CERTIFICATE_KEY, "key");
  add(MIMORA_CERTIFICATE_OUTSIDE_TIME, "not-now");
  return uses;
}

std::string Joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ",") + word;
  return text.empty() ? "-" : text;
}

void PrintTable(const Certificates& certificates, Output& out) {
  using enum Table::Align;
  constexpr std::size_t kShownId = 16;
  Table table({kLeft, kLeft, kLeft, kLeft});
  table.AddRow({"ID", "UNTIL", "USE", "OWNER"});
  for (const P_Certificate& certificate : certificates.All()) {
    const char* const owner = *certificate.email != '\0' ? certificate.email : certificate.subject;
    table.AddRow({std::string(certificate.id, kShownId), Date(certificate.notAfter),
                  Joined(Uses(certificate)), OneLine(owner, out.Charset())});
  }
  table.Print(out);
}

void PrintJson(const Certificates& certificates, Output& out) {
  JsonArray array(out);
  for (const P_Certificate& certificate : certificates.All())
    array.Add({{"id", certificate.id},
               {"subject", certificate.subject},
               {"issuer", certificate.issuer},
               {"email", certificate.email},
               {"not_before", certificate.notBefore},
               {"not_after", certificate.notAfter},
               {"use", Uses(certificate)}});
  array.Close();
}

void PrintDescription(const Arguments& arguments, Output& out) {
  const auto text = CopiedText([&](char* buffer, uint32_t* size) {
    return P_SMimeGetCertInfo(arguments.Store(), arguments.name.c_str(), buffer, size);
  });
  if (!text) throw MessageError("there is no such certificate in the store");
  out.Write(Lines(*text, out));
}

int Run(const Arguments& arguments, Output& out) {
  try {
    if (!arguments.name.empty()) {
      PrintDescription(arguments, out);
    } else if (arguments.json) {
      PrintJson(Certificates(arguments), out);
    } else {
      PrintTable(Certificates(arguments), out);
    }
    return 0;
  } catch (const MessageError& error) {
    out.ReportError(arguments.name.empty() ? arguments.store : arguments.name, error.what());
    return 1;
  }
}

}  // namespace

void AddCertsCommand(CLI::App& app, Output& out, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command =
      app.add_subcommand("certs", "List the certificates that sign and encrypt use");
  CLI::Option* name =
      command
          ->add_option("NAME", arguments->name,
                       "Tell all about this one: an e-mail address, or the beginning of an id")
          ->type_name("");
  AddStore(*command, arguments->store);
  command->add_option("--for", arguments->use, "List those that can: sign, or encrypt")
      ->type_name("USE")
      ->excludes(name)
      ->check(CLI::IsMember(std::vector<std::string>(std::begin(kUses), std::end(kUses)))
                  .description(""));
  command->add_flag("--json", arguments->json, "Write a JSON array with one object per certificate")
      ->excludes(name);
  command->footer(
      "Examples:\n"
      "  mimora certs --for sign\n"
      "  mimora certs --store /srv/certs you@example.org\n"
      "\n"
      "USE: sign, encrypt: what it is made for; key: its private key is there; not-now: its time\n"
      "has not come or is over. What only a password opens is not listed.");
  command->callback([arguments, &out, &status] { status = Run(*arguments, out); });
}

}  // namespace mimora::tool
