// Copyright (c) 2026 the mimora developers.
//
// Any message taken apart into files: they are where they should be, and nothing else is touched.
#include "fuzz.h"
#include "mimora/mimora.h"
#include "private_directory.h"

namespace mimora::fuzz {
namespace {

namespace fs = std::filesystem;

constexpr const char* kCharsets[] = {nullptr, "utf-8", "utf-16", "iso-8859-2"};
constexpr std::string_view kOwnText = "somebody's own";

// A stored message, and beside it the directory for its files.
class Place {
 public:
  const std::string& Root() const { return root_.Path(); }
  std::string Message() const { return root_.File("message.eml"); }
  std::string Files() const { return root_.File("files"); }

  void Renew(std::string_view message) const {
    WriteFile(Message(), message);
    fs::remove_all(Files());
    fs::create_directory(Files());
  }

 private:
  PrivateDirectory root_;
};

struct Told {
  std::string directory;
  uint32_t files = 0;
};

void OnPart(S_Context context, M_Bodypart* part, int32_t number, const char* path, int64_t size) {
  Told& told = *reinterpret_cast<Told*>(context);
  ++told.files;
  const fs::path file(path);
  FUZZ_CHECK(part != nullptr && number >= 0);
  FUZZ_CHECK(file.parent_path() == told.directory);
  FUZZ_CHECK(fs::is_regular_file(fs::symlink_status(file)));
  FUZZ_CHECK(static_cast<int64_t>(fs::file_size(file)) == size);
}

uint32_t Decode(const Place& place, const char* charset) {
  Told told{place.Files()};
  uint32_t count = 0;
  const int32_t result = M_DecodeEML(place.Message().c_str(), place.Files().c_str(), charset,
                                     OnPart, reinterpret_cast<S_Context>(&told), 0, &count);
  FUZZ_CHECK(result == MIMORA_OK || result == MIMORA_E_HEADER_CUT ||
             result == MIMORA_E_NO_BOUNDARY);
  FUZZ_CHECK(count > 0 && count == told.files);
  return count;
}

bool IsSafe(const std::string& name) {
  const bool has_controls = std::any_of(name.begin(), name.end(), [](char c) {
    return static_cast<unsigned char>(c) < ' ' || c == 0x7F;
  });
  return !has_controls && !name.starts_with('.') && name.size() <= 255 &&
         name.find('\\') == std::string::npos;
}

uint32_t CountFiles(const Place& place) {
  uint32_t count = 0;
  for (const auto& entry : fs::directory_iterator(place.Files())) {
    ++count;
    FUZZ_CHECK(entry.is_regular_file() && !entry.is_symlink());
    FUZZ_CHECK(IsSafe(entry.path().filename().string()));
  }
  // Beside it is nothing but what was there.
  FUZZ_CHECK(std::distance(fs::directory_iterator(place.Root()), {}) == 2);
  return count;
}

// Files that are in the way stay as they are.
void CheckSecondTime(const Place& place, const char* charset, uint32_t count) {
  for (const auto& entry : fs::directory_iterator(place.Files()))
    WriteFile(entry.path().string(), kOwnText);
  FUZZ_CHECK(Decode(place, charset) == count);
  FUZZ_CHECK(CountFiles(place) == 2 * count);
  uint32_t kept = 0;
  for (const auto& entry : fs::directory_iterator(place.Files()))
    kept += ReadFile(entry.path().string()) == kOwnText;
  FUZZ_CHECK(kept >= count);
}

}  // namespace

void CheckInput(Input input) {
  static const Place place;
  const char* const charset = input.Choose(kCharsets);
  const bool twice = input.Flag();
  place.Renew(input.Rest());
  const uint32_t count = Decode(place, charset);
  FUZZ_CHECK(CountFiles(place) == count);
  FUZZ_CHECK(ReadFile(place.Message()) == input.Rest());
  if (twice) CheckSecondTime(place, charset, count);
}

}  // namespace mimora::fuzz
