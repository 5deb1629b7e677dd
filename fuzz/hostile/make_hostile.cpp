// Copyright (c) 2026 the mimora developers.
//
// Writes mail from enemies: make_hostile CLASS N writes the message of that class and size to the
// standard output; make_hostile alone lists the classes, each with what memory may grow with and
// the N of the full set. The same arguments give the same bytes.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "hostile.h"

namespace {

using namespace mimora::hostile;

const char* NameOf(Unit unit) {
  switch (unit) {
    case Unit::kPart:
      return "part";
    case Unit::kField:
      return "field";
    case Unit::kFile:
      return "file";
    case Unit::kHeaderBytes:
      return "header-byte";
    case Unit::kPageBytes:
      return "page-byte";
    case Unit::kNothing:
      break;
  }
  return "nothing";
}

std::vector<MessageClass> AllClasses() {
  std::vector<MessageClass> all;
  for (const auto classes :
       {StructureClasses(), HeaderClasses(), BodyClasses(), TnefClasses(), PageClasses()})
    all.insert(all.end(), classes.begin(), classes.end());
  return all;
}

int List(const std::vector<MessageClass>& classes) {
  for (const MessageClass& c : classes) std::printf("%s %s %zu\n", c.name, NameOf(c.unit), c.size);
  return 0;
}

int Write(const std::string& text) {
  const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  return written && std::fflush(stdout) == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<MessageClass> classes = AllClasses();
  if (argc == 1) return List(classes);
  const auto found = std::ranges::find(classes, std::string_view(argv[1]), &MessageClass::name);
  if (argc != 3 || found == classes.end()) {
    std::fputs("usage: make_hostile [CLASS N]\n", stderr);
    return 2;
  }
  return Write(found->make(std::strtoull(argv[2], nullptr, 10)));
}
