// Copyright (c) 2026 the mimora developers.
#include "tool/commands.h"

#include <string_view>

namespace mimora::tool {
namespace {

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

}  // namespace

void AddFiles(CLI::App& command, std::vector<std::string>& files) {
  command.add_option("FILE", files, "Message files; - is the standard input")
      ->required()
      ->type_name("");
}

CLI::Option* AddPart(CLI::App& command, std::string& number) {
  return command.add_option("--part", number, "The part to take, as numbered by show")
      ->type_name("NUMBER")
      ->check(CheckPartNumber);
}

void AddStore(CLI::App& command, std::string& directory) {
  command
      .add_option("--store", directory,
                  "Directory of certificates and keys; without it $MIMORA_CERT_STORE, else "
                  "/etc/mimora/certs")
      ->type_name("DIR");
}

}  // namespace mimora::tool
