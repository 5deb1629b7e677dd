// Copyright (c) 2026 the mimora developers.
//
// Messages signed and encrypted.
#include <memory>

#include "tool/commands.h"
#include "tool/message.h"
#include "tool/target.h"
#include "tool/texts.h"

namespace mimora::tool {
namespace {

struct Arguments {
  std::string file, store, target;
  std::string signer, password_file, hash;
  std::vector<std::string> recipients;
  std::string cipher;
  bool opaque = false, oaep = false;

  const char* Store() const { return store.empty() ? nullptr : store.c_str(); }
};

// A message as it is protected: what is said of its content goes with it, the rest stays outside.
struct Halves {
  std::string envelope;
  std::string entity;  // with an empty line and the body
};

std::string_view TakeLine(std::string_view& text) {
  const std::size_t stop = std::min(text.find_first_of("\r\n"), text.size() - 1);
  const std::size_t end = stop + (text.substr(stop).starts_with("\r\n") ? 2 : 1);
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(end);
  return line;
}

std::string_view WithoutLineEnd(std::string_view line) {
  while (line.ends_with('\n') || line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

Halves Split(std::string_view message) {
  Halves halves;
  bool of_content = false, of_mime = false;
  while (!message.empty()) {
    const std::string_view text = WithoutLineEnd(TakeLine(message));
    if (text.empty()) break;
    if (text.front() != ' ' && text.front() != '\t') {
      const std::string name = LowerCase(std::string(text.substr(0, text.find_first_of(": \t"))));
      of_content = name.starts_with("content-");
      of_mime = name == "mime-version";
    }
    if (!of_mime) (of_content ? halves.entity : halves.envelope).append(text).append("\r\n");
  }
  halves.envelope += "MIME-Version: 1.0\r\n";
  halves.entity.append("\r\n").append(message);
  return halves;
}

Halves ReadHalves(const std::string& path) {
  return TellAsMessageError([&path] {
    const Source source(path);
    if (source.Bytes().find('\0') != std::string_view::npos)
      throw MessageError("it has zeros in it: encode them first");
    return Split(source.Bytes());
  });
}

std::string ReadPassword(const std::string& path) {
  if (path.empty()) return {};
  try {
    return TellAsMessageError([&path] {
      const Source source(path);
      std::string_view text = source.Bytes();
      return text.empty() ? std::string() : std::string(WithoutLineEnd(TakeLine(text)));
    });
  } catch (const MessageError& error) {
    throw MessageError(path + ": " + error.what());
  }
}

// Writes the envelope in front of what PROTECT writes. When that fails nothing has been written.
int32_t WriteProtected(const Halves& halves, const TakeBytes& take,
                       const std::function<int32_t(S_OutStream*)>& protect) {
  bool started = false;
  return StreamBody(protect, [&](std::string_view bytes) {
    if (!started) take(halves.envelope);
    started = true;
    take(bytes);
  });
}

void SignMessage(const Arguments& arguments, const TakeBytes& take) {
  const Halves halves = ReadHalves(arguments.file);
  const std::string password = ReadPassword(arguments.password_file);
  CheckResult(WriteProtected(halves, take, [&](S_OutStream* stream) {
    return P_SignData(halves.entity.c_str(), arguments.Store(), arguments.signer.c_str(),
                      arguments.password_file.empty() ? nullptr : password.c_str(),
                      arguments.hash.c_str(), arguments.opaque ? 0 : 1, stream);
  }));
}

void EncryptMessage(const Arguments& arguments, const TakeBytes& take) {
  const Halves halves = ReadHalves(arguments.file);
  std::string names;
  for (const std::string& recipient : arguments.recipients) names += recipient + '\0';
  uint32_t failed = MIMORA_NO_RECIPIENT;
  const int32_t result = WriteProtected(halves, take, [&](S_OutStream* stream) {
    return P_EncryptData(halves.entity.c_str(), arguments.Store(), names.c_str(),
                         arguments.cipher.c_str(), 0, arguments.oaep ? MIMORA_ENCRYPT_OAEP : 0,
                         &failed, stream);
  });
  try {
    CheckResult(result);
  } catch (const MessageError& error) {
    if (failed >= arguments.recipients.size()) throw;
    throw MessageError(arguments.recipients[failed] + ": " + error.what(), result);
  }
}

using Protect = void (*)(const Arguments&, const TakeBytes&);

int Run(const Arguments& arguments, Output& out, Protect protect) {
  return ForEachPath(
      {arguments.file}, out,
      [&](const std::string&) {
        WriteTarget(arguments.target, out,
                    [&](const TakeBytes& take) { protect(arguments, take); });
      },
      kReportOnly);
}

void AddCommon(CLI::App& command, Arguments& arguments) {
  command.add_option("FILE", arguments.file, "Message file; - is the standard input")
      ->required()
      ->type_name("");
  AddStore(command, arguments.store);
  AddTarget(command, arguments.target);
}

std::string CheckRecipient(const std::string& name) {
  return name.empty() ? "a recipient needs a name" : "";
}

}  // namespace

void AddSignCommand(CLI::App& app, Output& out, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("sign", "Sign a message (S/MIME)");
  AddCommon(*command, *arguments);
  command
      ->add_option("--signer", arguments->signer,
                   "The certificate: an e-mail address, or an id as certs lists it")
      ->required()
      ->type_name("NAME");
  command
      ->add_option("--password-file", arguments->password_file,
                   "File whose first line opens the private key")
      ->type_name("FILE");
  command->add_option("--hash", arguments->hash, "SHA256 unless you say otherwise")
      ->type_name("NAME");
  command->add_flag("--opaque", arguments->opaque,
                    "Wrap the message into the signature; not everybody can read it then");
  command->footer(
      "Examples:\n"
      "  mimora sign --signer me@example.org letter.eml >signed.eml\n"
      "  mimora sign --signer me@example.org letter.eml | mimora encrypt --to you@example.org -\n"
      "\n"
      "Signed are the body and the Content- fields. The other fields stay outside.");
  command->callback([arguments, &out, &status] { status = Run(*arguments, out, SignMessage); });
}

void AddEncryptCommand(CLI::App& app, Output& out, int& status) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* command = app.add_subcommand("encrypt", "Encrypt a message (S/MIME)");
  AddCommon(*command, *arguments);
  command
      ->add_option("--to", arguments->recipients,
                   "A recipient's certificate: an e-mail address, or an id as certs lists it; "
                   "once for each")
      ->required()
      ->allow_extra_args(false)
      ->check(CheckRecipient)
      ->type_name("NAME");
  command->add_option("--cipher", arguments->cipher, "AES-256-CBC unless you say otherwise")
      ->type_name("NAME");
  command->add_flag("--oaep", arguments->oaep,
                    "The safer padding for RSA keys; not everybody can read it");
  command->footer(
      "Examples:\n"
      "  mimora encrypt --to you@example.org --to me@example.org letter.eml >secret.eml\n"
      "\n"
      "Encrypted are the body and the Content- fields. The other fields, the subject among them,\n"
      "stay readable.");
  command->callback([arguments, &out, &status] { status = Run(*arguments, out, EncryptMessage); });
}

}  // namespace mimora::tool
