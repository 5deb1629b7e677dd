// Copyright (c) 2026 the mimora developers.
#include "tool/message.h"

#include <algorithm>
#include <new>

namespace mimora::tool {
namespace {

constexpr int32_t kStreamBuffer = 65536;

struct ResultText {
  int32_t code;
  bool tolerated;
  std::string_view text;
};

constexpr ResultText kResults[] = {
    {MIMORA_OK, true, ""},
    {MIMORA_E_HEADER_CUT, true, "the data ends inside the header"},
    {MIMORA_E_NO_BOUNDARY, true, "a multipart without boundary is kept as one body"},
    {MIMORA_E_HEADER, false, "the header cannot be read"},
    {MIMORA_E_READ, false, "the data cannot be read to its end"},
    {-1, false, "the data cannot be read to its end"},
    {MIMORA_E_WRITE, false, "a file cannot be written"},
    {-2, false, "a file cannot be written"},
    {MIMORA_E_OPEN_INPUT, false, "it cannot be opened"},
    {MIMORA_E_OPEN_OUTPUT, false, "a file cannot be created"},
    {MIMORA_E_TEMP_WRITE, false, "a temporary file cannot be written"},
    {MIMORA_E_TEMP_CREATE, false, "a temporary file cannot be created"},
    {MIMORA_E_TEMP_OPEN, false, "a temporary file cannot be opened again"},
    {MIMORA_E_NO_BODY, false, "the part has no body"},
    {MIMORA_E_NO_SUCH_FILE, false, "there is no embedded file of that number"},
    {MIMORA_E_CHARSET, false, "a character set is not known"},
    {MIMORA_E_STORE, false, "the certificate store cannot be read"},
    {MIMORA_E_CERTIFICATE, false, "there is no such certificate in the store"},
    {MIMORA_E_PRIVATE_KEY, false, "the store has no private key for the certificate"},
    {MIMORA_E_PASSWORD, false, "the private key needs another password (--password-file)"},
    {MIMORA_E_CERTIFICATE_TIME, false, "the certificate is not valid now"},
    {MIMORA_E_CERTIFICATE_PURPOSE, false, "the certificate is not made for this"},
    {MIMORA_E_ALGORITHM, false, "the algorithm is not known, or not safe"},
    {MIMORA_E_ENGINE, false, "OpenSSL failed"},
};
constexpr ResultText kUnknownResult = {MIMORA_E_UNCLASSIFIED, false, "the message cannot be read"};

const ResultText& ExplainResult(int32_t code) {
  const auto* found = std::ranges::find(kResults, code, &ResultText::code);
  return found == std::end(kResults) ? kUnknownResult : *found;
}

}  // namespace

void CheckResult(int32_t result) {
  const ResultText& answer = ExplainResult(result);
  if (!answer.tolerated) throw MessageError(std::string(answer.text), result);
}

Message::Message(const std::string& path)
    : path_(path),
      source_(path),
      cursor_{source_.Bytes(), 0},
      stream_(S_CreateInStream1(reinterpret_cast<S_Context>(&cursor_), kStreamBuffer, &Read, &Seek,
                                &Tell)),
      root_(M_CreateMessage()) {
  if (stream_ == nullptr || root_ == nullptr) throw std::bad_alloc();
  result_ = M_LoadMessage(root_.get(), stream_.get());
  CheckResult(result_);
}

std::string_view Message::Bytes(int64_t offset, int64_t size) const {
  const int64_t begin = std::clamp<int64_t>(offset, 0, Size());
  const int64_t count = std::clamp<int64_t>(size, 0, Size() - begin);
  return source_.Bytes().substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(count));
}

std::string_view Message::Damage() const { return ExplainResult(result_).text; }

int64_t Message::Read(S_Context context, const void** bytes, int64_t length) {
  auto& cursor = *reinterpret_cast<Cursor*>(context);
  const int64_t rest = std::ssize(cursor.bytes) - cursor.position;
  const int64_t count = std::clamp<int64_t>(length, 0, rest);
  *bytes = cursor.bytes.data() + cursor.position;
  cursor.position += count;
  return count;
}

void Message::Seek(S_Context context, int64_t position) {
  auto& cursor = *reinterpret_cast<Cursor*>(context);
  cursor.position = std::clamp<int64_t>(position, 0, std::ssize(cursor.bytes));
}

int64_t Message::Tell(S_Context context) { return reinterpret_cast<Cursor*>(context)->position; }

std::unique_ptr<const Message> OpenMessage(const std::string& path) {
  return TellAsMessageError([&] { return std::make_unique<const Message>(path); });
}

}  // namespace mimora::tool
