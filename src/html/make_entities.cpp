// Copyright (c) 2026 the mimora developers.
//
// Runs during the build: writes the constant table that named_entity.h declares.
// Usage: make_entities OUTPUT ENTITIES.txt
// The words of the input are NAME=UNITS, the hexadecimal units of UTF-16 joined by "+". A name with
// a "?" behind it counts without a semicolon, too.
#include <algorithm>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "html/named_entity.h"

namespace mimora {
namespace {

[[noreturn]] void Fail(const std::string& why) { throw std::runtime_error(why); }

struct Entity {
  std::string name;
  bool bare = false;
  std::vector<unsigned long> units;
};

std::vector<unsigned long> ParseUnits(const std::string& text) {
  std::vector<unsigned long> units;
  for (size_t at = 0; at <= text.size();) {
    const size_t end = std::min(text.find('+', at), text.size());
    units.push_back(std::stoul(text.substr(at, end - at), nullptr, 16));
    at = end + 1;
  }
  return units;
}

Entity ParseWord(const std::string& word) {
  const size_t sign = word.find('=');
  if (sign == std::string::npos) Fail("no NAME=UNITS: " + word);
  Entity entity{word.substr(0, sign), false, ParseUnits(word.substr(sign + 1))};
  if (entity.name.ends_with('?')) {
    entity.bare = true;
    entity.name.pop_back();
  }
  // What the search relies on.
  const size_t longest = entity.bare ? kLongestBareEntity : kLongestEntity;
  if (entity.name.size() < kShortestEntity || entity.name.size() > longest)
    Fail("the length of the name is out of bounds: " + word);
  if (entity.units.empty() || entity.units.size() > 2) Fail("not one or two units: " + word);
  return entity;
}

std::vector<Entity> ReadEntities(const std::string& path) {
  std::ifstream file(path);
  std::vector<Entity> entities;
  for (std::string word; file >> word;) entities.push_back(ParseWord(word));
  if (entities.empty()) Fail(path + ": cannot be read");
  std::ranges::sort(entities, {}, &Entity::name);
  return entities;
}

void WriteEntities(std::ostream& out, const std::vector<Entity>& entities) {
  out << "// Made by make_entities.\n#include \"html/named_entity.h\"\n\nnamespace mimora {\n\n"
         "const char kEntityNames[] =";
  for (const Entity& entity : entities) out << "\n    \"" << entity.name << '"';
  out << ";\n\nconst NamedEntity kNamedEntities[] = {\n";
  size_t at = 0;
  for (const auto& [name, bare, units] : entities) {
    out << "    {" << at << ", " << name.size() << ", " << bare << ", {" << units[0] << ", "
        << (units.size() == 2 ? units[1] : 0) << "}},\n";
    at += name.size();
  }
  out << "};\nconst size_t kNamedEntityCount = " << entities.size()
      << ";\n\n}  // namespace mimora\n";
}

void MakeEntities(const std::string& output, const std::string& input) {
  std::ofstream out(output);
  WriteEntities(out, ReadEntities(input));
  if (!out.flush()) Fail(output + ": cannot be written");
}

}  // namespace
}  // namespace mimora

int main(int argc, char** argv) {
  try {
    if (argc != 3) throw std::runtime_error("usage: make_entities OUTPUT ENTITIES");
    mimora::MakeEntities(argv[1], argv[2]);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "make_entities: " << error.what() << '\n';
    return 1;
  }
}
